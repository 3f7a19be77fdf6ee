// The table of translations, filled from a GNU gettext catalogue.
//
//   if (!xlate::LoadTranslateFile(KTEXT("C:\\Program Files\\Survey\\it.mo"), xlate::eDetectNone))
//     show(xlate::GetLoadError());
//
// Both forms are read, .po and .mo (of either byte order), told apart by their content. The whole
// source text (msgid) is the key; where an entry has a context, the key is the context, the unit
// U+0004 and the source text, as gettext itself has it. Of plural forms the first is the
// translation. Left out are the fuzzy and obsolete entries of a .po file, and the entries of a .mo
// file whose text depends on the system ("%<PRIu64>"). The text is in the charset that the header
// entry names, which is UTF-8 if it names none: UTF-8, ASCII, ISO-8859-1 to -16, Windows-1250 to
// -1258, Shift_JIS, GBK, UHC (EUC-KR), Big5, IBM437 and IBM850, as far as the system has their code
// pages.
//
// A catalogue is taken whole or not at all. A file that breaks the rules of its form, holds text
// that its charset doesn't have, or an entry of more than 65,535 units leaves the table empty.
//
// Threads: there is one table per process. Any thread may read it, but not while another loads or
// unloads it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"
#include "sarnutils/SarnString.h"

namespace xlate {

namespace detail {
class TableBuilder;
}

// A key and its translation, not terminated. Both are escaped: a backslash stands as two, a
// carriage return as backslash and "r", a line feed as backslash and "n".
struct XlateEntry {
  const WChar* key;
  std::uint16_t keyLength;
  const WChar* text;
  std::uint16_t textLength;
};
static_assert(sizeof(XlateEntry) == 32);
static_assert(offsetof(XlateEntry, key) == 0x00);
static_assert(offsetof(XlateEntry, keyLength) == 0x08);
static_assert(offsetof(XlateEntry, text) == 0x10);
static_assert(offsetof(XlateEntry, textLength) == 0x18);

// What is an error in a catalogue beyond that which always is one; flags that can be joined.
enum EDetectErrorFlags {
  // Of entries with the same key the last one counts.
  eDetectNone = 0,
  // Two entries with the same key are an error.
  eDetectDuplicates = 1,
};

// The entries, sorted by key: in the order of wcsncmp over the shorter length, and where one key
// begins with the whole of another, the longer one first. No two keys are the same. Callers read
// the fields at their offsets, so these are part of the interface.
class SARNUTILS_API CXlateTable {
 public:
  constexpr CXlateTable() = default;
  ~CXlateTable();
  CXlateTable(const CXlateTable&) = delete;
  CXlateTable& operator=(const CXlateTable&) = delete;

  const XlateEntry* begin() const noexcept { return m_first; }
  const XlateEntry* end() const noexcept { return m_last; }
  // Whether a catalogue is in the table.
  bool IsLoaded() const noexcept { return m_loaded != 0; }

 private:
  friend class detail::TableBuilder;
  void Clear() noexcept;
  static constexpr bool HasItsLayout();

  const XlateEntry* m_first = nullptr;
  const XlateEntry* m_last = nullptr;
  const WChar* m_units = nullptr;  // of all keys and translations
  std::size_t m_unitCount = 0;
  std::uint64_t m_flags = eDetectNone;  // with which the catalogue was loaded
  std::uint8_t m_loaded = 0;
};

constexpr bool CXlateTable::HasItsLayout() {
  return offsetof(CXlateTable, m_first) == 0x00 && offsetof(CXlateTable, m_last) == 0x08 &&
         offsetof(CXlateTable, m_loaded) == 0x28;
}

// Fills the table from a catalogue, in place of what it held. False leaves the table empty, and
// the reason in GetLoadError.
SARNUTILS_API bool LoadTranslateFile(const sarn_text::CSarnStringT<WChar>& path,
                                     EDetectErrorFlags flags);

// Empties the table.
SARNUTILS_API void UnloadTranslateFile();

// The table; it stands for the life of the process, loaded or not.
SARNUTILS_API const CXlateTable* GetXlateTable();

// Why the last load failed, in English: the file, the line or entry, and what is wrong there, as
// "C:\it.po:12: no text behind \"msgid\"". Empty behind a load that succeeded. Valid until the
// next load.
SARNUTILS_API const WChar* GetLoadError();

}  // namespace xlate
