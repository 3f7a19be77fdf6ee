// Files in memory.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Fail.h"
#include "kernel32/FileObject.h"
#include "kernel32/PathName.h"
#include "kernel32/Sharing.h"

namespace winapi {
namespace {

class Mapping : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kMapping;
  Mapping(Descriptor file, std::uint64_t size, bool writable)
      : KernelObject(kType), file(std::move(file)), size(size), writable(writable) {}
  bool IsSignalled(const Thread&) const override { return true; }

  const Descriptor file;
  const std::uint64_t size;
  const bool writable;
};

struct View {
  std::size_t size;
  bool isShared;  // with the file: nothing is in its pages alone
  std::shared_ptr<Mapping> mapping;
};

// The views of the process by where they begin. They outlive all static objects.
class ViewTable {
 public:
  static ViewTable& Get() {
    static ViewTable& table = *new ViewTable;
    return table;
  }
  void Add(const void* begin, View view) {
    const std::lock_guard lock(m_mutex);
    m_views[begin] = std::move(view);
  }
  // A view of no size where there is none.
  View Take(const void* begin) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_views.find(begin);
    if (found == m_views.end()) return {0, false, nullptr};
    View view = std::move(found->second);
    m_views.erase(found);
    return view;
  }
  // The pages of a part of a view go, and come back from the file.
  void DropPages(std::uintptr_t begin, std::size_t size) {
    const std::lock_guard lock(m_mutex);
    auto view = m_views.upper_bound(reinterpret_cast<const void*>(begin));
    if (view == m_views.begin()) return;
    --view;
    const auto first = reinterpret_cast<std::uintptr_t>(view->first);
    if (!view->second.isShared || begin - first >= view->second.size) return;
    const std::size_t rest = view->second.size - (begin - first);
    const std::uintptr_t page = begin - begin % static_cast<std::uintptr_t>(getpagesize());
    madvise(reinterpret_cast<void*>(page), begin - page + std::min(size, rest), MADV_DONTNEED);
  }

 private:
  std::mutex m_mutex;
  std::map<const void*, View> m_views;
};

// Another description of the open file, which holds its lock by itself; a copy where the rights to
// the file have gone since it was opened.
Descriptor Reopened(int file, bool writable) {
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  Descriptor own(open(link.c_str(), (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC));
  return own >= 0 ? std::move(own) : Descriptor(fcntl(file, F_DUPFD_CLOEXEC, 0));
}

// The room is taken now: later a full disk would end the process that writes to the view.
bool Grow(int file, std::uint64_t from, std::uint64_t to) {
  const auto begin = static_cast<off_t>(from);
  const auto size = static_cast<off_t>(to - from);
  int result;
  do {
    result = fallocate(file, 0, begin, size);
  } while (result != 0 && errno == EINTR);
  if (result != 0 && errno == EOPNOTSUPP) result = ftruncate(file, static_cast<off_t>(to));
  if (result == 0) return true;
  if (errno == EFBIG || errno == EINVAL) return Fail(ERROR_DISK_FULL);
  SetFileError(errno, {});
  return false;
}

HANDLE Map(int file, std::uint64_t size, bool writable) {
  struct stat status;
  Descriptor own = Reopened(file, writable);
  const ShareGate gate(own);
  if (own < 0 || fstat(own, &status) != 0) return Fail<HANDLE>(ERROR_GEN_FAILURE);
  const std::uint64_t there =
      S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
  if (size == 0) size = there;
  if (size == 0) return Fail<HANDLE>(ERROR_FILE_INVALID);
  if (size > there && !writable) return Fail<HANDLE>(ERROR_NOT_ENOUGH_MEMORY);
  if (size > there && !Grow(own, there, size)) return nullptr;
  gate.HoldMapping();
  return KernelLock().Add(std::make_shared<Mapping>(std::move(own), size, writable));
}

std::shared_ptr<Mapping> FindMapping(HANDLE handle) {
  const KernelLock lock;
  Mapping* const mapping = lock.Find<Mapping>(handle);
  if (mapping == nullptr) return nullptr;
  return std::static_pointer_cast<Mapping>(mapping->shared_from_this());
}

LPVOID MapView(std::shared_ptr<Mapping> mapping, DWORD access, std::uint64_t offset,
               std::uint64_t size) {
  const bool writes = (access & (FILE_MAP_WRITE | FILE_MAP_COPY)) != 0;
  const bool isShared = !writes || (access & FILE_MAP_WRITE) != 0;
  struct stat status;
  const bool known = fstat(mapping->file, &status) == 0;
  if (!known || static_cast<std::uint64_t>(status.st_size) < offset + size) {
    return Fail<LPVOID>(ERROR_FILE_INVALID);
  }
  void* const view =
      mmap(nullptr, size, writes ? PROT_READ | PROT_WRITE : PROT_READ,
           isShared ? MAP_SHARED : MAP_PRIVATE, mapping->file, static_cast<off_t>(offset));
  if (view == MAP_FAILED) return Fail<LPVOID>(ERROR_NOT_ENOUGH_MEMORY);
  ViewTable::Get().Add(view, {size, isShared, std::move(mapping)});
  return view;
}

constexpr std::uint64_t Whole(DWORD high, DWORD low) {
  return std::uint64_t{high} << 32 | low;
}

}  // namespace
}  // namespace winapi

