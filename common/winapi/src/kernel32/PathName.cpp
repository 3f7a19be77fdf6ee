#include "kernel32/PathName.h"

#include <dirent.h>
#include <limits.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wctype.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "Fail.h"
#include "kernel32/Drive.h"

std::string ToUtf8(std::u16string_view text) {
  char16_t bits = 0;
  for (const char16_t unit : text) bits |= unit;
  if (bits < 0x80) return {text.begin(), text.end()};
  std::string bytes(3 * text.size(), '\0');
  bytes.resize(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                   bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr));
  return bytes;
}

std::u16string FromUtf8(std::string_view text) {
  if (text.empty()) return {};  // which is an error for the call below
  std::u16string units(text.size(), u'\0');
  units.resize(MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                   units.data(), static_cast<int>(units.size())));
  return units;
}

std::u16string FoldedName(std::u16string_view name) {
  static const locale_t kUnicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  std::u16string folded(name);
  if (kUnicode != nullptr) {
    for (char16_t& unit : folded) {
      const auto upper = static_cast<char16_t>(towupper_l(unit, kUnicode));
      // As on Windows, a letter beyond ASCII never equals one of ASCII.
      if (unit < 0x80 || upper >= 0x80) unit = upper;
    }
  }
  return folded;
}

namespace {

// What stands for a piece of a name that no path can hold.
constexpr char16_t kReplacement = 0xFFFD;

bool StartsWithDrive(std::u16string_view path) {
  return path.size() >= 2 && path[1] == ':' && IsDriveLetter(path[0]);
}

bool StartsWithSeparator(std::u16string_view path) {
  return !path.empty() && IsSeparator(path[0]);
}

// Without the prefix of a path that the system would take as it stands.
std::u16string_view WithoutDevicePrefix(std::u16string_view path) {
  for (const std::u16string_view prefix : {u"\\\\?\\", u"\\\\.\\", u"\\??\\"}) {
    if (path.starts_with(prefix) && StartsWithDrive(path.substr(prefix.size()))) {
      return path.substr(prefix.size());
    }
  }
  return path;
}

// What stands before the parts of a path: "X:\", "\\", or the current folder. Takes the drive off
// the path.
std::u16string TakeBase(std::u16string_view& path) {
  char16_t drive = 0;
  if (StartsWithDrive(path)) {
    drive = path[0];
    path.remove_prefix(2);
    if (StartsWithSeparator(path)) return {drive, ':', '\\'};
  } else if (path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1])) {
    return u"\\\\";
  }
  // While C: is the current drive, every folder counts as one of it.
  if (drive == 0 && StartsWithSeparator(path) && (CurrentDrive() | 0x20) == 'c') return u"C:\\";
  std::u16string base = CurrentFolder();
  if (base.empty()) base = u"C:\\";
  if (drive == 0) drive = base[0];
  // Only the current drive has a current folder; on another it is the root.
  if (StartsWithSeparator(path) || (drive | 0x20) != (base[0] | 0x20)) base = u"?:\\";
  base[0] = drive;
  return base;
}

// Takes what stands before the next separator off a path, and the separator.
std::u16string_view TakePart(std::u16string_view& path) {
  const auto end = std::find_if(path.begin(), path.end(), IsSeparator);
  const auto size = static_cast<std::size_t>(end - path.begin());
  const std::u16string_view part = path.substr(0, size);
  path.remove_prefix(std::min(size + 1, path.size()));
  return part;
}

// The last name of a path loses all points and blanks at its end.
std::u16string_view WithoutTail(std::u16string_view name) {
  const std::size_t last = name.find_last_not_of(u". ");
  return name.substr(0, last == name.npos ? 0 : last + 1);
}

// A name inside a path loses one point at its end and keeps blanks; one of points alone stays.
std::u16string_view WithoutFinalPoint(std::u16string_view name) {
  const bool ends = name.ends_with('.') && name.find_first_not_of('.') != name.npos;
  return ends ? name.substr(0, name.size() - 1) : name;
}

bool CanBeMade(std::u16string_view name) {
  return std::all_of(name.begin(), name.end(), [](char16_t unit) {
    constexpr std::u16string_view kForbidden = u"<>:\"|?*";
    return unit >= 0x20 && kForbidden.find(unit) == kForbidden.npos;
  });
}

