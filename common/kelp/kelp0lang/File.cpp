#include "kelp0lang/File.h"

#include <windows.h>

#include <algorithm>

#include "kelp0lang/LegacyPath.h"

namespace kelp {
namespace {

IFileSystem& System() {
  return IFileSystem::GetFileSystem();
}

bool Has(const CFile& file, unsigned int attribute) {
  return (System().GetBooleanAttributes(&file) & attribute) != 0;
}

// Where the name ends and the extension begins: the place of the last unit that separates, or -1.
int LastOf(const WString& path, int from, bool withPoint) {
  for (int at = from; at >= 0; --at) {
    const WChar unit = path.GetChar(at);
    if (unit == CFile::s_cSeparator || unit == CFile::s_cPathSeparator) return at;
    if (withPoint && unit == KTEXT('.')) return at;
  }
  return -1;
}

// The place of the point before the extension, or -1.
int ExtensionPoint(const WString& path) {
  const int at = LastOf(path, path.Length() - 1, true);
  return at >= 0 && path.GetChar(at) == KTEXT('.') ? at : -1;
}

// The path up to its last part, separator included, where that part is a pattern; else -1.
int PatternFolderLength(const WString& path) {
  const WChar* const text = path.c_str();
  int start = path.Length();
  bool pattern = false;
  for (; start > 0; --start) {
    const WChar unit = text[start - 1];
    if (unit == KTEXT('\\') || unit == KTEXT('/') || unit == KTEXT(':')) break;
    pattern = pattern || unit == KTEXT('*') || unit == KTEXT('?');
  }
  return pattern ? start : -1;
}

}  // namespace

IFileNameFilter::~IFileNameFilter() = default;
IFileSystem::~IFileSystem() = default;
CFile::~CFile() = default;

CFile::CFile(const WString& path) : m_sPath(System().Normalize(path)) {}

CFile::CFile(const WString& parent, const WString& child)
    : m_sPath(System().Resolve(parent, child)) {}

CFile::CFile(const CFile& parent, const WString& child) : CFile(parent.m_sPath, child) {}

WString CFile::GetName() const {
  return m_sPath.Substring(m_sPath.rfind(s_cSeparator) + 1);
}

WString CFile::GetParent() const {
  return m_sPath.Substring(0, m_sPath.rfind(s_cSeparator));
}

CFile CFile::GetParentFile() const {
  return CFile(GetParent());
}

WString CFile::GetExt() const {
  const int point = ExtensionPoint(m_sPath);
  return point < 0 ? WString() : m_sPath.Substring(point + 1);
}

WString CFile::GetNameWithoutExt() const {
  const int point = ExtensionPoint(m_sPath);
  const int end = point < 0 ? m_sPath.Length() : point;
  const int start = LastOf(m_sPath, end - 1, false) + 1;
  return m_sPath.Substring(start, end - start);
}

bool CFile::IsAbsolute() const {
  return System().IsAbsolute(this);
}

WString CFile::GetAbsolutePath() const {
  return System().Resolve(this);
}

CFile CFile::GetAbsoluteFile() const {
  return CFile(GetAbsolutePath());
}

WString CFile::GetCanonicalPath() const {
  return System().Canonicalize(System().Resolve(this));
}

CFile CFile::GetCanonicalFile() const {
  return CFile(GetCanonicalPath());
}

bool CFile::Exists() const {
  return Has(*this, IFileSystem::kExists);
}

bool CFile::IsFile() const {
  return Has(*this, IFileSystem::kIsFile);
}

bool CFile::IsDirectory() const {
  return Has(*this, IFileSystem::kIsDirectory);
}

bool CFile::IsHidden() const {
  return Has(*this, IFileSystem::kIsHidden);
}

bool CFile::CanRead() const {
  return System().CheckAccess(this, false);
}

bool CFile::CanWrite() const {
  return System().CheckAccess(this, true);
}

std::uint64_t CFile::GetCreationTime() const {
  return System().GetCreationTime(this);
}

std::uint64_t CFile::GetLastModifiedTime() const {
  return System().GetLastModifiedTime(this);
}

std::uint64_t CFile::GetLastAccessTime() const {
  return System().GetLastAccessTime(this);
}

std::uint64_t CFile::Length() const {
  return System().GetLength(this);
}

bool CFile::CreateNewFile() const {
  return System().CreateFileExclusively(m_sPath);
}

bool CFile::Delete() const {
  return System().Delete(this);
}

bool CFile::MkDir() const {
  return System().CreateDirectoryW(this);
}

bool CFile::MkDirs() const {
  if (Exists()) return false;
  if (MkDir()) return true;
  const WString parent = GetParent();
  return !parent.empty() && CFile(parent).MkDirs() && MkDir();
}

bool CFile::RenameTo(const CFile& to) const {
  return System().Rename(this, &to);
}

bool CFile::SetLastModifiedTime(std::uint64_t time) const {
  return System().SetLastModifiedTime(this, time);
}

bool CFile::SetReadOnly() const {
  return System().SetReadOnly(this);
}

std::vector<WString> CFile::List() const {
  return System().List(this);
}

std::vector<WString> CFile::List(IFileNameFilter* filter) const {
  std::vector<WString> names = List();
  if (filter != nullptr) {
    std::erase_if(names, [&](const WString& name) { return !filter->Accept(this, name); });
  }
  return names;
}

std::vector<CFile> CFile::ListFiles() const {
  return ListFiles(nullptr);
}

std::vector<CFile> CFile::ListFiles(IFileNameFilter* filter) const {
  const std::vector<WString> names = List(filter);
  const int folderLength = PatternFolderLength(m_sPath);
  const WString folder = m_sPath.Substring(0, folderLength);
  std::vector<CFile> files(names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    files[i].m_sPath =
        folderLength < 0 ? System().Resolve(m_sPath, names[i]) : folder.Concat(names[i]);
  }
  return files;
}

std::vector<CFile> CFile::ListRoots() {
  return System().ListRoots();
}

WString CFile::GetTmpDir() {
  return System().GetTmpDir();
}

CFile CFile::CreateTempFile(const CFile* directory, const WString& prefix, const WString& suffix) {
  const CFile folder = directory != nullptr ? *directory : CFile(GetTmpDir());
  const WString end = suffix.empty() ? WString(KTEXT(".tmp")) : suffix;
  std::uint32_t count = 0;
  do {
    CFile file(folder, prefix.Concat(WString::ValueOf(count)).Concat(end));
    if (file.CreateNewFile()) return file;
    // Any other reason holds for every name.
    if (GetLastError() != ERROR_FILE_EXISTS) break;
  } while (++count != 0);
  return CFile();
}

void CopyFileForced(const WString& source, const WString& destination) {
  WString stem = destination;
  WString extension = destination;
  EliminaEstensioneFile(stem);
  EstraiEstensFile(extension);
  WString name = destination;
  for (int number = 2; FEsisteIlFile(name.c_str()); ++number) {
    name =
        (stem + KTEXT(" (")).Concat(WString::ValueOf(number)).Concat(KTEXT(").")).Concat(extension);
  }
  CopyFileW(source.c_str(), name.c_str(), TRUE);
}

}  // namespace kelp
