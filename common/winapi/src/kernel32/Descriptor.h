// Open files of POSIX, and whole reads and writes of them; internal to the layer.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace winapi {

// Closes a descriptor at the end of a scope and leaves errno alone.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : m_number(number) {}
  Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
  }
  ~Descriptor() {
    if (m_number < 0) return;
    const int error = errno;
    close(m_number);
    errno = error;
  }
  operator int() const { return m_number; }
  // Somebody else closes it.
  void Release() { m_number = -1; }

 private:
  int m_number;
};

// How far a transfer came, and what of errno ended it; 0 is its size or the end of the file.
struct Transfer {
  std::size_t count;
  int error;
};

// As many bytes as are asked for, however many steps the system takes and whatever signals come.
Transfer ReadBytes(int file, void* data, std::size_t size);
Transfer WriteBytes(int file, const void* data, std::size_t size);

}  // namespace winapi
