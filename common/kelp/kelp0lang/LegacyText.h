// Text helpers of the import and export of survey files: case, trimming, accents, numbered names,
// and rows split into fields.
//
//   std::vector<WString> fields;
//   ConvDelRow(KTEXT(";"), row, true, fields);
//   next = IncrementaNuProg(fields[0].c_str(), false, 1);   // "P10" becomes "P11"
//
// Functions without a result work in place on their argument. White space is that of
// WString::Trim. None has state; all run on any thread.
#pragma once

#include <cstddef>
#include <cstdio>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

// The letters a to z and A to Z; everything else stays.
KELP0LANG_API void StringToLower(kelp::WString& text);
KELP0LANG_API void StringToUpper(kelp::WString& text);

// Takes off the white space at the begin, at the end, or at both.
KELP0LANG_API void StringTrimLeft(kelp::WString& text);
KELP0LANG_API void StringTrimRight(kelp::WString& text);
KELP0LANG_API void StringTrimBoth(kelp::WString& text);

// The length in 16-bit units.
KELP0LANG_API std::size_t GetLengthInChars(const kelp::WString& text);

// The text of one character of the process locale; empty if it is none.
KELP0LANG_API kelp::WString GetTString(char c);

// The text with the accented Latin letters of western European point names replaced by their base
// letters: Ä Å É Ö Ü, à á â ä å, è to ë, ì to ï, ò ó ô ö, ù to ü and ÿ. All others stay.
KELP0LANG_API kelp::WString FiltraStringa(kelp::WString text);

// The last run of decimal digits: its value, its range [start, end) and, unless null, its text.
// Text without digits gives the not-set value, start and end at the length, and empty digits.
KELP0LANG_API double EstrazioneNumero(kelp::WString text, int& start, int& end,
                                      kelp::WString* digits);

// The next name of a numbered series: the last run of digits grows by step. A scaled step counts in
// units of the first digit, so step 1 makes "P10" "P20". Leading zeros go: "A007" becomes "A8".
// Text without digits gets the step behind it. The number is a double: behind 2^53 (16 digits) the
// next name may be the same one again, and a number that isn't a set value (from 8.5e199) gives a
// blank in its place.
KELP0LANG_API kelp::WString IncrementaNuProg(const WChar* text, bool scaled, int step);

// Reads one line into a buffer of size units, without its line feed. Gives what fgetws gives: the
// address of the buffer, or 0 at the end of the file.
KELP0LANG_API std::size_t _fgettline(WChar* buffer, int size, std::FILE* file);

// A row of fields of fixed widths, appended to out: accents replaced (FiltraStringa), white space
// trimmed off every field. Fields behind the end of the row are empty. With quotes, a field with
// two quotation marks keeps what stands between the first and the last. out is meant to come empty:
// the last step goes over all of it.
KELP0LANG_API void ConvFixRow(int count, const int* widths, kelp::WString row, bool quotes,
                              std::vector<kelp::WString>& out);
// A row of fields between delimiters, each unit of delimiters being one; the rest as ConvFixRow.
// Fields between two delimiters may be empty, unless white space delimits. Quotation marks don't
// protect a delimiter.
KELP0LANG_API void ConvDelRow(kelp::WString delimiters, kelp::WString row, bool quotes,
                              std::vector<kelp::WString>& out);
// The last step of both: with quotes, each field with two quotation marks keeps what stands between
// the first and the last. Then each is trimmed.
KELP0LANG_API void EliminaApiciESpazi(std::vector<kelp::WString>* fields, bool quotes);
