// Paths and what the system tells of them: CFile holds one path, and asks a file system for all
// that isn't text.
//
//   const kelp::CFile jobs(kelp::CFile::GetTmpDir(), KTEXT("jobs"));
//   jobs.MkDirs();
//   const kelp::CFile job(jobs, KTEXT("survey.dat"));
//   if (job.CanRead()) show(job.GetNameWithoutExt(), job.Length());
//   for (const kelp::CFile& file : kelp::CFile(jobs, KTEXT("*.dat")).ListFiles()) open(file);
//
// A CFile keeps nothing open and remembers nothing of the disk: each question goes to the system.
// It copies as a value, at the price of a text.
//
// The separator is "\". A "/" becomes one where a path is normalised: in the constructor with one
// path, not in those that join.
//
// Nothing throws for the disk's sake: what can't be done gives false, 0, an empty text or an empty
// list, and the reason is in GetLastError. Threads: any; an object is a text (String.h).
#pragma once

#include <cstdint>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/Object.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

namespace kelp {

class CFile;

// Chooses among the names of a folder.
//
//   class Drawings : public kelp::IFileNameFilter {
//    public:
//     bool Accept(const kelp::CFile*, const kelp::WString& name) override {
//       return name.ToLowerCase().EndsWith(KTEXT(".dxf"));
//     }
//   };
//   Drawings drawings;
//   const std::vector<kelp::WString> names = kelp::CFile(KTEXT("C:\\jobs\\*")).List(&drawings);
//
// The caller keeps the filter, and ends it.
class KELP0LANG_API IFileNameFilter {
 public:
  virtual ~IFileNameFilter();
  // directory is the object that is listed.
  virtual bool Accept(const CFile* directory, const WString& name) = 0;
};

class KELP0LANG_API CFile : public Object {
 public:
  static constexpr WChar s_cSeparator = KTEXT('\\');
  static constexpr WChar s_cPathSeparator = KTEXT(':');

  // The empty path.
  CFile() = default;
  // The path with "\" for "/" and without separators at its end; "C:\", spelt so, stays.
  CFile(const WString& path);
  // Parent, a separator where parent doesn't end in one, child; nothing else of them is looked at.
  // An empty child gives the parent, an empty parent "\" and the child.
  CFile(const WString& parent, const WString& child);
  CFile(const CFile& parent, const WString& child);
  CFile(const CFile&) = default;
  CFile& operator=(const CFile&) = default;
  ~CFile() override;

  const WString& GetPath() const { return m_sPath; }
  WString ToString() const { return m_sPath; }

  // The path as text, without a look at the disk.
  //
  // What stands behind the last "\", and before it: the whole, and nothing, where there is none.
  WString GetName() const;
  WString GetParent() const;
  CFile GetParentFile() const;
  // What stands behind the last "." of the name, a name that begins at "\" or ":"; without the
  // point. Empty where the name has none.
  WString GetExt() const;
  // The name up to that point; of ".rc" the empty text.
  WString GetNameWithoutExt() const;
  // Whether it begins with a drive and a root, "C:\". A path on a server doesn't.
  bool IsAbsolute() const;

  // The full path by the system, of any length, from the current folder on; whether it is there
  // isn't asked.
  WString GetAbsolutePath() const;
  CFile GetAbsoluteFile() const;
  // The full path in upper case, to compare paths by; empty where it holds "*" or "?". Links and
  // short names stay.
  WString GetCanonicalPath() const;
  CFile GetCanonicalFile() const;

  bool Exists() const;
  bool IsFile() const;
  bool IsDirectory() const;
  bool IsHidden() const;
  // Whether it opens as a file, for reading or for writing. A folder doesn't.
  bool CanRead() const;
  bool CanWrite() const;
  // Ticks of 100 ns since 1 January 1601 UTC; 0 where there is nothing of that path.
  std::uint64_t GetCreationTime() const;
  std::uint64_t GetLastModifiedTime() const;
  std::uint64_t GetLastAccessTime() const;
  // Bytes; 0 also for what can't be opened for reading, a folder among them.
  std::uint64_t Length() const;

