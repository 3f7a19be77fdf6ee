// The store is a flat, ordered list of keys by their whole path. Its file has one line for a key
// and behind it one for each of its values:
//
//   [HKEY_CURRENT_USER\\Software\\Kelp]
//   "name"=1:7000310000
//
// (type in decimal, bytes in hexadecimal; backslash, quote, carriage return and line feed in names
// escaped by a backslash).
#include <sys/types.h>
#include <unistd.h>
#include <windows.h>
#include <winreg.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "advapi32/EscapedText.h"
#include "kernel32/PathName.h"
#include "kernel32/ProfileFile.h"
#include "kernel32/UserFolders.h"

// What an open handle leads to.
struct HKEY__ {
  std::string path;  // UTF-8
  REGSAM access;
};

namespace {

constexpr std::size_t kLongestKeyName = 255;
constexpr std::string_view kRoots[] = {"HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE"};

struct Value {
  std::string name;
  DWORD type;
  std::string data;
};

struct Key {
  std::string path;
  std::map<std::u16string, Value> values;  // by folded name
};

using Keys = std::map<std::u16string, Key>;  // by folded path

std::string Narrow(LPCWSTR text) {
  return text == nullptr ? std::string() : ToUtf8(text);
}

// A name as it is compared.
std::u16string Fold(const std::string& name) {
  return FoldedName(FromUtf8(name));
}

// "name"=type:hex
std::optional<Value> ParseValue(std::string_view line) {
  line.remove_prefix(1);
  const auto name = winapi::TakeEscaped(line, '"');
  if (!name || !line.starts_with('=')) return std::nullopt;
  Value value{*name, 0, {}};
  const char* const end = line.data() + line.size();
  const auto [colon, error] = std::from_chars(line.data() + 1, end, value.type);
  if (error != std::errc() || colon == end || *colon != ':') return std::nullopt;
  const auto data =
      winapi::FromHex(std::string_view(colon + 1, static_cast<std::size_t>(end - colon) - 1));
  if (!data) return std::nullopt;
  value.data = *data;
  return value;
}

// Nothing for a text that isn't whole: each line has its end.
std::optional<Keys> ParseKeys(std::string_view text) {
  Keys keys;
  Key* key = nullptr;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    std::string_view rest = text.substr(0, end);
    text.remove_prefix(end + 1);
    if (rest.starts_with('[')) {
      rest.remove_prefix(1);
      const auto path = winapi::TakeEscaped(rest, ']');
      if (!path) return std::nullopt;
      key = &keys[Fold(*path)];
      key->path = *path;
    } else {
      const auto value = rest.starts_with('"') ? ParseValue(rest) : std::nullopt;
      if (!value || key == nullptr) return std::nullopt;
      key->values[Fold(value->name)] = *value;
    }
  }
  return keys;
}

std::string FormatKeys(const Keys& keys) {
  std::string text;
  for (const auto& [folded, key] : keys) {
    text += '[' + winapi::Escape(key.path) + "]\n";
    for (const auto& [foldedName, value] : key.values) {
      text += '"' + winapi::Escape(value.name) + "\"=" + std::to_string(value.type) + ':' +
              winapi::ToHex(value.data) + '\n';
    }
  }
  return text;
}

// The user's own: nobody else has to know what programs keep there.
constexpr mode_t kRights = 0600;

enum class Purpose { kRead, kChange };

// The file of the store. For a change it is locked against other programs as long as the object
// lives; a reader finds a whole file at any time.
class Store {
 public:
  explicit Store(Purpose purpose) {
    const std::string folder = winapi::DataFolder() + "/winapi";
    std::error_code ignored;
    if (purpose == Purpose::kChange) std::filesystem::create_directories(folder, ignored);
    m_path = winapi::BehindLinks(folder + "/registry.txt");
    if (purpose == Purpose::kChange) m_lock.emplace(m_path);
  }

  LSTATUS Read(Keys& keys) const {
    if (m_path.empty()) return ERROR_REGISTRY_IO_FAILED;  // links in a circle
    std::string text;
    if (!winapi::ReadWholeFile(m_path, text)) {
      if (errno == ENOENT) return ERROR_SUCCESS;
      return errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_REGISTRY_IO_FAILED;
    }
    auto read = ParseKeys(text);
    if (!read) return ERROR_BADDB;
    keys = std::move(*read);
    return ERROR_SUCCESS;
  }

