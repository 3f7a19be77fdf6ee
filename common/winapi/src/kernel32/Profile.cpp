// Settings files of sections and keys.
#include <windows.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CopyText.h"
#include "Fail.h"
#include "kernel32/Drive.h"
#include "kernel32/PathName.h"
#include "kernel32/ProfileFile.h"
#include "kernel32/ProfileText.h"

namespace {

using winapi::FileStamp;
using winapi::ProfileLineKind;

// Of ASCII alone; of other letters FoldedName knows.
constexpr char16_t Upper(char16_t unit) {
  return unit >= 'a' && unit <= 'z' ? static_cast<char16_t>(unit - ('a' - 'A')) : unit;
}

bool IsAscii(std::u16string_view name) {
  return std::all_of(name.begin(), name.end(), [](char16_t unit) { return unit < 0x80; });
}

// A letter beyond ASCII never equals one of ASCII, so that names of ASCII need no folded form.
bool IsSameName(std::u16string_view a, std::u16string_view b) {
  const auto isSame = [](char16_t x, char16_t y) { return Upper(x) == Upper(y); };
  if (std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame)) return true;
  return a.size() == b.size() && !IsAscii(a) && FoldedName(a) == FoldedName(b);
}

// The same for names that are the same: units beyond ASCII don't count.
std::uint32_t HashOf(std::int32_t section, std::u16string_view name) {
  auto hash = static_cast<std::uint32_t>(section);
  for (const char16_t unit : name) hash = (hash ^ (unit < 0x80 ? Upper(unit) : 0)) * 16777619U;
  return hash ^ hash >> 15;
}

// The parsed form of a file. Of sections and keys of one name the first counts.
class Profile {
 public:
  explicit Profile(std::u16string text) : m_text(std::move(text)) {
    std::u16string_view rest = m_text;
    std::int32_t section = kNone;
    while (!rest.empty()) {
      const auto line = winapi::TakeProfileLine(rest);
      if (line.kind == ProfileLineKind::kSection) {
        section = static_cast<std::int32_t>(m_entries.size());
        m_entries.push_back({line.name, {}, kNone, HashOf(kNone, line.name), kNone});
      } else if (line.kind == ProfileLineKind::kKey && section != kNone) {
        m_entries.push_back({line.name, line.value, section, HashOf(section, line.name), kNone});
      }
    }
    Link();
  }
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  const std::u16string_view* Find(std::u16string_view section, std::u16string_view key) const {
    const std::int32_t at = Find(kNone, section);
    const std::int32_t found = at == kNone ? kNone : Find(at, key);
    return found == kNone ? nullptr : &EntryAt(found).value;
  }
  std::vector<std::u16string_view> Sections() const {
    std::vector<std::u16string_view> names;
    for (const Entry& entry : m_entries) {
      if (entry.section == kNone) names.push_back(entry.name);
    }
    return names;
  }
  std::vector<std::u16string_view> Keys(std::u16string_view section) const {
    std::vector<std::u16string_view> names;
    const std::int32_t at = Find(kNone, section);
    if (at == kNone) return names;
    for (auto entry = m_entries.begin() + at + 1; entry != m_entries.end() && entry->section == at;
         ++entry) {
      names.push_back(entry->name);
    }
    return names;
  }

 private:
  static constexpr std::int32_t kNone = -1;
  // A section or, behind it, one of its keys. The names lie in the text and aren't copied.
  struct Entry {
    std::u16string_view name;
    std::u16string_view value;
    std::int32_t section;  // where that of a key stands
    std::uint32_t hash;
    std::int32_t next;  // the entry behind this one in its list
  };

  const Entry& EntryAt(std::int32_t at) const { return m_entries[static_cast<std::size_t>(at)]; }
  std::size_t ListOf(std::uint32_t hash) const { return hash & (m_lists.size() - 1); }

