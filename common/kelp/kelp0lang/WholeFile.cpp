#include "kelp0lang/WholeFile.h"

#include <windows.h>

#include <vector>

#include "sarnutils/BesideFile.h"

namespace kelp::detail {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Another program that has the target open for a moment, be it to save or to look for viruses, is
// waited for.
constexpr int kMostTries = 100;
constexpr DWORD kPauseMs = 10;

HANDLE Open(const WString& path, DWORD access, DWORD disposition) {
  return CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                     nullptr);
}

// Without the "\\?\" of the system's own form, which not every call takes.
WString PlainPath(const WString& path) {
  if (path.IndexOf(KTEXT("\\\\?\\")) != 0) return path;
  if (path.IndexOf(KTEXT("\\\\?\\UNC\\")) == 0) return KTEXT("\\") + path.Substring(7);
  return path.Substring(4);
}

// The file that a path leads to, behind all links; the path itself where there is none.
WString Resolved(const WString& path) {
  const HANDLE file = Open(path, 0, OPEN_EXISTING);
  if (file == INVALID_HANDLE_VALUE) return path;
  WString name;
  const DWORD size = GetFinalPathNameByHandleW(file, nullptr, 0, VOLUME_NAME_DOS);
  if (size > 0) {
    std::vector<WChar> text(size);
    const DWORD length = GetFinalPathNameByHandleW(file, text.data(), size, VOLUME_NAME_DOS);
    if (length > 0 && length < size) name = text.data();
  }
  CloseHandle(file);
  return name.empty() ? path : PlainPath(name);
}

// What an earlier process of the same number has left behind is passed over by the caller.
WString BesideName(const WString& target) {
  return WString(sarn::detail::BesideName(target.c_str()).c_str());
}

void CopyPermissions(const WString& from, const WString& to) {
  DWORD size = 0;
  GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  if (size == 0) return;
  std::vector<char> descriptor(size);
  if (GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), size, &size)) {
    SetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, descriptor.data());
  }
}

// A folder and a write-protected file stay. Not every system keeps a move off the latter.
bool MayBeReplaced(const WString& path) {
  constexpr DWORD kStays = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY;
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & kStays) == 0) return true;
  SetLastError(ERROR_ACCESS_DENIED);
  return false;
}

}  // namespace

WholeFile::WholeFile(const WString& target) : m_target(Resolved(target)) {
  if (!MayBeReplaced(m_target)) return;
  sarn::detail::ClearAwayDead(m_target.c_str());
  HANDLE file;
  WString path;
  do {
    path = BesideName(m_target);
    file = Open(path, static_cast<DWORD>(GENERIC_WRITE), CREATE_NEW);
  } while (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
  if (file == INVALID_HANDLE_VALUE) return;
  CloseHandle(file);
  CopyPermissions(m_target, path);
  m_written = path;
}

WholeFile::~WholeFile() {
  if (!m_written.empty()) DeleteFileW(m_written.c_str());
}

bool WholeFile::Flush() const {
  const HANDLE file = Open(m_written, static_cast<DWORD>(GENERIC_WRITE), OPEN_EXISTING);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool flushed = FlushFileBuffers(file);
  CloseHandle(file);
  return flushed;
}

bool WholeFile::Commit() {
  if (m_written.empty() || !Flush()) return false;
  for (int tries = 0; tries < kMostTries; ++tries) {
    if (!MayBeReplaced(m_target)) return false;
    if (MoveFileExW(m_written.c_str(), m_target.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
      m_written = WString();
      return true;
    }
    Sleep(kPauseMs);
  }
  return false;
}

}  // namespace kelp::detail
