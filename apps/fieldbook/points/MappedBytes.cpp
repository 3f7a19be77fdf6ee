#include "fieldbook/points/MappedBytes.h"

#include <windows.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "kelp0lang/File.h"
#include "kelp0lang/MemoryMappedFile.h"

namespace fieldbook {
namespace {

constexpr std::uintmax_t kMostPages = 1 << 23;  // bytes that are kept in memory

struct CloseProcess {
  void operator()(void* process) const { CloseHandle(process); }
};
using OwnProcess = std::unique_ptr<void, CloseProcess>;

// The length of the file as it is now; 0 where it isn't known.
std::uintmax_t LengthOf(const CMemoryMappedFile& file) {
  LARGE_INTEGER length{};
  if (!GetFileSizeEx(file.getHandle(), &length)) return 0;
  return static_cast<std::uintmax_t>(length.QuadPart);
}

class MappedBytes final : public ByteSource {
 public:
  MappedBytes(Argument file, CMemoryMappedFile mapped, OwnProcess process)
      : m_file(std::move(file)),
        m_mapped(std::move(mapped)),
        m_process(std::move(process)),
        m_size(LengthOf(m_mapped)) {}

  void Rewind() override {
    DropPages();
    m_at = m_dropped = 0;
  }
  std::size_t Read(char* buffer, std::size_t size) override {
    const auto count = static_cast<std::size_t>(std::min<std::uintmax_t>(size, m_size - m_at));
    if (count > 0 && !Copy(buffer, count)) {
      throw Failure(
          {KTEXT("{1}: the file has become shorter while it was read"), {Shown(m_file.text)}});
    }
    m_at += count;
    if (m_at - m_dropped >= kMostPages) DropPages();
    return count;
  }
  std::uintmax_t Size() const override { return m_size; }

  bool Copy(char* buffer, std::size_t count) const {
    // The length comes last: what a page holds behind the end of its file reads as zeros.
    return ReadProcessMemory(m_process.get(), m_mapped.getData() + m_at, buffer, count, nullptr) &&
           LengthOf(m_mapped) >= m_size;
  }

 private:
  // Pages that aren't locked leave the memory of the program by this.
  void DropPages() {
    VirtualUnlock(const_cast<char*>(m_mapped.getData()) + m_dropped,
                  static_cast<std::size_t>(m_at - m_dropped));
    m_dropped = m_at;
  }

  const Argument m_file;
  const CMemoryMappedFile m_mapped;
  const OwnProcess m_process;
  const std::uintmax_t m_size;
  std::uintmax_t m_at = 0;
  std::uintmax_t m_dropped = 0;
};

}  // namespace

std::unique_ptr<ByteSource> MapBytes(const Argument& file) {
  // Opening a pipe takes a turn of what writes it. The file has to be there under this very name,
  // since the library would also find one whose name differs in case.
  std::error_code error;
  if (!std::filesystem::is_regular_file(file.path, error)) return nullptr;
  const kelp::CFile path(LibraryPath(file));
  if (path.GetPath().empty()) return nullptr;
  CMemoryMappedFile mapped(path.GetPath().c_str(), false, false, 0);
  if (!mapped.isLoaded()) return nullptr;
  OwnProcess process(OpenProcess(PROCESS_VM_READ, FALSE, GetCurrentProcessId()));
  if (process == nullptr) return nullptr;
  auto bytes = std::make_unique<MappedBytes>(file, std::move(mapped), std::move(process));
  char first;
  // Some systems let no program copy memory so.
  if (bytes->Size() == 0 || !bytes->Copy(&first, 1)) return nullptr;
  return bytes;
}

}  // namespace fieldbook