  // From the back on, so that the first of one name is the first in its list.
  void Link() {
    m_lists.assign(std::bit_ceil(m_entries.size() + 1), kNone);
    for (auto at = static_cast<std::int32_t>(m_entries.size()) - 1; at >= 0; --at) {
      Entry& entry = m_entries[static_cast<std::size_t>(at)];
      entry.next = std::exchange(m_lists[ListOf(entry.hash)], at);
    }
  }
  std::int32_t Find(std::int32_t section, std::u16string_view name) const {
    const std::uint32_t hash = HashOf(section, name);
    std::int32_t at = m_lists[ListOf(hash)];
    for (; at != kNone; at = EntryAt(at).next) {
      const Entry& entry = EntryAt(at);
      if (entry.hash == hash && entry.section == section && IsSameName(entry.name, name)) break;
    }
    return at;
  }

  const std::u16string m_text;
  std::vector<Entry> m_entries;       // in the order of the file
  std::vector<std::int32_t> m_lists;  // by the lowest bits of the hash, the first entry of each
};

using ProfilePointer = std::shared_ptr<const Profile>;

// A file without a folder is one of the Windows folder.
std::u16string WithFolder(std::u16string_view name) {
  if (name.find_first_of(u"\\/:") != name.npos) return std::u16string(name);
  WCHAR folder[MAX_PATH] = {};
  GetWindowsDirectoryW(folder, MAX_PATH);
  return std::u16string(folder) + u'\\' + std::u16string(name);
}

// Whether a path means the same file whatever the program sets: one of the root drive does.
bool IsFixed(std::u16string_view path) {
  if (path.size() > 2 && (path[0] | 0x20) == 'c' && path[1] == ':') return IsSeparator(path[2]);
  return !path.empty() && IsSeparator(path[0]) && (CurrentDrive() | 0x20) == 'c';
}

// The file behind a name; empty with the last error.
std::string PosixPathOf(LPCWSTR file) {
  if (file == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return {};
  }
  return ToPosixPath(WithFolder(file).c_str());
}

// The parsed forms of the files that were read last. A form is given out only while the file is the
// one that was read.
class Cache {
 public:
  // Null with the last error.
  ProfilePointer Read(LPCWSTR file) {
    const std::lock_guard lock(m_mutex);
    const std::u16string_view name = file == nullptr ? u"" : file;
    const auto kept = std::find_if(m_entries.begin(), m_entries.end(),
                                   [name](const Entry& entry) { return entry.name == name; });
    if (kept != m_entries.end()) {
      const bool samePath = IsFixed(name) || PosixPathOf(file) == kept->path;
      if (samePath && kept->stamp == winapi::StampOf(kept->path)) {
        m_entries.splice(m_entries.begin(), m_entries, kept);
        return m_entries.front().profile;
      }
      m_entries.erase(kept);
    }
    return Load(file);
  }

 private:
  struct Entry {
    std::u16string name;
    std::string path;
    FileStamp stamp;
    ProfilePointer profile;
  };
  static constexpr std::size_t kMostEntries = 4;

  ProfilePointer Load(LPCWSTR file) {
    Entry entry;
    entry.path = PosixPathOf(file);
    if (entry.path.empty()) return nullptr;
    std::string bytes;
    if (!winapi::ReadWholeFile(entry.path, bytes, &entry.stamp)) {
      SetFileError(errno, entry.path);
      return nullptr;
    }
    std::optional<std::u16string> units = winapi::ProfileUnits(bytes);
    entry.profile = std::make_shared<Profile>(units ? std::move(*units) : FromUtf8(bytes));
    ProfilePointer profile = entry.profile;
    if (!entry.stamp.IsSettled()) return profile;
    entry.name = file;
    m_entries.push_front(std::move(entry));
    if (m_entries.size() > kMostEntries) m_entries.pop_back();
    return profile;
  }

  std::mutex m_mutex;
  std::list<Entry> m_entries;
};

ProfilePointer ReadProfile(LPCWSTR file) {
  // It outlives the static objects that may read settings at exit.
  static Cache& cache = *new Cache;
  try {
    return cache.Read(file);
  } catch (const std::bad_alloc&) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
}

