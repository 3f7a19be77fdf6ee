// Reading and writing open files, and the place and size of what is in them.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <optional>

#include "Fail.h"
#include "kernel32/FileObject.h"
#include "kernel32/PathName.h"
#include "kernel32/Pipe.h"
#include "kernel32/Sharing.h"

namespace {

using winapi::File;
using winapi::FindFile;
using winapi::Transfer;

constexpr DWORD kRead = GENERIC_READ;
constexpr DWORD kWrite = GENERIC_WRITE;

// A failure of the disk is told by what was being done; a folder has no content to do it with.
BOOL FailTransfer(int error, DWORD fault) {
  switch (error) {
    case EIO:
      return Fail(fault);
    case EISDIR:
    case EBADF:
    case ESPIPE:
      return Fail(ERROR_INVALID_FUNCTION);
    case EFAULT:
      return Fail(ERROR_NOACCESS);
    case EINVAL:
      return Fail(ERROR_INVALID_PARAMETER);
    default:
      SetFileError(error, {});
      return FALSE;
  }
}

BOOL Finish(const Transfer& transfer, LPDWORD count, DWORD fault) {
  if (count != nullptr) *count = static_cast<DWORD>(transfer.count);
  return transfer.error == 0 ? TRUE : FailTransfer(transfer.error, fault);
}

std::optional<std::int64_t> SizeOf(const File& file) {
  struct stat status;
  if (fstat(file.descriptor, &status) != 0) return Fail(ERROR_GEN_FAILURE, std::nullopt);
  return S_ISDIR(status.st_mode) ? 0 : status.st_size;
}

// Where a move leads to; nothing, and the last error, where it can't be.
std::optional<std::int64_t> Target(const File& file, std::int64_t distance, DWORD from) {
  std::int64_t base = 0;
  if (from == FILE_CURRENT) {
    base = lseek(file.descriptor, 0, SEEK_CUR);
    if (base < 0) return Fail(ERROR_INVALID_FUNCTION, std::nullopt);
  } else if (from == FILE_END) {
    const auto size = SizeOf(file);
    if (!size) return std::nullopt;
    base = *size;
  } else if (from != FILE_BEGIN) {
    return Fail(ERROR_INVALID_PARAMETER, std::nullopt);
  }
  if (distance > 0 && base > std::numeric_limits<std::int64_t>::max() - distance) {
    return Fail(ERROR_INVALID_PARAMETER, std::nullopt);
  }
  if (base + distance < 0) return Fail(ERROR_NEGATIVE_SEEK, std::nullopt);
  return base + distance;
}

BOOL MoveTo(const File& file, std::int64_t place) {
  if (lseek(file.descriptor, place, SEEK_SET) >= 0) return TRUE;
  return Fail(errno == EINVAL ? ERROR_INVALID_PARAMETER : ERROR_INVALID_FUNCTION);
}

// The low half of a result that a program takes for a failure only if there is an error too.
DWORD LowHalf(std::int64_t value) {
  const auto low = static_cast<DWORD>(value);
  if (low == INVALID_FILE_SIZE) SetLastError(NO_ERROR);
  return low;
}

}  // namespace

BOOL WINAPI ReadFile(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD count,
                     LPOVERLAPPED overlapped) {
  if (count != nullptr) *count = 0;
  if (overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (const auto pipe = winapi::FindPipe(handle)) return pipe->Read(buffer, size, count);
  const auto file = FindFile(handle, kRead);
  if (file == nullptr) return FALSE;
  return Finish(winapi::ReadBytes(file->descriptor, buffer, size), count, ERROR_READ_FAULT);
}

BOOL WINAPI WriteFile(HANDLE handle, const void* data, DWORD size, LPDWORD count,
                      LPOVERLAPPED overlapped) {
  if (count != nullptr) *count = 0;
  if (overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (const auto pipe = winapi::FindPipe(handle)) return pipe->Write(data, size, count);
  const auto file = FindFile(handle, kWrite);
  if (file == nullptr) return FALSE;
  return Finish(winapi::WriteBytes(file->descriptor, data, size), count, ERROR_WRITE_FAULT);
}

BOOL WINAPI SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* place,
                             DWORD from) {
  const auto file = FindFile(handle, kRead | kWrite);
  if (file == nullptr) return FALSE;
  const auto target = Target(*file, distance.QuadPart, from);
  if (!target || !MoveTo(*file, *target)) return FALSE;
  if (place != nullptr) place->QuadPart = *target;
  return TRUE;
}

DWORD WINAPI SetFilePointer(HANDLE handle, LONG distance, LONG* distanceHigh, DWORD from) {
  const auto file = FindFile(handle, kRead | kWrite);
  if (file == nullptr) return INVALID_SET_FILE_POINTER;
  std::int64_t whole = distance;
  if (distanceHigh != nullptr) {
    whole = static_cast<std::int64_t>(std::uint64_t{static_cast<DWORD>(*distanceHigh)} << 32 |
                                      static_cast<DWORD>(distance));
  }
  const auto target = Target(*file, whole, from);
  if (!target) return INVALID_SET_FILE_POINTER;
  if (distanceHigh == nullptr && *target > std::numeric_limits<DWORD>::max()) {
    return Fail(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
  }
  if (!MoveTo(*file, *target)) return INVALID_SET_FILE_POINTER;
  if (distanceHigh != nullptr) *distanceHigh = static_cast<LONG>(*target >> 32);
  return LowHalf(*target);
}

BOOL WINAPI GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size) {
  const auto file = FindFile(handle, 0);
  const auto found = file == nullptr ? std::nullopt : SizeOf(*file);
  if (!found) return FALSE;
  size->QuadPart = *found;
  return TRUE;
}

DWORD WINAPI GetFileSize(HANDLE handle, LPDWORD sizeHigh) {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(handle, &size)) return INVALID_FILE_SIZE;
  if (sizeHigh != nullptr) *sizeHigh = static_cast<DWORD>(size.QuadPart >> 32);
  return LowHalf(size.QuadPart);
}

BOOL WINAPI SetEndOfFile(HANDLE handle) {
  const auto file = FindFile(handle, kWrite);
  if (file == nullptr) return FALSE;
  const off_t place = lseek(file->descriptor, 0, SEEK_CUR);
  const auto size = SizeOf(*file);
  if (place < 0 || !size) return Fail(ERROR_INVALID_FUNCTION);
  const winapi::ShareGate gate(file->descriptor);
  if (place < *size && gate.IsMapped()) return Fail(ERROR_USER_MAPPED_FILE);
  int result;
  do {
    result = ftruncate(file->descriptor, place);
  } while (result != 0 && errno == EINTR);
  return result == 0 ? TRUE : FailTransfer(errno, ERROR_WRITE_FAULT);
}

BOOL WINAPI FlushFileBuffers(HANDLE handle) {
  const auto file = FindFile(handle, kWrite);
  if (file == nullptr) return FALSE;
  // What has no disk behind it has nothing to wait for.
  if (fsync(file->descriptor) == 0 || errno == EINVAL) return TRUE;
  return Fail(errno == ENOSPC || errno == EDQUOT ? ERROR_DISK_FULL : ERROR_WRITE_FAULT);
}