  // Makes an empty file; false where one is there. Of several that try at once one succeeds.
  bool CreateNewFile() const;
  // Files only.
  bool Delete() const;
  // Makes the folder; its parent must be there.
  bool MkDir() const;
  // Makes the folder with its missing parents; false also where it is there already, or where
  // another makes one of them meanwhile (CheckSeDirExist, LegacyPath.h, is the one for that).
  bool MkDirs() const;
  // False where something of that name is there.
  bool RenameTo(const CFile& to) const;
  // Ticks as above; 0 leaves the file's time.
  bool SetLastModifiedTime(std::uint64_t time) const;
  // Nobody may write it from now on.
  bool SetReadOnly() const;

  // The path is the search: "C:\jobs\*.dat" gives what matches, "C:\jobs\*" all with "." and "..",
  // and "C:\jobs" that one name. Names come in the order of the system.
  std::vector<WString> List() const;
  // Those that the filter accepts; null accepts all.
  std::vector<WString> List(IFileNameFilter* filter) const;
  // The same as files: names that a pattern has found stand in the folder of the pattern, others
  // are joined to the path.
  std::vector<CFile> ListFiles() const;
  std::vector<CFile> ListFiles(IFileNameFilter* filter) const;

  // The drives, "A:\" first.
  static std::vector<CFile> ListRoots();
  // With a separator at its end.
  static WString GetTmpDir();
  // Makes an empty file prefix0.tmp, or prefix1.tmp where that is there, and so on; an empty suffix
  // means ".tmp", a null folder that of GetTmpDir. The file is the caller's. Where the folder takes
  // no file the result has the empty path.
  static CFile CreateTempFile(const CFile* directory, const WString& prefix, const WString& suffix);

 private:
  WString m_sPath;
};

// What CFile asks, of the system that the program runs on.
class KELP0LANG_API IFileSystem {
 public:
  // Bits of GetBooleanAttributes.
  static constexpr unsigned int kExists = 1;
  static constexpr unsigned int kIsFile = 2;
  static constexpr unsigned int kIsDirectory = 4;
  static constexpr unsigned int kIsHidden = 8;
  static constexpr unsigned int kIsReadOnly = 16;

  virtual ~IFileSystem();

  // There as long as the library is.
  static IFileSystem& GetFileSystem();

  virtual WChar GetSeparator() const = 0;
  virtual WChar GetPathSeparator() const = 0;
  virtual WString Normalize(const WString& path) const = 0;
  virtual WString Resolve(const CFile* file) const = 0;
  virtual WString Resolve(const WString& parent, const WString& child) const = 0;
  virtual WString GetDefaultParent() const = 0;
  virtual bool IsAbsolute(const CFile* file) const = 0;
  virtual WString Canonicalize(const WString& path) const = 0;
  virtual unsigned int GetBooleanAttributes(const CFile* file) const = 0;
  virtual bool CheckAccess(const CFile* file, bool write) const = 0;
  virtual std::uint64_t GetCreationTime(const CFile* file) const = 0;
  virtual std::uint64_t GetLastModifiedTime(const CFile* file) const = 0;
  virtual std::uint64_t GetLastAccessTime(const CFile* file) const = 0;
  virtual std::uint64_t GetLength(const CFile* file) const = 0;
  virtual bool CreateFileExclusively(const WString& path) const = 0;
  virtual bool Delete(const CFile* file) const = 0;
  virtual std::vector<WString> List(const CFile* file) const = 0;
  virtual bool CreateDirectoryW(const CFile* file) const = 0;
  virtual bool Rename(const CFile* from, const CFile* to) const = 0;
  virtual bool SetLastModifiedTime(const CFile* file, std::uint64_t time) const = 0;
  virtual bool SetReadOnly(const CFile* file) const = 0;
  virtual std::vector<CFile> ListRoots() const = 0;
  virtual WString GetTmpDir() const = 0;
  // Negative, 0 or positive: the paths without regard to case.
  virtual int Compare(const CFile* a, const CFile* b) const = 0;
};

// Copies a file and never overwrites one: where destination can be read the copy goes to
// "stem (2).ext", or (3) and so on, beside it. What stands behind the last "." of the whole path is
// the extension; a path without one is both stem and extension. That a copy failed isn't told.
KELP0LANG_API void CopyFileForced(const WString& source, const WString& destination);

}  // namespace kelp
