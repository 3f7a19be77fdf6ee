#include "sarnutils/XmlTree.h"

#include <algorithm>

#include "kelptext/Utf8.h"

namespace sarn::detail {
namespace {

constexpr std::size_t kMaxBlock = 256 * 1024;
// Text up to here gets room for a unit each byte, which it may not need all; longer text is
// measured.
constexpr std::size_t kShortText = 1024;

std::uint32_t HashOf(std::string_view bytes) {
  std::uint32_t hash = 2166136261u;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619u;
  return hash ^ hash >> 15;
}

XmlName NameOf(std::string_view utf8) {
  std::basic_string<WChar> units(utf8.size(), 0);
  units.resize(kelp::detail::DecodeUtf8(utf8.data(), utf8.size(), units.data(), units.size()));
  return XmlName(units.data(), static_cast<int>(units.size()));
}

}  // namespace

XmlNames::XmlNames() : m_slots(64) {}

const XmlName* XmlNames::Find(std::string_view utf8) {
  const std::uint32_t hash = HashOf(utf8);
  const std::size_t mask = m_slots.size() - 1;
  std::size_t slot = hash & mask;
  for (; m_slots[slot] != nullptr; slot = (slot + 1) & mask) {
    const Entry& entry = *m_slots[slot];
    if (entry.hash == hash && entry.utf8 == utf8) return &entry.name;
  }
  return Add(slot, utf8, hash);
}

const XmlName* XmlNames::Add(std::size_t slot, std::string_view utf8, std::uint32_t hash) {
  m_slots[slot] = &m_entries.emplace_back(Entry{std::string(utf8), hash, NameOf(utf8)});
  if (2 * m_entries.size() > m_slots.size()) Grow();
  return &m_entries.back().name;
}

void XmlNames::Grow() {
  std::vector<const Entry*> slots(2 * m_slots.size());
  const std::size_t mask = slots.size() - 1;
  for (const Entry& entry : m_entries) {
    std::size_t slot = entry.hash & mask;
    while (slots[slot] != nullptr) slot = (slot + 1) & mask;
    slots[slot] = &entry;
  }
  m_slots.swap(slots);
}

void XmlTree::AddBlock(std::size_t size) {
  m_blockSize = std::min(2 * m_blockSize, kMaxBlock);
  const std::size_t blockSize = std::max(size, m_blockSize);
  m_blocks.emplace_back(new char[blockSize]);
  m_next = m_blocks.back().get();
  m_end = m_next + blockSize;
}

void* XmlTree::Allocate(std::size_t size) {
  constexpr std::uintptr_t kAlign = alignof(void*);
  const std::size_t gap = -reinterpret_cast<std::uintptr_t>(m_next) % kAlign;
  if (gap + size > static_cast<std::size_t>(m_end - m_next)) {
    AddBlock(size);
  } else {
    m_next += gap;
  }
  void* const memory = m_next;
  m_next += size;
  return memory;
}

const WChar* XmlTree::AddText(std::string_view utf8) {
  const std::size_t room = utf8.size() <= kShortText
                               ? utf8.size()
                               : kelp::detail::DecodedUtf8Length(utf8.data(), utf8.size());
  const std::size_t bytes = sizeof(WChar) * (room + 1);
  if (bytes > static_cast<std::size_t>(m_end - m_next)) AddBlock(bytes);
  auto* const text = reinterpret_cast<WChar*>(m_next);
  const std::size_t length = kelp::detail::DecodeUtf8(utf8.data(), utf8.size(), text, room);
  text[length] = 0;
  m_next += sizeof(WChar) * (length + 1);
  return text;
}

}  // namespace sarn::detail
