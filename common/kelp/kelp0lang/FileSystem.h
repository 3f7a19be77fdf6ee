// The file system of CFile on the Windows API.
//
// IFileSystem::GetFileSystem gives it; what each operation does is told at CFile (File.h).
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/File.h"

namespace kelp {

class KELP0LANG_API CFileSystemWindows : public IFileSystem {
 public:
  WChar GetSeparator() const override;
  WChar GetPathSeparator() const override;
  WString Normalize(const WString& path) const override;
  WString Resolve(const CFile* file) const override;
  WString Resolve(const WString& parent, const WString& child) const override;
  WString GetDefaultParent() const override;
  bool IsAbsolute(const CFile* file) const override;
  WString Canonicalize(const WString& path) const override;
  unsigned int GetBooleanAttributes(const CFile* file) const override;
  bool CheckAccess(const CFile* file, bool write) const override;
  std::uint64_t GetCreationTime(const CFile* file) const override;
  std::uint64_t GetLastModifiedTime(const CFile* file) const override;
  std::uint64_t GetLastAccessTime(const CFile* file) const override;
  std::uint64_t GetLength(const CFile* file) const override;
  bool CreateFileExclusively(const WString& path) const override;
  bool Delete(const CFile* file) const override;
  std::vector<WString> List(const CFile* file) const override;
  bool CreateDirectoryW(const CFile* file) const override;
  bool Rename(const CFile* from, const CFile* to) const override;
  bool SetLastModifiedTime(const CFile* file, std::uint64_t time) const override;
  bool SetReadOnly(const CFile* file) const override;
  std::vector<CFile> ListRoots() const override;
  WString GetTmpDir() const override;
  int Compare(const CFile* a, const CFile* b) const override;

  static CFileSystemWindows s_FileSystem;

 private:
  constexpr CFileSystemWindows() = default;
};

}  // namespace kelp