std::u16string_view WithoutQuotes(std::u16string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

std::u16string_view WithoutTail(std::u16string_view text) {
  return text.substr(0, text.find_last_not_of(u' ') + 1);
}

// Names, each with its terminator, and one more at the end.
DWORD GiveNames(const std::vector<std::u16string_view>& names, LPWSTR buffer, DWORD size) {
  std::u16string list;
  for (const std::u16string_view name : names) (list += name) += u'\0';
  if (size < 2) return static_cast<DWORD>(CopyText(u"", buffer, static_cast<int>(size)));
  const bool fits = list.size() < size;
  const std::size_t count = fits ? list.size() : size - 2;
  list.copy(buffer, count);
  buffer[count] = 0;
  if (!fits || count == 0) buffer[count + 1] = 0;
  if (!fits) SetLastError(ERROR_MORE_DATA);
  return static_cast<DWORD>(count);
}

std::u16string_view TrimmedArgument(LPCWSTR text) {
  return winapi::WithoutBlanks(std::u16string_view(text));
}

BOOL Write(LPCWSTR file, std::u16string_view section, LPCWSTR key, LPCWSTR value) {
  const std::string given = PosixPathOf(file);
  if (given.empty()) return FALSE;
  const std::string path = winapi::BehindLinks(given);
  if (path.empty()) return Fail(ERROR_PATH_NOT_FOUND);
  const winapi::ProfileLock lock(path);
  std::string bytes;
  const bool held = lock.IsHeld();
  if (!held || (!winapi::ReadWholeFile(path, bytes) && errno != ENOENT)) {
    // A folder that can't be opened is missing, not the file.
    SetFileError(held || errno != ENOENT ? errno : ENOTDIR, path);
    return FALSE;
  }
  const std::optional<std::string> changed = winapi::ChangedProfile(bytes, section, key, value);
  if (!changed || winapi::ReplaceWholeFile(path, *changed)) return TRUE;
  SetFileError(errno, path);
  return FALSE;
}

}  // namespace

DWORD WINAPI GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultText,
                                      LPWSTR buffer, DWORD size, LPCWSTR file) {
  if (buffer == nullptr || size == 0) return 0;
  const ProfilePointer profile = ReadProfile(file);
  if (section == nullptr || key == nullptr) {
    std::vector<std::u16string_view> names;
    if (profile != nullptr) {
      names = section == nullptr ? profile->Sections() : profile->Keys(TrimmedArgument(section));
    }
    if (names.empty() && defaultText != nullptr) names.push_back(WithoutTail(defaultText));
    return GiveNames(names, buffer, size);
  }
  const std::u16string_view* const found =
      profile == nullptr ? nullptr : profile->Find(TrimmedArgument(section), TrimmedArgument(key));
  std::u16string_view text = defaultText == nullptr ? u"" : WithoutTail(defaultText);
  if (found != nullptr) {
    text = WithoutQuotes(*found);
  } else if (profile != nullptr) {
    SetLastError(ERROR_FILE_NOT_FOUND);
  }
  const int room = static_cast<int>(std::min<DWORD>(size, INT_MAX));
  const int count = CopyText(text, buffer, room);
  if (static_cast<std::size_t>(count) < text.size()) SetLastError(ERROR_MORE_DATA);
  return static_cast<DWORD>(count);
}

UINT WINAPI GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int defaultValue, LPCWSTR file) {
  if (section == nullptr || key == nullptr) return static_cast<UINT>(defaultValue);
  const ProfilePointer profile = ReadProfile(file);
  const std::u16string_view* const found =
      profile == nullptr ? nullptr : profile->Find(TrimmedArgument(section), TrimmedArgument(key));
  if (found == nullptr) return static_cast<UINT>(defaultValue);
  std::u16string_view text = WithoutQuotes(*found);
  const bool negative = text.starts_with(u'-');
  if (negative || text.starts_with(u'+')) text.remove_prefix(1);
  UINT value = 0;
  for (const char16_t unit : text) {
    if (unit < '0' || unit > '9') break;
    value = 10 * value + (unit - '0');
  }
  return negative ? 0 - value : value;
}

BOOL WINAPI WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file) {
  if (section == nullptr) return Fail(ERROR_FILE_NOT_FOUND);
  const std::u16string name(key == nullptr ? u"" : TrimmedArgument(key));
  try {
    return Write(file, TrimmedArgument(section), key == nullptr ? nullptr : name.c_str(), value);
  } catch (const std::bad_alloc&) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
  }
}
