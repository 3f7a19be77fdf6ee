// Source texts into the user's language.
//
//   if (!kelp::LoadTranslateFile(GetLanguageFile())) show(kelp::GetTranslateFileError());
//   kelp::Xlate(KXLATE("E@@East (1 char)"));  // the translation, or "E" where there is none
//
// Source texts are English. Behind the last "@@" a text may carry a note for the translator; the
// note is part of the key, so one short text can have several translations, and is never shown.
//
// The translations come from a GNU gettext catalogue, .po or .mo, whose msgid is the whole source
// text, note included (see sarnutils/Xlate.h). Nothing loads one by itself, and what was translated
// before stays as it is.
//
// Threads: Xlate may run on any thread, but not while another loads or unloads a catalogue.
#pragma once

#include <initializer_list>
#include <span>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

// A wide literal that is a source text. It is KTEXT to the compiler; xgettext --keyword=KXLATE
// collects such texts for the translators, wherever they stand on their way to Xlate.
#define KXLATE(text) KTEXT(text)

namespace kelp {

// The text to show for a source text: its translation, and where there is none or an empty one, the
// source text without its note. Null gives the empty text.
//
// The note begins at the last at sign of the text, if another one stands directly before it: of
// "a@@b@@c" is shown "a@@b", of "@@x" nothing, and "a@@b@c" and "a@b" stay as they are.
//
// Once a catalogue has been loaded the text to show is unescaped, be it translated or not: every
// two backslashes become one, then a backslash and "r" a carriage return, then a backslash and "n"
// a line feed. So a shown text can't have a backslash directly before an "r" or "n".
//
// Keys have up to 65,535 units, in which a backslash, a carriage return and a line feed count two.
// Of a longer source text only that length less 65,536, 131,072... units are looked up: it is shown
// as the translation of a text of just its beginning, if there is one. Such a text is shown in
// parts.
KELP0LANG_API WString Xlate(const WChar* text);

// A sentence in the user's language with values in the places of {1}, {2} and so on, as
// FillTemplate puts them there.
//
//   show(kelp::XlateFilled(KTEXT("{1} points in {2}"), {kelp::WString::ValueOf(count), name}));
//
// A translation that asks for a value that isn't given is passed over, and the source text is
// filled in its place, without its note; where that asks for one too, and for null, the text is
// empty.
KELP0LANG_API WString XlateFilled(const WChar* text, std::span<const WString> values);
inline WString XlateFilled(const WChar* text, std::initializer_list<WString> values) {
  return XlateFilled(text, std::span(values.begin(), values.size()));
}

// Takes the translations from a catalogue, in place of those before. False leaves none, and the
// reason in GetTranslateFileError.
KELP0LANG_API bool LoadTranslateFile(const WString& path);

// Why the last load failed, in English, with the file and the line or entry; empty where it didn't.
KELP0LANG_API WString GetTranslateFileError();

// Source texts are shown again.
KELP0LANG_API void UnloadTranslateFile();

// Whether translations are there, of whatever catalogue was taken last.
KELP0LANG_API bool IsTranslateFileLoaded();

}  // namespace kelp
