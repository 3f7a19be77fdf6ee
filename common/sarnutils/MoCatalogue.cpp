// The binary form: a header of 32-bit numbers, two tables of lengths and offsets, and the texts,
// each ended by a zero byte that its length doesn't count.
#include <bit>
#include <cstdint>
#include <cstring>

#include "kelptext/Compiler.h"
#include "sarnutils/Catalogue.h"

namespace xlate::detail {
namespace {

constexpr std::uint32_t kMagic = 0x950412DE;
constexpr std::uint32_t kMagicSwapped = 0xDE120495;
constexpr std::size_t kHeaderSize = 28;
// Offsets of the numbers in the header.
constexpr std::size_t kRevision = 4;
constexpr std::size_t kEntryCount = 8;
constexpr std::size_t kKeyTable = 12;
constexpr std::size_t kTextTable = 16;

class MoReader {
 public:
  explicit MoReader(std::string_view bytes)
      : m_bytes(bytes), m_swapped(RawNumber(0) == kMagicSwapped) {}

  std::vector<CatalogueEntry> Read() {
    if (m_bytes.size() < kHeaderSize) throw CatalogueError{0, "the file is cut short"};
    if (Number(kRevision) >> 16 > 1) throw CatalogueError{0, "unknown revision of the form"};
    const std::size_t count = Number(kEntryCount);
    const std::size_t keys = Number(kKeyTable);
    const std::size_t texts = Number(kTextTable);
    if (!Holds(keys, 8 * count) || !Holds(texts, 8 * count)) {
      throw CatalogueError{0, "the table of texts reaches beyond the file"};
    }
    std::vector<CatalogueEntry> entries;
    entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      std::string key(Text(keys + 8 * i, i + 1));
      entries.push_back({std::move(key), std::string(Text(texts + 8 * i, i + 1)), i + 1});
    }
    return entries;
  }

 private:
  std::uint32_t RawNumber(std::size_t offset) const {
    std::uint32_t number;
    std::memcpy(&number, m_bytes.data() + offset, sizeof(number));
    return number;
  }
  std::uint32_t Number(std::size_t offset) const {
    const std::uint32_t number = RawNumber(offset);
    return m_swapped ? kelp::detail::ReversedBytes(number) : number;
  }
  bool Holds(std::size_t offset, std::size_t size) const {
    return offset <= m_bytes.size() && size <= m_bytes.size() - offset;
  }

  // The text of a place in a table, up to the first zero byte: behind it stand the other plural
  // forms.
  std::string_view Text(std::size_t at, std::size_t entry) {
    const std::size_t length = Number(at);
    const std::size_t offset = Number(at + 4);
    if (!Holds(offset, length + 1)) throw CatalogueError{entry, "a text reaches beyond the file"};
    if (m_bytes[offset + length] != 0) throw CatalogueError{entry, "a text has no end"};
    // Texts that lie over each other could add up to any amount of memory.
    m_total += length;
    if (m_total > m_bytes.size()) throw CatalogueError{entry, "texts lie over each other"};
    const std::string_view text = m_bytes.substr(offset, length);
    return text.substr(0, text.find('\0'));
  }

  std::string_view m_bytes;
  bool m_swapped;
  std::size_t m_total = 0;
};

}  // namespace

bool IsMoCatalogue(std::string_view bytes) {
  std::uint32_t magic = 0;
  if (bytes.size() >= sizeof(magic)) std::memcpy(&magic, bytes.data(), sizeof(magic));
  return magic == kMagic || magic == kMagicSwapped;
}

std::vector<CatalogueEntry> ReadMoCatalogue(std::string_view bytes) {
  return MoReader(bytes).Read();
}

}  // namespace xlate::detail
