#include "wininet/InternetHandle.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Fail.h"

namespace winapi::internet {
namespace {

struct Table {
  std::mutex mutex;
  std::map<HINTERNET, std::shared_ptr<Object>> objects;
  std::uintptr_t last = 0;
};

// It outlives all threads and static objects.
Table& TheTable() {
  static Table& table = *new Table;
  return table;
}

// Takes the object out, and all under it; children are always younger.
void Take(Table& table, std::map<HINTERNET, std::shared_ptr<Object>>::iterator object,
          std::vector<std::shared_ptr<Object>>& taken) {
  const HINTERNET handle = object->first;
  taken.push_back(std::move(object->second));
  auto next = table.objects.erase(object);
  while (next != table.objects.end()) {
    if (next->second->parent != handle) {
      ++next;
      continue;
    }
    const HINTERNET child = next->first;
    Take(table, next, taken);
    next = table.objects.upper_bound(child);
  }
}

}  // namespace

HINTERNET AddObject(std::shared_ptr<Object> object) {
  // Numbers aren't used again, so that a closed handle isn't taken for the next.
  constexpr std::uintptr_t kStep = 4;
  Table& table = TheTable();
  const std::lock_guard lock(table.mutex);
  table.last += kStep;
  const auto handle = reinterpret_cast<HINTERNET>(table.last);
  table.objects.emplace(handle, std::move(object));
  return handle;
}

std::shared_ptr<Object> FindObject(HINTERNET handle) {
  Table& table = TheTable();
  const std::lock_guard lock(table.mutex);
  const auto found = table.objects.find(handle);
  if (found != table.objects.end()) return found->second;
  SetLastError(ERROR_INVALID_HANDLE);
  return nullptr;
}

bool CloseObject(HINTERNET handle) {
  // It ends behind the lock: an object takes its time to end.
  std::vector<std::shared_ptr<Object>> taken;
  {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    const auto found = table.objects.find(handle);
    if (found == table.objects.end()) return Fail(ERROR_INVALID_HANDLE);
    Take(table, found, taken);
  }
  for (const auto& object : taken) object->Abandon();
  return true;
}

std::string ToUtf8(const WCHAR* text, std::size_t size) {
  const int length = static_cast<int>(size);
  std::string bytes(size * 3, 0);
  bytes.resize(static_cast<std::size_t>(
      size == 0 ? 0
                : WideCharToMultiByte(CP_UTF8, 0, text, length, bytes.data(),
                                      static_cast<int>(bytes.size()), nullptr, nullptr)));
  return bytes;
}

std::string ToUtf8(LPCWSTR text) {
  return text == nullptr ? std::string() : ToUtf8(text, std::char_traits<WCHAR>::length(text));
}

}  // namespace winapi::internet
