// Listing of folders.
#include <dirent.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fail.h"
#include "kernel32/FileInfo.h"
#include "kernel32/PathName.h"

namespace {

// The wildcards of the file system, into which those of the programs are turned: a run of units, a
// run that leaves the last point, a unit that isn't a point or nothing, a point or the end.
constexpr char16_t kAny = '*';
constexpr char16_t kAnyBeforePoint = '<';
constexpr char16_t kUnitOrNothing = '>';
constexpr char16_t kPointOrEnd = '"';

bool HasWildcard(std::u16string_view text) {
  return text.find_first_of(u"*?") != text.npos;
}

// A pattern of the file system. "*.*" means every name and "*." one without a point; "?" matches no
// unit where a point or the end follows, as in the names of eight and three.
std::u16string ToFilePattern(std::u16string_view mask) {
  if (mask == u"*.*") return u"*";
  std::u16string pattern(mask);
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char16_t before = i == 0 ? u'\0' : pattern[i - 1];
    if (mask[i] == '.' && before == kAny) pattern[i - 1] = kAnyBeforePoint;
    if (mask[i] != '*' && mask[i] != '?') continue;
    if (before == '.') pattern[i - 1] = kPointOrEnd;
    if (mask[i] == '?') pattern[i] = kUnitOrNothing;
  }
  if (pattern.size() >= 2 && pattern.ends_with(u"<.")) pattern.pop_back();
  return pattern;
}

// Whether a folded name matches a folded pattern: by the places of the name that the pattern read
// so far can have reached.
bool Matches(std::u16string_view pattern, std::u16string_view name) {
  const std::size_t end = name.size();
  const std::size_t lastPoint = name.rfind('.');
  std::vector<char> reached(end + 1, 0);
  reached[0] = 1;
  for (const char16_t unit : pattern) {
    std::vector<char> next(end + 1, 0);
    for (std::size_t at = 0; at <= end; ++at) {
      if (unit == kAny || unit == kAnyBeforePoint) {
        const bool passes = at > 0 && next[at - 1] != 0 && (unit == kAny || at - 1 != lastPoint);
        next[at] = reached[at] != 0 || passes;
        continue;
      }
      if (reached[at] == 0) continue;
      const bool atPoint = at < end && name[at] == '.';
      if (unit == kUnitOrNothing) {
        next[at == end || atPoint ? at : at + 1] = 1;
      } else if (unit == kPointOrEnd) {
        if (atPoint) next[at + 1] = 1;
        if (at == end) next[at] = 1;
      } else if (at < end && name[at] == unit) {
        next[at + 1] = 1;
      }
    }
    reached.swap(next);
  }
  return reached[end] != 0;
}

// The names of a folder that match a mask, in the order of a volume of Windows: without regard to
// case, "." and ".." first. Gives false where the folder can't be read.
bool ListNames(const std::string& folder, std::u16string_view mask,
               std::vector<std::string>& names) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  if (entries == nullptr) return false;
  const std::u16string pattern = FoldedName(ToFilePattern(mask));
  std::vector<std::pair<std::u16string, std::string>> found;
  while (const dirent* entry = readdir(entries.get())) {
    const std::string_view name = entry->d_name;
    const bool isDots = name == "." || name == "..";
    if (isDots && folder == "/") continue;
    const std::u16string folded = FoldedName(FromDiskName(name));
    if (!Matches(pattern, folded)) continue;
    found.emplace_back(isDots ? std::u16string(name.size(), u'\0') : folded, name);
  }
  std::sort(found.begin(), found.end());
  for (auto& [folded, name] : found) names.push_back(std::move(name));
  return true;
}

void FillData(const std::string& name, const FileInfo& info, WIN32_FIND_DATAW& data) {
  data = {};
  data.dwFileAttributes = info.attributes;
  data.ftCreationTime = info.created;
  data.ftLastAccessTime = info.accessed;
  data.ftLastWriteTime = info.written;
  data.nFileSizeHigh = static_cast<DWORD>(info.size >> 32);
  data.nFileSizeLow = static_cast<DWORD>(info.size);
  FromDiskName(name).copy(data.cFileName, MAX_PATH - 1);
}

// What a search handle points to: the names that were found, and how far they have been given.
struct Search {
  std::string folder;
  std::vector<std::string> names;
  std::size_t next = 0;

  // The next entry that is still there.
  bool Next(WIN32_FIND_DATAW& data) {
    while (next < names.size()) {
      const std::string& name = names[next++];
      FileInfo info;
      if (!ReadFileInfo(folder + name, info)) continue;
      FillData(name, info, data);
      return true;
    }
    return false;
  }
};

HANDLE FindOne(const std::string& posix, WIN32_FIND_DATAW& data) {
  const std::size_t name = posix.rfind('/') + 1;
  FileInfo info;
  // A folder isn't found by a path that ends in a separator, nor is the root.
  const bool found = name < posix.size() && ReadFileInfo(posix, info);
  if (!found) {
    if (name == posix.size()) errno = ENOENT;
    SetFileError(errno, name < posix.size() ? posix : posix + '*');
    return INVALID_HANDLE_VALUE;
  }
  FillData(posix.substr(name), info, data);
  return new Search;
}

HANDLE FindMany(std::string folder, std::u16string_view mask, WIN32_FIND_DATAW& data) {
  if (folder.back() != '/') folder += '/';
  auto search = std::make_unique<Search>();
  if (!ListNames(folder, mask, search->names)) {
    SetFileError(errno == ENOENT ? ENOTDIR : errno, folder);
    return INVALID_HANDLE_VALUE;
  }
  search->folder = folder;
  if (!search->Next(data)) return Fail(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
  return search.release();
}

}  // namespace

HANDLE WINAPI FindFirstFileW(LPCWSTR path, LPWIN32_FIND_DATAW data) {
  const std::u16string_view text = path == nullptr ? u"" : path;
  const std::size_t separator = text.find_last_of(u"\\/");
  const std::size_t driveSize = text.size() >= 2 && text[1] == ':' ? 2 : 0;
  const std::size_t maskBegin = separator == text.npos ? driveSize : separator + 1;
  const std::u16string_view mask = text.substr(maskBegin);
  if (!HasWildcard(mask)) {
    const std::string posix = ToPosixPath(path);
    return posix.empty() ? INVALID_HANDLE_VALUE : FindOne(posix, *data);
  }
  std::u16string folder(text.substr(0, maskBegin));
  if (folder.empty() || folder.back() == ':') folder += '.';
  const std::string posix = ToPosixPath(folder.c_str());
  return posix.empty() ? INVALID_HANDLE_VALUE : FindMany(posix, mask, *data);
}

BOOL WINAPI FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW data) {
  if (search == nullptr || search == INVALID_HANDLE_VALUE) {
    return Fail(ERROR_INVALID_HANDLE);
  }
  if (static_cast<Search*>(search)->Next(*data)) return TRUE;
  return Fail(ERROR_NO_MORE_FILES);
}

BOOL WINAPI FindClose(HANDLE search) {
  if (search == nullptr || search == INVALID_HANDLE_VALUE) {
    return Fail(ERROR_INVALID_HANDLE);
  }
  delete static_cast<Search*>(search);
  return TRUE;
}
