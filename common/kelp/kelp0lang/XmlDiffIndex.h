// Numbers found by keys that stand elsewhere; internal to the library.
//
//   HashedNumbers places(children.size());
//   places.FindOrAdd(hash, place, [&](std::int32_t other) { return IsSame(children[other], child);
//   }); const std::int32_t place = places.Find(hash, isWanted);   // or -1
//
// The hash of a key is kept beside its number, so that a search looks at no key but, mostly, the
// one that it finds: with many keys that is what takes the time, since each lies at another place
// of the memory.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelp::detail {

class HashedNumbers {
 public:
  static constexpr std::int32_t kNone = -1;

  // With room for so many keys; more make it grow.
  explicit HashedNumbers(std::size_t count = 0) : m_slots(std::bit_ceil(2 * count + 2)) {}

  // The number of the key with a hash for which isKey, which is given numbers, holds.
  template <class IsKey>
  std::int32_t Find(std::size_t hash, IsKey isKey) const {
    return m_slots[SlotOf(Short(hash), isKey)].number;
  }
  // The same; a key that isn't there is added with the number, and that is given.
  template <class IsKey>
  std::int32_t FindOrAdd(std::size_t hash, std::int32_t number, IsKey isKey) {
    if (2 * (m_count + 1) > m_slots.size()) Grow();
    Slot& slot = m_slots[SlotOf(Short(hash), isKey)];
    if (slot.number != kNone) return slot.number;
    slot = {Short(hash), number};
    ++m_count;
    return number;
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::int32_t number = kNone;
  };

  static std::uint32_t Short(std::size_t hash) {
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
  }
  // That of the key, or the free one where it belongs.
  template <class IsKey>
  std::size_t SlotOf(std::uint32_t hash, IsKey isKey) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t at = hash & mask;
    while (m_slots[at].number != kNone &&
           (m_slots[at].hash != hash || !isKey(m_slots[at].number))) {
      at = (at + 1) & mask;
    }
    return at;
  }
  void Grow() {
    std::vector<Slot> former(2 * m_slots.size());
    former.swap(m_slots);
    for (const Slot& slot : former) {
      if (slot.number == kNone) continue;
      m_slots[SlotOf(slot.hash, [](std::int32_t) { return false; })] = slot;
    }
  }

  std::vector<Slot> m_slots;  // a power of 2, at most half in use
  std::size_t m_count = 0;
};

}  // namespace kelp::detail
