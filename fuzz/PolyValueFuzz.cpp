// Values out of a file of any bytes: loading takes little memory whatever the counts say, every
// getter answers, and what was loaded comes back from a file of its own.
#include "kelp0lang/PolyValue.h"

#include <sanitizer/allocator_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "kelp0lang/FileStream.h"

using kelp::CPolyValue;
using kelp::ifpstream;
using kelp::ofpstream;
using kelp::WString;

namespace {

constexpr std::size_t kMostMemory = std::size_t{64} << 20;
constexpr std::size_t kHeaderSize = 5;
constexpr int kMostValues = 64;  // each is saved three times
constexpr int kRead = 33, kWrite = 34;

std::size_t memory = 0, mostMemory = 0;

void OnAllocate(const volatile void*, std::size_t size) {
  memory += size;
  mostMemory = std::max(mostMemory, memory);
}
void OnFree(const volatile void* block) {
  if (block != nullptr) memory -= __sanitizer_get_allocated_size(const_cast<const void*>(block));
}

void Require(bool holds) {
  if (!holds) std::abort();
}

// A file without a disk.
class File {
 public:
  File() : m_file(memfd_create("value", MFD_CLOEXEC)) { Require(m_file >= 0); }
  ~File() { close(m_file); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  void Write(const void* bytes, std::size_t size) const {
    Require(ftruncate(m_file, 0) == 0);
    Require(pwrite(m_file, bytes, size, 0) == static_cast<ssize_t>(size));
  }
  std::string Read() const {
    std::string bytes(static_cast<std::size_t>(lseek(m_file, 0, SEEK_END)), 0);
    Require(pread(m_file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
    return bytes;
  }
  WString Path() const { return WString(u"/proc/self/fd/").Concat(WString::ValueOf(m_file)); }

 private:
  const int m_file;
};

std::string Saved(const File& file, const CPolyValue& value) {
  ofpstream out(file.Path().c_str(), 1, WString(), 0, kWrite);
  SaveToFile(out, value, 0);
  out.Close();
  Require(out.GetState() == 0);
  return file.Read();
}

// A pointer out of a file leads nowhere, so nothing is read through it.
void Ask(const CPolyValue& value) {
  value.GetBoolValue();
  value.GetInt32Value();
  value.GetInt64Value();
  value.GetDateValue();
  value.GetPointerValue();
  value.GetStringValue();
  if (value.GetType() != kelp::pvPointer) value.GetDoubleValue();
}

// A stream cuts one terminator off each text that it reads.
bool HasTerminatedText(const CPolyValue& value) {
  if (value.GetArrayElementType() != kelp::pvString) return false;
  for (unsigned i = 0; i < value.GetNoArrayElements(); ++i) {
    const WString text = value.GetStringValue(i);
    if (!text.empty() && text.GetChar(text.Length() - 1) == 0) return true;
  }
  return false;
}

void CheckValue(const CPolyValue& value) {
  static const File file;
  Ask(value);
  if (HasTerminatedText(value)) return;
  const std::string bytes = Saved(file, value);
  CPolyValue again;
  ifpstream in(file.Path().c_str(), kRead);
  LoadFromFile(in, again);
  Require(in.GetState() == 0);
  Require(Saved(file, again) == bytes);
  Require(Saved(file, CPolyValue(again)) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Require(__sanitizer_install_malloc_and_free_hooks(OnAllocate, OnFree) != 0);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHeaderSize) return 0;
  static const File file;
  file.Write(data, size);
  memory = mostMemory = 0;
  {
    ifpstream in(file.Path().c_str(), kRead);
    for (int i = 0; i < kMostValues && in.GetState() == 0; ++i) {
      CPolyValue value;
      LoadFromFile(in, value);
      CheckValue(value);
    }
  }
  Require(mostMemory <= kMostMemory);
  return 0;
}
