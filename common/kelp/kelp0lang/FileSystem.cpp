#include "kelp0lang/FileSystem.h"

#include <windows.h>

#include "kelptext/Compiler.h"

KELP_BUILDS_FIRST

namespace kelp {
namespace {

constexpr DWORD kShareBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr int kFirstPathSize = 260;
constexpr int kDriveLetters = 26;

// A file that is open as long as this object is there.
class OpenedFile {
 public:
  OpenedFile(const WString& path, DWORD access, DWORD share, DWORD disposition, DWORD flags)
      : m_file(CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr)) {}
  ~OpenedFile() {
    if (IsOpen()) CloseHandle(m_file);
  }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;

  bool IsOpen() const { return m_file != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return m_file; }

 private:
  const HANDLE m_file;
};

constexpr DWORD kReading = static_cast<DWORD>(GENERIC_READ);
constexpr DWORD kWriting = static_cast<DWORD>(GENERIC_WRITE);

bool IsLetter(WChar unit) {
  return (unit >= KTEXT('A') && unit <= KTEXT('Z')) || (unit >= KTEXT('a') && unit <= KTEXT('z'));
}

// Whether the path begins with "C:\".
bool HasDriveRoot(const WString& path) {
  return path.Length() >= 3 && IsLetter(path.GetChar(0)) && path.GetChar(1) == KTEXT(':') &&
         path.GetChar(2) == KTEXT('\\');
}

// The text that a call writes into a buffer of the given size. The call gives its length, or the
// size that it takes with the terminator, or 0.
template <class Call>
WString TextOfCall(int size, const Call& call) {
  for (;;) {
    WString text;
    const auto length =
        static_cast<int>(call(static_cast<DWORD>(size), text.GetBufferSetLength(size)));
    if (length < size) {
      // A copy of that length alone: the caller may keep it.
      return text.Substring(0, length);
    }
    size = length;
  }
}

std::uint64_t Ticks(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// All zeros where there is nothing of that path.
WIN32_FILE_ATTRIBUTE_DATA Attributes(const CFile* file) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(file->GetPath().c_str(), GetFileExInfoStandard, &data)) data = {};
  return data;
}

}  // namespace

KELP_BUILT_FIRST constinit CFileSystemWindows CFileSystemWindows::s_FileSystem;

IFileSystem& IFileSystem::GetFileSystem() {
  return CFileSystemWindows::s_FileSystem;
}

WChar CFileSystemWindows::GetSeparator() const {
  return CFile::s_cSeparator;
}

WChar CFileSystemWindows::GetPathSeparator() const {
  return CFile::s_cPathSeparator;
}

WString CFileSystemWindows::Normalize(const WString& path) const {
  const WString text = path.Replace(KTEXT('/'), CFile::s_cSeparator);
  // The path as it is given decides: "C:/" isn't spelt as a root.
  if (path.Length() == 3 && HasDriveRoot(path)) return text;
  return text.TrimRight(CFile::s_cSeparator);
}

WString CFileSystemWindows::Resolve(const CFile* file) const {
  return TextOfCall(kFirstPathSize, [&](DWORD size, WChar* buffer) {
    return GetFullPathNameW(file->GetPath().c_str(), size, buffer, nullptr);
  });
}

WString CFileSystemWindows::Resolve(const WString& parent, const WString& child) const {
  if (child.empty()) return parent;
  const WChar last = parent.empty() ? WChar{0} : parent.GetChar(parent.Length() - 1);
  if (last == KTEXT('\\') || last == KTEXT('/')) return parent.Concat(child);
  WString path;
  path.GetBufferAsCString(parent.Length() + 1 + child.Length());
  path += parent;
  path += CFile::s_cSeparator;
  path += child;
  return path;
}

WString CFileSystemWindows::GetDefaultParent() const {
  return KTEXT("\\");
}

bool CFileSystemWindows::IsAbsolute(const CFile* file) const {
  return HasDriveRoot(file->GetPath());
}

WString CFileSystemWindows::Canonicalize(const WString& path) const {
  if (path.IndexOf(KTEXT('?')) >= 0 || path.IndexOf(KTEXT('*')) >= 0) return WString();
  return path.ToUpperCase();
}

