#include "kelp0lang/LegacyText.h"

#include <tchar.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cwchar>
#include <cwctype>

#include "kelp0lang/LegacyNumber.h"
#include "kelptext/Digits.h"

using kelp::WString;
using kelp::detail::IsDigit;

namespace {

// Rewrites each unit in place.
template <class Map>
void MapUnits(WString& text, Map map) {
  const int length = text.Length();
  WChar* const units = text.GetBufferSetLength(length);
  std::transform(units, units + length, units, map);
}

// Base letters of the Latin-1 letters from 192 on; a 0 leaves the letter as it is.
constexpr WChar kFirstAccented = 192;
constexpr char kBaseLetters[64] = {
    0,   0,   0,   0,   'A', 'A', 0,   0, 0,   'E', 0,   0,   0,   0,   0,   0,    // 192 to 207
    0,   0,   0,   0,   0,   0,   'O', 0, 0,   0,   0,   0,   'U', 0,   0,   0,    // 208 to 223
    'a', 'a', 'a', 0,   'a', 'a', 0,   0, 'e', 'e', 'e', 'e', 'i', 'i', 'i', 'i',  // 224 to 239
    0,   0,   'o', 'o', 'o', 0,   'o', 0, 0,   'u', 'u', 'u', 'u', 0,   0,   'y',  // 240 to 255
};

WChar BaseLetter(WChar unit) {
  if (unit < kFirstAccented || unit > 255) return unit;
  const char base = kBaseLetters[unit - kFirstAccented];
  return base == 0 ? unit : static_cast<WChar>(base);
}

// Cuts field at every delimiter and appends the parts to out. What follows a delimiter begins
// behind any white space, even where that delimits too.
void SplitField(const WString& field, WChar delimiter, std::vector<WString>& out) {
  int begin = 0;
  for (;;) {
    const int cut = field.IndexOf(delimiter, begin);
    if (cut < 0) break;
    out.push_back(field.Substring(begin, cut - begin));
    begin = cut + 1;
    while (begin < field.Length() && std::iswspace(field.GetChar(begin)) != 0) ++begin;
  }
  out.push_back(field.Substring(begin));
}

}  // namespace

void StringToLower(WString& text) {
  MapUnits(text, [](WChar unit) {
    return unit >= KTEXT('A') && unit <= KTEXT('Z') ? static_cast<WChar>(unit + 0x20) : unit;
  });
}

void StringToUpper(WString& text) {
  MapUnits(text, [](WChar unit) {
    return unit >= KTEXT('a') && unit <= KTEXT('z') ? static_cast<WChar>(unit - 0x20) : unit;
  });
}

void StringTrimLeft(WString& text) {
  text = text.TrimLeft();
}

void StringTrimRight(WString& text) {
  text = text.TrimRight();
}

void StringTrimBoth(WString& text) {
  text = text.TrimLeft().TrimRight();
}

std::size_t GetLengthInChars(const WString& text) {
  return text.length();
}

WString GetTString(char c) {
  const char text[2] = {c, 0};
  return WString::AcceptString(text);
}

WString FiltraStringa(WString text) {
  const WChar* const end = text.c_str() + text.Length();
  if (std::any_of(text.c_str(), end, [](WChar unit) { return BaseLetter(unit) != unit; })) {
    MapUnits(text, BaseLetter);
  }
  return text;
}

double EstrazioneNumero(WString text, int& start, int& end, WString* digits) {
  const int length = text.Length();
  start = length;
  end = length;
  int runEnd = length;
  while (runEnd > 0 && !IsDigit(text.GetChar(runEnd - 1))) --runEnd;
  if (runEnd > 0) {
    end = runEnd;
    start = runEnd;
    while (start > 0 && IsDigit(text.GetChar(start - 1))) --start;
  }
  const WString run = text.Substring(start, end - start);
  if (digits != nullptr) *digits = run;
  return DoubleDaString(run);
}

WString IncrementaNuProg(const WChar* text, bool scaled, int step) {
  const WString name(text);
  int start = 0;
  int end = 0;
  WString digits;
  const double number = EstrazioneNumero(name, start, end, &digits);
  const int scale = scaled ? std::max(digits.Length() - 1, 0) : 0;
  const double increment = step * std::pow(10.0, scale);
  const double next = digits.empty() ? increment : number + increment;
  return name.substr(0, start).Concat(StringDaDouble(next, 1, 0)).Concat(name.Substring(end));
}

std::size_t _fgettline(WChar* buffer, int size, std::FILE* file) {
  const WChar* const line = fgetws(buffer, size, file);
  if (line != nullptr) {
    const std::size_t length = wcslen(buffer);
    if (length > 0 && buffer[length - 1] == KTEXT('\n')) buffer[length - 1] = 0;
  }
  return reinterpret_cast<std::size_t>(line);
}

void ConvFixRow(int count, const int* widths, WString row, bool quotes, std::vector<WString>& out) {
  row = FiltraStringa(row);
  std::int64_t position = 0;
  for (int i = 0; i < count; ++i) {
    WString field;
    if (position >= 0 && position < row.Length()) {
      field = row.substr(static_cast<int>(position), widths[i]);
      StringTrimBoth(field);
    }
    out.push_back(field);
    position += widths[i];
  }
  EliminaApiciESpazi(&out, quotes);
}

void ConvDelRow(WString delimiters, WString row, bool quotes, std::vector<WString>& out) {
  row = FiltraStringa(row);
  StringTrimBoth(row);
  out.push_back(row);
  for (int i = 0; i < delimiters.Length(); ++i) {
    std::vector<WString> parts;
    for (const WString& field : out) SplitField(field, delimiters.GetChar(i), parts);
    out.swap(parts);
  }
  EliminaApiciESpazi(&out, quotes);
}

void EliminaApiciESpazi(std::vector<WString>* fields, bool quotes) {
  for (WString& field : *fields) {
    if (quotes) {
      const int first = field.IndexOf(KTEXT('"'));
      const int last = field.rfind(KTEXT('"'));
      if (first != last) field = field.Substring(first + 1, last - first - 1);
    }
    StringTrimBoth(field);
  }
}
