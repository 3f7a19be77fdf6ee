// Reads numbers, texts and raw bytes in random order from a file of random bytes: the values are
// those that stand in the file, a stream that has failed gives nothing more, and no text takes
// memory beyond what the file can hold, whatever count it bears.
#include "kelp0lang/FileStream.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>

using kelp::ifpstream;
using kelp::WString;

namespace {

std::size_t largestBlock = 0;

void Require(bool holds) {
  if (!holds) std::abort();
}

// One file per process, gone at its end.
class File {
 public:
  File()
      : m_path(std::filesystem::temp_directory_path() /
               ("kelp0lang-fuzz-" + std::to_string(getpid()))) {}
  ~File() { std::filesystem::remove(m_path); }
  void Write(const std::string& bytes) { std::ofstream(m_path, std::ios::binary) << bytes; }
  WString Path() const { return WString::ConvertFromUtf8(m_path.c_str()); }

 private:
  std::filesystem::path m_path;
};

// Walks over the file beside the stream.
class Reader {
 public:
  Reader(const std::string& bytes, const WString& path)
      : m_bytes(bytes), m_in(path.c_str(), kelp::kReadBinary), m_position(5) {
    Require(m_in.GetState() == (bytes.size() < 5 ? kelp::kStreamEnd : kelp::kStreamGood));
    if (m_in.GetState() != kelp::kStreamGood) return;
    Require(m_in.IsMarkerMissing() == (bytes[0] != ':'));
    Require((m_in.GetNarrowText() == 1) == (bytes[1] == 1));
  }

  template <class T>
  void ReadNumber() {
    T number;
    std::memset(&number, 0x5A, sizeof number);
    T expected = number;
    const bool whole = Take(&expected, sizeof expected);
    m_in >> number;
    Require(std::memcmp(&number, &expected, sizeof number) == 0);
    Require((m_in.GetState() == kelp::kStreamGood) == whole);
  }

  void ReadBytes(std::size_t count) {
    std::string bytes(count, 'Z');
    std::string expected = bytes;
    const bool whole = Take(expected.data(), count);
    m_in.ReadBytes(bytes.data(), count);
    Require(bytes == expected);
    Require((m_in.GetState() == kelp::kStreamGood) == whole);
  }

  void ReadText() {
    std::int32_t count = 0;
    const bool counted = Take(&count, sizeof count);
    WString text(KTEXT("old"));
    largestBlock = 0;
    m_in >> text;
    // A piece is at most as long as what came before it, or of the fixed size of 16384 units.
    Require(largestBlock <= 2 * m_bytes.size() + 2 * 16384 + 64);
    if (!counted) {
      Require(text == WString(KTEXT("old")) && m_in.GetState() != kelp::kStreamGood);
      return;
    }
    count = std::max(count, 0);
    const std::size_t size = static_cast<std::size_t>(count) * (m_in.GetNarrowText() ? 1 : 2);
    if (size > m_bytes.size() - m_position) {
      Require(text == WString(KTEXT("old")) && m_in.GetState() == kelp::kStreamEnd);
      return;
    }
    if (m_in.GetNarrowText() == 0) RequireUnits(text, count);
    Require(text.Length() <= count && m_in.GetState() == kelp::kStreamGood);
    m_position += size;
  }

 private:
  // False, and nothing taken, where the file has fewer bytes or the stream has failed before.
  bool Take(void* target, std::size_t size) {
    if (m_in.GetState() != kelp::kStreamGood || size > m_bytes.size() - m_position) return false;
    std::memcpy(target, m_bytes.data() + m_position, size);
    m_position += size;
    return true;
  }

  void RequireUnits(const WString& text, std::int32_t count) {
    const char* stored = m_bytes.data() + m_position;
    if (count > 0 && stored[2 * count - 2] == 0 && stored[2 * count - 1] == 0) --count;
    Require(text.Length() == count);
    Require(std::memcmp(text.c_str(), stored, text.sizeInBytes()) == 0);
  }

  const std::string& m_bytes;
  ifpstream m_in;
  std::size_t m_position;
};

}  // namespace

// Every allocation of the process comes through here.
void* operator new(std::size_t size) {
  largestBlock = std::max(largestBlock, size);
  void* block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The first eight bytes say what is read in turn, the rest is the file.
  if (size < 8) return 0;
  static File file;
  const std::string bytes(data + 8, data + size);
  file.Write(bytes);
  Reader reader(bytes, file.Path());
  for (int i = 0; i < 8; ++i) {
    switch (data[i] % 6) {
      case 0:
        reader.ReadNumber<short>();
        break;
      case 1:
        reader.ReadNumber<int>();
        break;
      case 2:
        reader.ReadNumber<std::int64_t>();
        break;
      case 3:
        reader.ReadNumber<double>();
        break;
      case 4:
        reader.ReadBytes(data[i]);
        break;
      default:
        reader.ReadText();
    }
  }
  return 0;
}
