#include "sarnutils/CharacterWidth.h"

#include <tchar.h>

#include <climits>
#include <cstddef>
#include <cstdlib>

#include "kelptext/Characters.h"

namespace sarn_text {
namespace {

using kelp::detail::IsHighSurrogate;
using kelp::detail::IsLowSurrogate;
using kelp::detail::kMaxCharacterUnits;

constexpr auto kNotConverted = static_cast<std::size_t>(-1);

}  // namespace

int ConvertCharacter(const WChar*& text, char* units) {
  const WChar first = *text++;
  if (first < 0x80) {
    *units = static_cast<char>(first);
    return 1;
  }
  WChar character[3] = {first, 0, 0};
  if (IsHighSurrogate(first) && IsLowSurrogate(*text)) character[1] = *text++;
  const std::size_t size = wcstombs(units, character, kMaxCharacterUnits);
  return size == kNotConverted ? -1 : static_cast<int>(size);
}

int ConvertCharacter(const char*& text, WChar* units) {
  if (static_cast<unsigned char>(*text) < 0x80) {
    *units = static_cast<WChar>(*text++);
    return 1;
  }
  // The shortest run of bytes that is a character.
  char character[MB_LEN_MAX + 1] = {};
  for (int taken = 0; taken < MB_LEN_MAX && text[taken] != 0; ++taken) {
    character[taken] = text[taken];
    const std::size_t size = mbstowcs(units, character, kMaxCharacterUnits);
    if (size == kNotConverted) continue;
    text += taken + 1;
    return static_cast<int>(size);
  }
  return -1;
}

}  // namespace sarn_text
