#include "kelp0lang/Translate.h"

#include <tchar.h>

#include <algorithm>
#include <cstdint>
#include <cwchar>

#include "kelp0lang/SafeFormat.h"
#include "sarnutils/Xlate.h"

namespace kelp {
namespace {

constinit const xlate::CXlateTable* currentTable = nullptr;

WString StripNote(const WString& text) {
  const int last = text.rfind(KTEXT('@'));
  if (last < 1 || text.ReadChar(last - 1) != KTEXT('@')) return text;
  return text.Substring(0, last - 1);
}

bool Has(const WString& text, WChar unit) {
  return text.IndexOf(unit) >= 0;
}

bool NeedsEscape(const WString& text) {
  return Has(text, KTEXT('\\')) || Has(text, KTEXT('\r')) || Has(text, KTEXT('\n'));
}

WString Escape(WString text) {
  text.ReplaceInPlace(KTEXT("\\"), KTEXT("\\\\"));
  text.ReplaceInPlace(KTEXT("\r"), KTEXT("\\r"));
  text.ReplaceInPlace(KTEXT("\n"), KTEXT("\\n"));
  return text;
}

void Unescape(WString& text) {
  if (!Has(text, KTEXT('\\'))) return;
  text.ReplaceInPlace(KTEXT("\\\\"), KTEXT("\\"));
  text.ReplaceInPlace(KTEXT("\\r"), KTEXT("\r"));
  text.ReplaceInPlace(KTEXT("\\n"), KTEXT("\n"));
}

// By the units that both keys have.
int CompareStarts(const xlate::XlateEntry& entry, const WString& key, std::uint16_t keyLength) {
  return wcsncmp(entry.key, key.c_str(), std::min(entry.keyLength, keyLength));
}

// The escaped translation of an escaped source text; empty where the table has none.
WString Find(const xlate::CXlateTable& table, const WString& key) {
  const auto keyLength = static_cast<std::uint16_t>(key.Length());
  const auto standsBefore = [keyLength](const xlate::XlateEntry& entry, const WString& wanted) {
    const int starts = CompareStarts(entry, wanted, keyLength);
    return starts < 0 || (starts == 0 && entry.keyLength > keyLength);
  };
  const xlate::XlateEntry* entry = std::lower_bound(table.begin(), table.end(), key, standsBefore);
  if (entry == table.end() || entry->keyLength != keyLength ||
      CompareStarts(*entry, key, keyLength) != 0) {
    return WString();
  }
  return detail::TextOf(entry->text, entry->textLength);
}

// The same of a source text as it stands, in the current table.
WString FindTranslation(const WString& source) {
  if (!currentTable->IsLoaded()) return WString();
  return NeedsEscape(source) ? Find(*currentTable, Escape(source)) : Find(*currentTable, source);
}

}  // namespace

WString Xlate(const WChar* text) {
  const WString source(text);
  if (source.empty() || currentTable == nullptr) return StripNote(source);
  WString shown = FindTranslation(source);
  if (shown.empty()) shown = StripNote(source);
  Unescape(shown);
  return shown;
}

WString XlateFilled(const WChar* text, std::span<const WString> values) {
  if (text == nullptr) return WString();
  WString shown = FillTemplate(Xlate(text).c_str(), values);
  return shown.empty() ? FillTemplate(StripNote(text).c_str(), values) : shown;
}

bool LoadTranslateFile(const WString& path) {
  const bool loaded = xlate::LoadTranslateFile(path.c_str(), xlate::eDetectNone);
  currentTable = loaded ? xlate::GetXlateTable() : nullptr;
  return loaded;
}

WString GetTranslateFileError() {
  return WString(xlate::GetLoadError());
}

void UnloadTranslateFile() {
  xlate::UnloadTranslateFile();
  currentTable = nullptr;
}

bool IsTranslateFileLoaded() {
  return currentTable != nullptr && currentTable->IsLoaded();
}

}  // namespace kelp
