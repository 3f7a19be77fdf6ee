// Rows by the hashes of their names. Rows whose hashes fall together are a chain within one array,
// so that the index of a million is built without an allocation, and a walk through memory, for
// each.
//
//   for (std::size_t row = index.First(hash); row != RowIndex::kNone; row = index.Next(row)) ...
//
// A chain holds rows of other hashes too: whoever walks it compares what the hash is of.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <vector>

namespace fieldbook {

class RowIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  RowIndex() { Reserve(0); }
  // Room for so many rows; to be called while there are none.
  void Reserve(std::size_t rows) {
    m_entries.reserve(rows);
    m_heads.assign(std::bit_ceil(std::max(rows, kFewest)), kNone);
  }

  // The row isn't in the index yet.
  void Add(std::size_t hash, std::size_t row) {
    if (row >= m_entries.size()) m_entries.resize(row + 1);
    m_entries[row].hash = hash;
    if (m_entries.size() > 2 * m_heads.size()) Grow();
    Link(row);
  }
  // The row is in the index.
  void Remove(std::size_t row) {
    std::size_t* place = &HeadOf(row);
    while (*place != row) place = &m_entries[*place].next;
    *place = m_entries[row].next;
    m_entries[row].next = kAbsent;
  }

  std::size_t First(std::size_t hash) const { return m_heads[hash & (m_heads.size() - 1)]; }
  std::size_t Next(std::size_t row) const { return m_entries[row].next; }

 private:
  static constexpr std::size_t kAbsent = kNone - 1;
  static constexpr std::size_t kFewest = 64;

  struct Entry {
    std::size_t hash = 0;
    std::size_t next = kAbsent;
  };

  std::size_t& HeadOf(std::size_t row) {
    return m_heads[m_entries[row].hash & (m_heads.size() - 1)];
  }
  void Link(std::size_t row) {
    std::size_t& head = HeadOf(row);
    m_entries[row].next = head;
    head = row;
  }
  void Grow() {
    m_heads.assign(std::bit_ceil(m_entries.size()), kNone);
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
      if (m_entries[row].next != kAbsent) Link(row);
    }
  }

  std::vector<Entry> m_entries;      // by row
  std::vector<std::size_t> m_heads;  // a power of two
};

}  // namespace fieldbook
