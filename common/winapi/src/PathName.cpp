#include "PathName.h"

#include <dirent.h>
#include <limits.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wctype.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "Drive.h"

std::string ToUtf8(std::u16string_view text) {
  std::string bytes(3 * text.size(), '\0');
  bytes.resize(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                   bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr));
  return bytes;
}

std::u16string FromUtf8(std::string_view text) {
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

std::u16string CurrentFolder() {
  char folder[PATH_MAX];
  return FromPosixPath(getcwd(folder, sizeof(folder)) == nullptr ? "/" : folder);
}

// What stands before the parts of a path: "X:\", "\\", or the current folder. Takes the drive off
// the path.
std::u16string TakeBase(std::u16string_view& path) {
  char16_t drive = 'C';
  const bool named = StartsWithDrive(path);
  if (named) {
    drive = path[0];
    path.remove_prefix(2);
  } else if (path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1])) {
    return u"\\\\";
  }
  // Only C: has a current folder; on another drive it is the root.
  const bool relative = !StartsWithSeparator(path) && (drive | 0x20) == 'c';
  std::u16string base = relative ? CurrentFolder() : std::u16string{drive, ':', '\\'};
  if (named) base[0] = drive;
  return base;
}

std::vector<std::u16string_view> SplitParts(std::u16string_view path) {
  std::vector<std::u16string_view> parts;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of(u"\\/"), path.size());
    if (end != 0) parts.push_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return parts;
}

// A name without the points and blanks at its end.
std::u16string_view WithoutTail(std::u16string_view name) {
  const std::size_t last = name.find_last_not_of(u". ");
  return name.substr(0, last == name.npos ? 0 : last + 1);
}

bool IsForbidden(char16_t unit) {
  return unit < 0x20 || std::u16string_view(u"<>:\"|?*").find(unit) != std::u16string_view::npos;
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
    if (!MayEqual(entry->d_name[0], first)) continue;
    if (FoldedName(FromUtf8(entry->d_name)) == wanted) return entry->d_name;
  }
  return {};
}

// Adds parts to a folder, each as it is on the disk.
std::string Descend(const std::string& root, const std::vector<std::u16string_view>& parts) {
  std::string asGiven = root;
  for (const std::u16string_view part : parts) asGiven += '/' + ToUtf8(part);
  if (Exists(asGiven)) return asGiven;

  std::string path = root;
  bool missing = false;
  for (const std::u16string_view part : parts) {
    const std::string name = ToUtf8(part);
    std::string entry;
    if (!missing && !Exists(path + '/' + name)) {
      entry = FindEntry(path + '/', part);
      missing = entry.empty();
    }
    path += '/' + (entry.empty() ? name : entry);
  }
  return path;
}

std::string Refuse(DWORD error) {
  SetLastError(error);
  return {};
}

}  // namespace

std::u16string FullPath(std::u16string_view path) {
  path = WithoutDevicePrefix(path);
  std::u16string full = TakeBase(path);
  const bool isFolder = !path.empty() && IsSeparator(path.back());
  const std::size_t rootSize = full.starts_with(u"\\\\") ? 2 : 3;
  for (std::u16string_view part : SplitParts(path)) {
    if (part == u".") continue;
    if (part == u"..") {
      const std::size_t parent = full.find_last_of('\\');
      full.resize(std::max(parent == full.npos ? 0 : parent, rootSize));
      continue;
    }
    part = WithoutTail(part);
    if (part.empty()) continue;
    if (full.back() != '\\') full += '\\';
    full += part;
  }
  if (isFolder && full.back() != '\\') full += '\\';
  return full;
}

std::string ToPosixPath(const char16_t* path) {
  if (path == nullptr || *path == 0) return Refuse(ERROR_PATH_NOT_FOUND);
  const std::u16string full = FullPath(path);
  if (!StartsWithDrive(full)) return Refuse(ERROR_PATH_NOT_FOUND);
  if (std::any_of(full.begin() + 2, full.end(), IsForbidden)) return Refuse(ERROR_INVALID_NAME);
  std::string root;
  if (!FindDrive(full[0], root)) return Refuse(ERROR_PATH_NOT_FOUND);
  std::string posix = Descend(root, SplitParts(std::u16string_view(full).substr(2)));
  if (posix.empty() || full.back() == '\\') posix += '/';
  return posix;
}

std::u16string FromPosixPath(std::string_view path) {
  std::u16string text = u"C:" + FromUtf8(path);
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
