#include "kernel32/Descriptor.h"

namespace winapi {
namespace {

// Goes on until all is done, the step gives 0, or it fails.
template <class Step>
Transfer Repeat(std::size_t size, Step step) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = step(done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return {done, errno};
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return {done, 0};
}

}  // namespace

Transfer ReadBytes(int file, void* data, std::size_t size) {
  char* const bytes = static_cast<char*>(data);
  return Repeat(size, [&](std::size_t done) { return read(file, bytes + done, size - done); });
}

Transfer WriteBytes(int file, const void* data, std::size_t size) {
  const char* const bytes = static_cast<const char*>(data);
  return Repeat(size, [&](std::size_t done) { return write(file, bytes + done, size - done); });
}

}  // namespace winapi
