// Characters between the widths of text, by the process locale.
#pragma once

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"

namespace sarn_text {

// Takes one character off terminated text of the other width. Gives the number of its units, of
// which there are at most 16, or -1 where the locale can't express it.
SARNUTILS_API int ConvertCharacter(const WChar*& text, char* units);
SARNUTILS_API int ConvertCharacter(const char*& text, WChar* units);

}  // namespace sarn_text
