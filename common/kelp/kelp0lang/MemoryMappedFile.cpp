#include "kelp0lang/MemoryMappedFile.h"

#include <windows.h>

#include <utility>

namespace {

// How a file is opened and mapped.
struct Access {
  DWORD file;
  DWORD flags;
  DWORD pages;
  DWORD view;
};
constexpr Access kForReading = {static_cast<DWORD>(GENERIC_READ),
                                FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, PAGE_READONLY,
                                FILE_MAP_READ};
constexpr Access kForWriting = {
    static_cast<DWORD>(GENERIC_READ) | static_cast<DWORD>(GENERIC_WRITE), FILE_ATTRIBUTE_NORMAL,
    PAGE_READWRITE, FILE_MAP_READ | FILE_MAP_WRITE};

DWORD Low(std::int64_t value) {
  return static_cast<DWORD>(value);
}
DWORD High(std::int64_t value) {
  return static_cast<DWORD>(static_cast<std::uint64_t>(value) >> 32);
}

}  // namespace

CMemoryMappedFile::CMemoryMappedFile(const WChar* fileName, bool create, bool write,
                                     std::int64_t size) {
  reset();
  try_load(fileName, create, write, size);
}

CMemoryMappedFile::~CMemoryMappedFile() {
  unload();
}

CMemoryMappedFile::CMemoryMappedFile(CMemoryMappedFile&& other) noexcept {
  reset();
  *this = std::move(other);
}

CMemoryMappedFile& CMemoryMappedFile::operator=(CMemoryMappedFile&& other) noexcept {
  if (this == &other) return *this;
  unload();
  m_hFile = other.m_hFile;
  m_hMapping = other.m_hMapping;
  m_pData = other.m_pData;
  m_nLength = other.m_nLength;
  m_bLoaded = other.m_bLoaded;
  m_bCreated = other.m_bCreated;
  other.reset();
  return *this;
}

bool CMemoryMappedFile::load(const WChar* fileName, bool create, bool write, std::int64_t size) {
  const Access& access = write ? kForWriting : kForReading;
  m_hFile = CreateFileW(fileName, access.file, FILE_SHARE_READ, nullptr,
                        create ? OPEN_ALWAYS : OPEN_EXISTING, access.flags, nullptr);
  if (m_hFile == INVALID_HANDLE_VALUE) return false;
  // Told by the opening itself, so that of several programs one has made the file.
  const bool created = create && GetLastError() != ERROR_ALREADY_EXISTS;

  LONG high = static_cast<LONG>(High(size));
  SetLastError(NO_ERROR);
  if (write &&
      SetFilePointer(m_hFile, static_cast<LONG>(Low(size)), &high, FILE_BEGIN) ==
          INVALID_SET_FILE_POINTER &&
      GetLastError() != NO_ERROR) {
    return false;
  }
  // A mapping that is smaller than the file would show a part of it; 0 stands for the whole.
  LARGE_INTEGER length{};
  if (!GetFileSizeEx(m_hFile, &length)) return false;
  const std::int64_t mapped = size >= 0 && size < length.QuadPart ? 0 : size;
  m_hMapping =
      CreateFileMappingW(m_hFile, nullptr, access.pages, High(mapped), Low(mapped), nullptr);
  if (m_hMapping == nullptr) return false;
  m_pData = static_cast<char*>(MapViewOfFile(m_hMapping, access.view, 0, 0, 0));
  if (m_pData == nullptr) return false;
  m_nLength = GetFileSize(m_hFile, nullptr);
  m_bCreated = created;
  return true;
}

void CMemoryMappedFile::try_load(const WChar* fileName, bool create, bool write,
                                 std::int64_t size) {
  m_bLoaded = load(fileName, create, write, size);
  if (!m_bLoaded) {
    // What the closing calls leave isn't the reason.
    const DWORD reason = GetLastError();
    unload();
    SetLastError(reason);
  }
}

void CMemoryMappedFile::unload() {
  if (m_pData != nullptr) UnmapViewOfFile(m_pData);
  if (m_hMapping != nullptr) CloseHandle(m_hMapping);
  if (m_hFile != INVALID_HANDLE_VALUE) CloseHandle(m_hFile);
  reset();
}

void CMemoryMappedFile::reset() {
  m_hFile = INVALID_HANDLE_VALUE;
  m_hMapping = nullptr;
  m_pData = nullptr;
  m_nLength = 0;
  m_bLoaded = false;
  m_bCreated = false;
}