HANDLE WINAPI CreateFileMappingW(HANDLE handle, LPSECURITY_ATTRIBUTES, DWORD protection,
                                 DWORD sizeHigh, DWORD sizeLow, LPCWSTR name) {
  if (name != nullptr || handle == INVALID_HANDLE_VALUE) return Fail<HANDLE>(ERROR_NOT_SUPPORTED);
  const bool writable = protection == PAGE_READWRITE;
  const std::uint64_t size = winapi::Whole(sizeHigh, sizeLow);
  const bool known = writable || protection == PAGE_READONLY || protection == PAGE_WRITECOPY;
  if (!known || static_cast<std::int64_t>(size) < 0) return Fail<HANDLE>(ERROR_INVALID_PARAMETER);
  const auto file = winapi::FindFile(handle, GENERIC_READ);
  if (file == nullptr || (writable && winapi::FindFile(handle, GENERIC_WRITE) == nullptr)) {
    return nullptr;
  }
  return winapi::Map(file->descriptor, size, writable);
}

LPVOID WINAPI MapViewOfFile(HANDLE handle, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                            SIZE_T size) {
  constexpr std::uint64_t kGranularity = 0x10000;
  constexpr DWORD kKnown = FILE_MAP_READ | FILE_MAP_WRITE | FILE_MAP_COPY;
  auto mapping = winapi::FindMapping(handle);
  if (mapping == nullptr) return nullptr;
  if (access == 0 || (access & ~kKnown) != 0) return Fail<LPVOID>(ERROR_INVALID_PARAMETER);
  const std::uint64_t offset = winapi::Whole(offsetHigh, offsetLow);
  if (offset % kGranularity != 0) return Fail<LPVOID>(ERROR_MAPPED_ALIGNMENT);
  const bool writes = (access & FILE_MAP_WRITE) != 0;
  if ((writes && !mapping->writable) || offset >= mapping->size || size > mapping->size - offset) {
    return Fail<LPVOID>(ERROR_ACCESS_DENIED);
  }
  const std::uint64_t rest = mapping->size - offset;
  return winapi::MapView(std::move(mapping), access, offset, size == 0 ? rest : size);
}

BOOL WINAPI UnmapViewOfFile(LPCVOID begin) {
  const winapi::View view = winapi::ViewTable::Get().Take(begin);
  if (view.size == 0) return Fail(ERROR_INVALID_ADDRESS);
  munmap(const_cast<void*>(begin), view.size);
  return TRUE;
}

BOOL WINAPI VirtualUnlock(LPVOID address, SIZE_T size) {
  winapi::ViewTable::Get().DropPages(reinterpret_cast<std::uintptr_t>(address), size);
  return Fail(ERROR_NOT_LOCKED);
}