  LSTATUS Write(const Keys& keys) const {
    if (!m_lock || !m_lock->IsHeld()) return ERROR_CANTWRITE;
    const bool done = keys.empty() ? unlink(m_path.c_str()) == 0 || errno == ENOENT
                                   : winapi::ReplaceWholeFile(m_path, FormatKeys(keys), kRights);
    return done ? ERROR_SUCCESS : ERROR_CANTWRITE;
  }

 private:
  std::string m_path;
  std::optional<winapi::ProfileLock> m_lock;
};

std::mutex handlesMutex;

// It is there before all static objects, and outlives them.
std::set<HKEY>& OpenHandles() {
  static auto* const handles = new std::set<HKEY>;
  return *handles;
}

// The path and access of an open or a predefined key.
LSTATUS FindHandle(HKEY key, HKEY__& found) {
  if (key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE) {
    found = {std::string(kRoots[key == HKEY_LOCAL_MACHINE ? 1 : 0]), KEY_ALL_ACCESS};
    return ERROR_SUCCESS;
  }
  const std::lock_guard lock(handlesMutex);
  if (!OpenHandles().contains(key)) return ERROR_INVALID_HANDLE;
  found = *key;
  return ERROR_SUCCESS;
}

// What the rights that hold for any object mean for a key.
REGSAM OfKeys(REGSAM access) {
  constexpr struct {
    REGSAM any, ofKey;
  } kRightsOfKeys[] = {{static_cast<REGSAM>(GENERIC_READ), KEY_READ},
                       {GENERIC_WRITE, KEY_WRITE},
                       {GENERIC_EXECUTE, KEY_READ},
                       {GENERIC_ALL, KEY_ALL_ACCESS},
                       {MAXIMUM_ALLOWED, KEY_ALL_ACCESS}};
  for (const auto& right : kRightsOfKeys) {
    if ((access & right.any) != 0) access |= right.ofKey;
  }
  return access;
}

HKEY NewHandle(const std::string& path, REGSAM access) {
  const std::lock_guard lock(handlesMutex);
  return *OpenHandles().insert(new HKEY__{path, OfKeys(access)}).first;
}

bool IsRoot(const std::string& path) {
  return std::find(std::begin(kRoots), std::end(kRoots), path) != std::end(kRoots);
}

// The roots are always there and stand in no file.
bool Exists(const Keys& keys, const std::string& path) {
  return IsRoot(path) || keys.contains(Fold(path));
}

bool HasSubkeys(const Keys& keys, const std::string& path) {
  const std::u16string head = Fold(path) + u'\\';
  const auto next = keys.lower_bound(head);
  return next != keys.end() && next->first.starts_with(head);
}

// Appends the names of a subkey, separated by single backslashes, to the path of a key.
LSTATUS JoinPath(std::string& path, LPCWSTR subKey) {
  const std::string below = Narrow(subKey);
  if (below.starts_with('\\')) return ERROR_BAD_PATHNAME;
  for (std::size_t start = 0; start < below.size();) {
    const std::size_t end = std::min(below.find('\\', start), below.size());
    const std::string name = below.substr(start, end - start);
    if (Fold(name).size() > kLongestKeyName) return ERROR_INVALID_PARAMETER;
    if (!name.empty()) path += '\\' + name;
    start = end + 1;
  }
  return ERROR_SUCCESS;
}

// The key and those on the way to it that aren't there yet.
void MakeKeys(Keys& keys, const std::string& path) {
  std::size_t end = path.find('\\');
  while (end != std::string::npos) {
    end = path.find('\\', end + 1);
    const std::string step = path.substr(0, end);
    keys.try_emplace(Fold(step), Key{step, {}});
  }
}

// What every call does first: the handle, and the store as it stands.
struct Opened {
  explicit Opened(HKEY handle, Purpose purpose) {
    status = FindHandle(handle, key);
    if (status == ERROR_SUCCESS) status = store.emplace(purpose).Read(keys);
    if (status == ERROR_SUCCESS && !Exists(keys, key.path)) status = ERROR_KEY_DELETED;
  }
  HKEY__ key;
  std::optional<Store> store;
  Keys keys;
  LSTATUS status;
};

}  // namespace

LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD, REGSAM access, PHKEY result) {
  if (result == nullptr) return ERROR_INVALID_PARAMETER;
  *result = nullptr;
  Opened opened(key, Purpose::kRead);
  if (opened.status != ERROR_SUCCESS) return opened.status;
  std::string path = opened.key.path;
  const LSTATUS status = JoinPath(path, subKey);
  if (status != ERROR_SUCCESS) return status;
  if (!Exists(opened.keys, path)) return ERROR_FILE_NOT_FOUND;
  *result = NewHandle(path, access);
  return ERROR_SUCCESS;
}

LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subKey, DWORD reserved, LPWSTR, DWORD options,
                               REGSAM access, LPSECURITY_ATTRIBUTES, PHKEY result,
                               LPDWORD disposition) {
  if (subKey == nullptr) return ERROR_BADKEY;
  if (result == nullptr || reserved != 0 || options != REG_OPTION_NON_VOLATILE) {
    return ERROR_INVALID_PARAMETER;
  }
  *result = nullptr;
  Opened opened(key, Purpose::kChange);
  if (opened.status != ERROR_SUCCESS) return opened.status;
  std::string path = opened.key.path;
  LSTATUS status = JoinPath(path, subKey);
  if (status != ERROR_SUCCESS) return status;
  const bool exists = Exists(opened.keys, path);
  if (!exists) {
    MakeKeys(opened.keys, path);
    status = opened.store->Write(opened.keys);
    if (status != ERROR_SUCCESS) return status;
  }
  if (disposition != nullptr) {
    *disposition = exists ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
  }
  *result = NewHandle(path, access);
  return ERROR_SUCCESS;
}

LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                LPDWORD size) {
  if (reserved != nullptr || (data != nullptr && size == nullptr)) return ERROR_INVALID_PARAMETER;
  Opened opened(key, Purpose::kRead);
  if (opened.status != ERROR_SUCCESS) return opened.status;
  if ((opened.key.access & KEY_QUERY_VALUE) == 0) return ERROR_ACCESS_DENIED;
  const auto& values = opened.keys[Fold(opened.key.path)].values;
  const auto found = values.find(Fold(Narrow(name)));
  if (found == values.end()) return ERROR_FILE_NOT_FOUND;

  const Value& value = found->second;
  const DWORD needed = static_cast<DWORD>(value.data.size());
  if (type != nullptr) *type = value.type;
  if (size == nullptr) return ERROR_SUCCESS;
  const bool fits = data == nullptr || *size >= needed;
  *size = needed;
  if (!fits) return ERROR_MORE_DATA;
  if (data != nullptr && needed != 0) std::memcpy(data, value.data.data(), needed);
  return ERROR_SUCCESS;
}

LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size) {
  if (reserved != 0 || (data == nullptr && size != 0)) return ERROR_INVALID_PARAMETER;
  Opened opened(key, Purpose::kChange);
  if (opened.status != ERROR_SUCCESS) return opened.status;
  if ((opened.key.access & KEY_SET_VALUE) == 0) return ERROR_ACCESS_DENIED;
  Key& target = opened.keys[Fold(opened.key.path)];
  target.path = opened.key.path;
  const std::string narrow = Narrow(name);
  Value& value = target.values.try_emplace(Fold(narrow), Value{narrow, 0, {}}).first->second;
  value.type = type;
  value.data.assign(reinterpret_cast<const char*>(data), size);
  return opened.store->Write(opened.keys);
}

LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) {
  Opened opened(key, Purpose::kChange);
  if (opened.status != ERROR_SUCCESS) return opened.status;
  if ((opened.key.access & KEY_SET_VALUE) == 0) return ERROR_ACCESS_DENIED;
  const auto found = opened.keys.find(Fold(opened.key.path));
  if (found == opened.keys.end() || found->second.values.erase(Fold(Narrow(name))) == 0) {
    return ERROR_FILE_NOT_FOUND;
  }
  return opened.store->Write(opened.keys);
}

LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subKey) {
  if (subKey == nullptr) return ERROR_INVALID_PARAMETER;
  Opened opened(key, Purpose::kChange);
  if (opened.status != ERROR_SUCCESS) return opened.status;
  std::string path = opened.key.path;
  const LSTATUS status = JoinPath(path, subKey);
  if (status != ERROR_SUCCESS) return status;
  if (IsRoot(path) || HasSubkeys(opened.keys, path)) return ERROR_ACCESS_DENIED;
  if (opened.keys.erase(Fold(path)) == 0) return ERROR_FILE_NOT_FOUND;
  return opened.store->Write(opened.keys);
}

LSTATUS WINAPI RegCloseKey(HKEY key) {
  if (key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
  const std::lock_guard lock(handlesMutex);
  if (OpenHandles().erase(key) == 0) return ERROR_INVALID_HANDLE;
  delete key;
  return ERROR_SUCCESS;
}
