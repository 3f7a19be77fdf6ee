// The table of cultures that a program can offer, and the ways between the three names of a
// culture: its culture name ("it-IT"), its Windows locale code (0x410) and its row.
//
//   kelp::WString name;
//   if (kelp::getCultureNameByCode(kelp::GetCurrentLocale(), name)) load(name);
//
// The table is constant: all functions may be called from any thread.
#pragma once

#include <cstddef>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

namespace kelp {

// One row. No text is null; the country may be empty.
struct LanguageInfo {
  const WChar* cultureName;  // the key, such as "ar-SA"
  unsigned short code;       // Windows locale code
  const WChar* language;     // English name of the language
  const WChar* country;      // English name of the country or region
  const WChar* nativeName;   // the language's own name for itself
};

// Rows in the table, which stand in a fixed order: by English language, then by country.
KELP0LANG_API int getCulturesCount();
// The row, or null for an index beyond the table.
KELP0LANG_API const LanguageInfo* getCultureInfo(std::size_t index);

// The first row with the code, or -1. 0x409 and 0x44E stand in two rows each, of which only the
// first is found. 0x40A (Spanish, traditional sort) has no row and counts as 0xC0A.
KELP0LANG_API int findCultureIndexByCode(unsigned short code);
// The first row of that culture name, without regard to case, or -1.
KELP0LANG_API int findCultureIndexByName(const WString& name);

// The code of a culture name; an unknown name gives false and the code 0.
KELP0LANG_API bool getCultureCodeByName(const WString& name, unsigned short& code);
// The culture name of a code; an unknown code gives false and leaves the name.
KELP0LANG_API bool getCultureNameByCode(unsigned short code, WString& name);
// The texts of a row; an index outside the table gives false and leaves them.
KELP0LANG_API bool getCultureDisplayName(int index, WString& language, WString& nativeName,
                                         WString& country);

}  // namespace kelp
