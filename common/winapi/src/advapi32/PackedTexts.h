// A caller's buffer with records in front and the texts that they point at behind; internal to the
// layer.
#pragma once

#include <windef.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace winapi {

class PackedTexts {
 public:
  explicit PackedTexts(std::size_t sizeOfRecords) : m_start(sizeOfRecords) {}
  // Where the text will be, in bytes from the start of the buffer.
  std::size_t Add(std::u16string_view text) {
    const std::size_t place = Size();
    m_units.append(text).push_back(0);
    return place;
  }
  // That of the buffer.
  std::size_t Size() const { return m_start + m_units.size() * sizeof(char16_t); }
  void CopyTo(void* buffer) const {
    std::memcpy(static_cast<char*>(buffer) + m_start, m_units.data(),
                m_units.size() * sizeof(char16_t));
  }

 private:
  const std::size_t m_start;
  std::u16string m_units;
};

inline LPWSTR TextAt(void* buffer, std::size_t place) {
  return reinterpret_cast<LPWSTR>(static_cast<char*>(buffer) + place);
}

}  // namespace winapi