unsigned int CFileSystemWindows::GetBooleanAttributes(const CFile* file) const {
  const DWORD attributes = GetFileAttributesW(file->GetPath().c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return 0;
  unsigned int bits = kExists;
  bits |= (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? kIsDirectory : kIsFile;
  if ((attributes & FILE_ATTRIBUTE_HIDDEN) != 0) bits |= kIsHidden;
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) bits |= kIsReadOnly;
  return bits;
}

bool CFileSystemWindows::CheckAccess(const CFile* file, bool write) const {
  return OpenedFile(file->GetPath(), write ? kWriting : kReading, kShareBoth, OPEN_EXISTING, 0)
      .IsOpen();
}

std::uint64_t CFileSystemWindows::GetCreationTime(const CFile* file) const {
  return Ticks(Attributes(file).ftCreationTime);
}

std::uint64_t CFileSystemWindows::GetLastModifiedTime(const CFile* file) const {
  return Ticks(Attributes(file).ftLastWriteTime);
}

std::uint64_t CFileSystemWindows::GetLastAccessTime(const CFile* file) const {
  return Ticks(Attributes(file).ftLastAccessTime);
}

std::uint64_t CFileSystemWindows::GetLength(const CFile* file) const {
  const OpenedFile open(file->GetPath(), kReading, kShareBoth, OPEN_EXISTING, 0);
  if (!open.IsOpen()) return 0;
  DWORD high = 0;
  SetLastError(NO_ERROR);
  const DWORD low = GetFileSize(open.Get(), &high);
  // A length may end in these bits too.
  if (low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR) return 0;
  return std::uint64_t{high} << 32 | low;
}

bool CFileSystemWindows::CreateFileExclusively(const WString& path) const {
  return OpenedFile(path, kWriting, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL).IsOpen();
}

bool CFileSystemWindows::Delete(const CFile* file) const {
  return DeleteFileW(file->GetPath().c_str()) != 0;
}

std::vector<WString> CFileSystemWindows::List(const CFile* file) const {
  std::vector<WString> names;
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW(file->GetPath().c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    names.emplace_back(data.cFileName);
  } while (FindNextFileW(search, &data));
  FindClose(search);
  return names;
}

bool CFileSystemWindows::CreateDirectoryW(const CFile* file) const {
  return ::CreateDirectoryW(file->GetPath().c_str(), nullptr) != 0;
}

bool CFileSystemWindows::Rename(const CFile* from, const CFile* to) const {
  return MoveFileW(from->GetPath().c_str(), to->GetPath().c_str()) != 0;
}

bool CFileSystemWindows::SetLastModifiedTime(const CFile* file, std::uint64_t time) const {
  const OpenedFile open(file->GetPath(), kWriting, kShareBoth, OPEN_EXISTING, 0);
  const FILETIME ticks = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
  return open.IsOpen() && SetFileTime(open.Get(), nullptr, nullptr, &ticks) != 0;
}

bool CFileSystemWindows::SetReadOnly(const CFile* file) const {
  const WString& path = file->GetPath();
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         SetFileAttributesW(path.c_str(), attributes | FILE_ATTRIBUTE_READONLY) != 0;
}

std::vector<CFile> CFileSystemWindows::ListRoots() const {
  std::vector<CFile> roots;
  const DWORD drives = GetLogicalDrives();
  WString root = KTEXT("A:\\");
  for (int drive = 0; drive < kDriveLetters; ++drive) {
    if ((drives >> drive & 1) == 0) continue;
    root.SetChar(0, static_cast<WChar>(KTEXT('A') + drive));
    roots.emplace_back(root);
  }
  return roots;
}

WString CFileSystemWindows::GetTmpDir() const {
  return TextOfCall(kFirstPathSize,
                    [](DWORD size, WChar* buffer) { return GetTempPathW(size, buffer); });
}

int CFileSystemWindows::Compare(const CFile* a, const CFile* b) const {
  return a->GetPath().CompareIgnoreCase(b->GetPath().c_str());
}

}  // namespace kelp