bool Exists(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

// Most entries of a folder differ from a name in their first letter already.
bool MayEqual(char a, char b) {
  return ((a ^ b) & 0x80) == 0 && (a < 0 || ((a ^ b) & ~0x20) == 0);
}

// The entry of a folder that has a name in any case, or empty text.
std::string FindEntry(const std::string& folder, std::u16string_view name) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  if (entries == nullptr) return {};
  const char first = ToUtf8(name.substr(0, 1))[0];
  const std::u16string wanted = FoldedName(name);
  while (const dirent* entry = readdir(entries.get())) {
    const char entryFirst = entry->d_name[0];
    if (entryFirst != '\\' && !MayEqual(entryFirst, first)) continue;
    if (FoldedName(FromDiskName(entry->d_name)) == wanted) return entry->d_name;
  }
  return {};
}

// The entry of a folder by a name as it is written, or else in any case; or empty text.
std::string FindName(const std::string& folder, std::u16string_view name) {
  if (name.empty()) return {};
  std::string asWritten = ToUtf8(name);
  return Exists(folder + asWritten) ? asWritten : FindEntry(folder, name);
}

}  // namespace

std::u16string CurrentFolder() {
  const std::unique_ptr<char, void (*)(void*)> current(getcwd(nullptr, 0), std::free);
  if (current == nullptr) return {};
  const char* const folder = current.get();
  // The program may have gone elsewhere since, without the layer.
  char root[PATH_MAX] = "";
  std::string definition;
  const char16_t drive = CurrentDrive();
  const bool isDefined = FindDrive(drive, definition) && !definition.empty() &&
                         realpath(definition.c_str(), root) != nullptr;
  const std::size_t rootSize = std::strlen(root);
  if (!isDefined || std::strncmp(folder, root, rootSize) != 0) return FromPosixPath(folder);
  if (folder[rootSize] != 0 && folder[rootSize] != '/') return FromPosixPath(folder);
  std::u16string text = FromPosixPath(folder + rootSize);
  text[0] = drive;
  if (text.size() == 2) text += '\\';
  return text;
}

namespace {

// The absolute form of a path with its names as they are written or, where trims is set, as the
// system takes them.
std::u16string FullPath(std::u16string_view path, bool trims) {
  path = WithoutDevicePrefix(path);
  std::u16string full = TakeBase(path);
  full.reserve(full.size() + path.size() + 1);
  const bool isFolder = !path.empty() && IsSeparator(path.back());
  const std::size_t rootSize = full.starts_with(u"\\\\") ? 2 : 3;
  std::size_t currentSize =
      full.size();  // what is left of the current folder, as it is on the disk
  while (!path.empty()) {
    const std::u16string_view part = TakePart(path);
    if (part.empty() || part == u".") continue;
    if (part == u"..") {
      const std::size_t parent = full.find_last_of('\\');
      full.resize(std::max(parent == full.npos ? 0 : parent, rootSize));
      currentSize = std::min(currentSize, full.size());
      continue;
    }
    if (full.back() != '\\') full += '\\';
    full += trims ? WithoutFinalPoint(part) : part;
  }
  if (trims && !isFolder) full.resize(std::max(full.find_last_not_of(u". ") + 1, currentSize));
  if (full.size() > rootSize && full.back() == '\\') full.pop_back();
  if (isFolder && full.back() != '\\') full += '\\';
  return full;
}

// A path with its names as they are written, below the folder that stands as its drive.
struct WrittenPath {
  std::string root;
  std::u16string names;  // "\folder\name", without a separator at the end
  bool endsInSeparator;

