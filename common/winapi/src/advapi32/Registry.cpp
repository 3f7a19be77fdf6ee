// The store is a flat, ordered list of keys by their whole path. Its file has one line for a key
// and behind it one for each of its values:
//
//   [HKEY_CURRENT_USER\\Software\\Kelp]
//   "name"=1:7000310000
//
// (type in decimal, bytes in hexadecimal; backslash, quote, carriage return and line feed in names
// escaped by a backslash).
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <windows.h>
#include <winreg.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "kernel32/PathName.h"
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

std::string Escape(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\' || c == '"') escaped += '\\';
    if (c == '\n' || c == '\r') {
      escaped += c == '\n' ? "\\n" : "\\r";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

// Takes escaped text up to an end mark off the rest of a line, mark included.
std::optional<std::string> TakeEscaped(std::string_view& rest, char mark) {
  std::string text;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] == mark) {
      rest.remove_prefix(i + 1);
      return text;
    }
    if (rest[i] != '\\') {
      text += rest[i];
    } else if (++i < rest.size()) {
      text += rest[i] == 'n' ? '\n' : rest[i] == 'r' ? '\r' : rest[i];
    }
  }
  return std::nullopt;
}

std::optional<std::string> FromHex(std::string_view digits) {
  std::string bytes;
  for (; digits.size() >= 2; digits.remove_prefix(2)) {
    unsigned byte = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + 2, byte, 16);
    if (error != std::errc() || end != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(byte);
  }
  if (!digits.empty()) return std::nullopt;
  return bytes;
}

// "name"=type:hex
std::optional<Value> ParseValue(std::string_view line) {
  line.remove_prefix(1);
  const auto name = TakeEscaped(line, '"');
  if (!name || !line.starts_with('=')) return std::nullopt;
  Value value{*name, 0, {}};
  const char* const end = line.data() + line.size();
  const auto [colon, error] = std::from_chars(line.data() + 1, end, value.type);
  if (error != std::errc() || colon == end || *colon != ':') return std::nullopt;
  const auto data = FromHex(std::string_view(colon + 1, static_cast<std::size_t>(end - colon) - 1));
  if (!data) return std::nullopt;
  value.data = *data;
  return value;
}

std::optional<Keys> ParseKeys(std::istream& file) {
  Keys keys;
  Key* key = nullptr;
  for (std::string line; std::getline(file, line);) {
    std::string_view rest = line;
    if (rest.starts_with('[')) {
      rest.remove_prefix(1);
      const auto path = TakeEscaped(rest, ']');
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
    text += '[' + Escape(key.path) + "]\n";
    for (const auto& [foldedName, value] : key.values) {
      text += '"' + Escape(value.name) + "\"=" + std::to_string(value.type) + ':';
      for (const unsigned char byte : value.data) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
      }
      text += '\n';
    }
  }
  return text;
}

// Closes at the end of its scope, and with that gives back the lock that it holds.
class Descriptor {
 public:
  explicit Descriptor(int value) : m_value(value) {}
  ~Descriptor() {
    if (m_value >= 0) close(m_value);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return m_value; }

 private:
  int m_value;
};

bool WriteWhole(const std::string& path, const std::string& text) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (file.Get() < 0) return false;
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(file.Get(), text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return fsync(file.Get()) == 0;
}

enum class Purpose { kRead, kChange };

// The file of the store. For a change it is locked against other programs as long as the object
// lives; a reader finds a whole file at any time.
class Store {
 public:
  explicit Store(Purpose purpose)
      : m_folder(winapi::DataFolder() + "/winapi"),
        m_lock(purpose == Purpose::kChange ? Lock(m_folder) : -1) {}

  LSTATUS Read(Keys& keys) const {
    errno = 0;
    std::ifstream file(Path());
    if (!file.is_open()) return errno == ENOENT ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
    const auto read = ParseKeys(file);
    if (!read) return ERROR_BADDB;
    keys = *read;
    return ERROR_SUCCESS;
  }

  // The old file stands until the new one is whole.
  LSTATUS Write(const Keys& keys) const {
    if (m_lock.Get() < 0) return ERROR_CANTWRITE;
    if (keys.empty()) {
      return unlink(Path().c_str()) == 0 || errno == ENOENT ? ERROR_SUCCESS : ERROR_CANTWRITE;
    }
    const std::string fresh = Path() + ".new";
    if (WriteWhole(fresh, FormatKeys(keys)) && std::rename(fresh.c_str(), Path().c_str()) == 0) {
      return ERROR_SUCCESS;
    }
    unlink(fresh.c_str());
    return ERROR_CANTWRITE;
  }

 private:
  static int Lock(const std::string& folder) {
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    while (file >= 0 && flock(file, LOCK_EX) != 0 && errno == EINTR) {
    }
    return file;
  }
  std::string Path() const { return m_folder + "/registry.txt"; }

  std::string m_folder;
  Descriptor m_lock;
};

std::mutex handlesMutex;
std::set<HKEY> openHandles;

// The path and access of an open or a predefined key.
LSTATUS FindHandle(HKEY key, HKEY__& found) {
  if (key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE) {
    found = {std::string(kRoots[key == HKEY_LOCAL_MACHINE ? 1 : 0]), KEY_ALL_ACCESS};
    return ERROR_SUCCESS;
  }
  const std::lock_guard lock(handlesMutex);
  if (!openHandles.contains(key)) return ERROR_INVALID_HANDLE;
  found = *key;
  return ERROR_SUCCESS;
}

HKEY NewHandle(const std::string& path, REGSAM access) {
  const std::lock_guard lock(handlesMutex);
  return *openHandles.insert(new HKEY__{path, access}).first;
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
  if (openHandles.erase(key) == 0) return ERROR_INVALID_HANDLE;
  delete key;
  return ERROR_SUCCESS;
}
