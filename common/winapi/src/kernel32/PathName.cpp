#include "kernel32/PathName.h"

#include <dirent.h>
#include <limits.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wctype.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <cerrno>
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

// A name without the points and blanks at its end.
std::u16string_view WithoutTail(std::u16string_view name) {
  const std::size_t last = name.find_last_not_of(u". ");
  return name.substr(0, last == name.npos ? 0 : last + 1);
}

// What stands for each byte of a path in that of POSIX; 0 for what no name holds.
constexpr auto kPosixBytes = [] {
  std::array<char, 0x100> bytes{};
  for (std::size_t i = 0x20; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i);
  for (const char unit : {'<', '>', ':', '"', '|', '?', '*'})
    bytes[static_cast<unsigned char>(unit)] = 0;
  bytes['\\'] = '/';
  return bytes;
}();

// Gives false for a path with a name that can't be.
bool ToPosixBytes(std::string& path) {
  bool good = true;
  for (char& byte : path) {
    byte = kPosixBytes[static_cast<unsigned char>(byte)];
    good &= byte != 0;
  }
  return good;
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

// A path below a root with each name as it is on the disk, as far as one is there.
std::string OnDisk(const std::string& asGiven, std::size_t rootSize) {
  std::size_t done = asGiven.size();
  while (done > rootSize && !Exists(asGiven.substr(0, done))) done = asGiven.rfind('/', done - 1);

  std::string path = asGiven.substr(0, done);
  bool missing = false;
  while (done < asGiven.size()) {
    const std::size_t end = std::min(asGiven.find('/', done + 1), asGiven.size());
    const std::string name = asGiven.substr(done + 1, end - done - 1);
    std::string entry;
    if (!missing && !Exists(path + '/' + name)) {
      entry = FindEntry(path + '/', FromUtf8(name));
      missing = entry.empty();
    }
    path += '/' + (entry.empty() ? name : entry);
    done = end;
  }
  return path;
}

}  // namespace

std::u16string CurrentFolder() {
  char folder[PATH_MAX];
  if (getcwd(folder, sizeof(folder)) == nullptr) return {};
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

std::u16string FullPath(std::u16string_view path) {
  path = WithoutDevicePrefix(path);
  std::u16string full = TakeBase(path);
  full.reserve(full.size() + path.size() + 1);
  const bool isFolder = !path.empty() && IsSeparator(path.back());
  const std::size_t rootSize = full.starts_with(u"\\\\") ? 2 : 3;
  while (!path.empty()) {
    std::u16string_view part = TakePart(path);
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

namespace {

// The file behind a path with the names as they are given. What stands before rootSize is that of
// the drive; a separator at the end is left out.
struct GivenPath {
  std::string posix;
  std::size_t rootSize;
  bool endsInSeparator;
};

bool ReadPath(const char16_t* path, GivenPath& given) {
  if (path == nullptr || *path == 0) return Fail(ERROR_PATH_NOT_FOUND);
  const std::u16string full = FullPath(path);
  if (!StartsWithDrive(full)) return Fail(ERROR_PATH_NOT_FOUND);
  std::u16string_view names = std::u16string_view(full).substr(2);
  given.endsInSeparator = names.back() == '\\';
  names.remove_suffix(given.endsInSeparator);
  given.posix = ToUtf8(names);
  if (!ToPosixBytes(given.posix)) return Fail(ERROR_INVALID_NAME);
  std::string root;
  if (!FindDrive(full[0], root)) return Fail(ERROR_PATH_NOT_FOUND);
  given.rootSize = root.size();
  given.posix.insert(0, root);
  return true;
}

std::string WithSeparator(std::string posix, const GivenPath& given) {
  if (posix.empty() || given.endsInSeparator) posix += '/';
  return posix;
}

}  // namespace

std::string ToPosixPath(const char16_t* path) {
  GivenPath given;
  if (!ReadPath(path, given)) return {};
  return WithSeparator(OnDisk(given.posix, given.rootSize), given);
}

std::string ToPosixPathAsGiven(const char16_t* path) {
  GivenPath given;
  if (!ReadPath(path, given)) return {};
  return WithSeparator(std::move(given.posix), given);
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