  // The file of the first names.
  std::string Posix(std::size_t size = std::u16string::npos) const {
    std::string posix = ToUtf8(std::u16string_view(names).substr(0, size));
    std::replace(posix.begin(), posix.end(), '\\', '/');
    return root + posix;
  }
  std::string WithSeparator(std::string posix) const {
    if (posix.empty() || endsInSeparator) posix += '/';
    return posix;
  }
};

bool ReadPath(const char16_t* path, WrittenPath& written) {
  if (path == nullptr || *path == 0) return Fail(ERROR_PATH_NOT_FOUND);
  const std::u16string full = FullPath(path, false);
  if (!StartsWithDrive(full)) return Fail(ERROR_PATH_NOT_FOUND);
  if (!FindDrive(full[0], written.root)) return Fail(ERROR_PATH_NOT_FOUND);
  written.names = full.substr(2);
  written.endsInSeparator = written.names.back() == '\\';
  if (written.endsInSeparator) written.names.pop_back();
  return true;
}

// How much of the names is there as they are written.
std::size_t SizeThere(const WrittenPath& written) {
  std::size_t size = written.names.size();
  do {
    size = size == 0 ? 0 : written.names.rfind('\\', size - 1);
  } while (size > 0 && !Exists(written.Posix(size)));
  return size;
}

// Goes on from what is there: each name as it is on the disk, as far as one is there. Gives false
// where one that isn't there can't be made.
bool Resolve(const WrittenPath& written, std::string& posix) {
  const std::size_t there = SizeThere(written);
  posix = written.Posix(there);
  std::u16string_view names = std::u16string_view(written.names).substr(there);
  TakePart(names);  // nothing, before the separator
  bool missing = false;
  while (!names.empty()) {
    const std::u16string_view name = TakePart(names);
    const bool isLast = names.empty() && !written.endsInSeparator;
    const std::u16string_view trimmed = isLast ? WithoutTail(name) : WithoutFinalPoint(name);
    std::string entry = missing ? std::string() : FindName(posix + '/', name);
    if (entry.empty() && !missing && trimmed != name) entry = FindName(posix + '/', trimmed);
    missing = entry.empty();
    if (missing && !CanBeMade(trimmed)) return false;
    if (missing) entry = ToUtf8(trimmed);
    if (!entry.empty()) posix += '/' + entry;
  }
  return true;
}

}  // namespace

std::u16string FullPath(std::u16string_view path) {
  return FullPath(path, true);
}

std::string ToPosixPath(const char16_t* path) {
  WrittenPath written;
  if (!ReadPath(path, written)) return {};
  std::string posix = written.Posix();
  if (!Exists(posix) && !Resolve(written, posix)) return Fail(ERROR_INVALID_NAME, std::string());
  return written.WithSeparator(std::move(posix));
}

std::string ToPosixPathAsGiven(const char16_t* path) {
  WrittenPath written;
  if (!ReadPath(path, written)) return {};
  return written.WithSeparator(written.Posix());
}

std::u16string FromDiskName(std::string_view name) {
  std::u16string text = FromUtf8(name);
  std::replace(text.begin(), text.end(), u'\\', kReplacement);
  return text;
}

std::u16string FromPosixPath(std::string_view path) {
  std::u16string text = u"C:" + FromDiskName(path);
  std::replace(text.begin(), text.end(), u'/', u'\\');
  return text;
}

void SetFileError(int error, const std::string& posixPath) {
  struct Meaning {
    int error;
    DWORD code;
  };
  static constexpr Meaning kMeanings[] = {
      {ENOTDIR, ERROR_PATH_NOT_FOUND},     {EACCES, ERROR_ACCESS_DENIED},
      {EPERM, ERROR_ACCESS_DENIED},        {EISDIR, ERROR_ACCESS_DENIED},
      {EROFS, ERROR_WRITE_PROTECT},        {EEXIST, ERROR_ALREADY_EXISTS},
      {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},    {ENOSPC, ERROR_DISK_FULL},
      {EDQUOT, ERROR_DISK_FULL},           {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
      {EMFILE, ERROR_TOO_MANY_OPEN_FILES}, {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
      {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},   {EBUSY, ERROR_SHARING_VIOLATION},
      {ETXTBSY, ERROR_SHARING_VIOLATION},  {ELOOP, ERROR_PATH_NOT_FOUND},
  };
  if (error == ENOENT) {
    const std::size_t last = posixPath.find_last_not_of('/');
    const std::size_t parent = posixPath.find_last_of('/', last);
    const bool folderThere = parent == posixPath.npos || Exists(posixPath.substr(0, parent) + '/');
    return SetLastError(folderThere ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
  }
  for (const Meaning& meaning : kMeanings) {
    if (meaning.error == error) return SetLastError(meaning.code);
  }
  SetLastError(ERROR_GEN_FAILURE);
}

DWORD GiveText(std::u16string_view text, DWORD size, LPWSTR buffer) {
  if (text.size() >= size) return static_cast<DWORD>(text.size() + 1);
  buffer[text.copy(buffer, text.size())] = 0;
  return static_cast<DWORD>(text.size());
}
