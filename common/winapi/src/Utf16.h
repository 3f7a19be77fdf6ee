// Characters of UTF-16.
#pragma once

// No character; what stands for an ill-formed piece of text.
inline constexpr char32_t kIllFormed = 0xFFFFFFFF;

// Takes a character off text that isn't empty; a lone surrogate is ill-formed.
constexpr char32_t NextOfUtf16(const char16_t*& unit, const char16_t* end) {
  const char32_t first = *unit++;
  if (first < 0xD800 || first > 0xDFFF) return first;
  if (first > 0xDBFF || unit == end || *unit < 0xDC00 || *unit > 0xDFFF) return kIllFormed;
  return 0x10000 + ((first - 0xD800) << 10) + (*unit++ - 0xDC00);
}

// Writes a character's units where there is room for them; gives how many there are, 1 or 2.
constexpr int ToUtf16(char32_t character, char16_t* units) {
  if (character < 0x10000) {
    units[0] = static_cast<char16_t>(character);
    return 1;
  }
  units[0] = static_cast<char16_t>(0xD7C0 + (character >> 10));
  units[1] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
  return 2;
}
