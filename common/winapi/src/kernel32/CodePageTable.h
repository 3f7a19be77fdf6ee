// The characters of the code pages of one or two bytes, by iconv's word and where that has none by
// Windows' published tables; internal to the layer.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace winapi {

class CodePageTable {
 public:
  // Stands for no character.
  static constexpr char16_t kNone = 0xFFFF;

  // The table of a code page, made at the first call and kept; null for a page that isn't known or
  // that the machine's iconv lacks. From any thread.
  static const CodePageTable* Find(UINT codePage);

  // Whether a byte begins a character of two.
  bool IsLead(unsigned char byte) const { return m_single[byte] == kLead; }
  // The character of a byte that is no lead; every one has one.
  char16_t Decode(unsigned char byte) const { return m_single[byte]; }
  // ... and of a lead and what follows it, or kNone.
  char16_t Decode(unsigned char lead, unsigned char trail) const {
    return m_pairs[PlaceOf(lead, trail)];
  }
  // What stands for bytes that are no character.
  char16_t Substitute() const { return m_substitute; }

  // The byte, or the lead above and the trail below; 0 where there is none, and for U+0000.
  std::uint16_t Encode(char16_t unit) const { return m_codes[unit]; }

  struct Page;
  explicit CodePageTable(const Page& page);
  bool IsComplete() const { return !m_codes.empty(); }

 private:
  static constexpr char16_t kLead = 0xFFFE;  // no character either
  static constexpr unsigned kFirstLead = 0x80;
  static std::size_t PlaceOf(unsigned lead, unsigned trail) {
    return (lead - kFirstLead) << 8 | trail;
  }

  void SetSingles(const Page& page, void* decoder);
  void SetPairs(const Page& page, void* decoder);
  void SetCodes(void* encoder);

  std::vector<char16_t> m_single;
  std::vector<char16_t> m_pairs;  // from kFirstLead on; none in a page of one byte
  std::vector<std::uint16_t> m_codes;
  char16_t m_substitute;
};

}  // namespace winapi
