#include "wininet/InternetHandle.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Fail.h"

namespace winapi::internet {
namespace {

struct Entry {
  HINTERNET handle;
  std::shared_ptr<Object> object;
};

// In the order of their handles, which is that of their age.
struct Table {
  std::mutex mutex;
  std::vector<Entry> objects;
  std::uintptr_t last = 0;

  // Null where there is none.
  Entry* Find(HINTERNET handle) {
    const auto found = std::lower_bound(
        objects.begin(), objects.end(), handle,
        [](const Entry& entry, HINTERNET sought) { return entry.handle < sought; });
    return found == objects.end() || found->handle != handle ? nullptr : &*found;
  }
};

// It outlives all threads and static objects.
Table& TheTable() {
  static Table& table = *new Table;
  return table;
}

// Takes the object out, and all under it; children are always younger, so that who is under a child
// comes behind it.
void Take(Table& table, Entry* object, std::vector<std::shared_ptr<Object>>& taken) {
  std::vector<HINTERNET> handles;
  const auto isTaken = [&](const Entry& entry) {
    return &entry == object ||
           std::find(handles.begin(), handles.end(), entry.object->parent) != handles.end();
  };
  auto kept = table.objects.begin() + (object - table.objects.data());
  for (auto entry = kept; entry != table.objects.end(); ++entry) {
    if (isTaken(*entry)) {
      handles.push_back(entry->handle);
      taken.push_back(std::move(entry->object));
    } else {
      *kept++ = std::move(*entry);
    }
  }
  table.objects.erase(kept, table.objects.end());
}

}  // namespace

HINTERNET AddObject(std::shared_ptr<Object> object) {
  // Numbers aren't used again, so that a closed handle isn't taken for the next.
  constexpr std::uintptr_t kStep = 4;
  Table& table = TheTable();
  const std::lock_guard lock(table.mutex);
  table.last += kStep;
  const auto handle = reinterpret_cast<HINTERNET>(table.last);
  table.objects.push_back({handle, std::move(object)});
  return handle;
}

std::shared_ptr<Object> FindObject(HINTERNET handle) {
  Table& table = TheTable();
  const std::lock_guard lock(table.mutex);
  if (const Entry* const found = table.Find(handle)) return found->object;
  SetLastError(ERROR_INVALID_HANDLE);
  return nullptr;
}

bool CloseObject(HINTERNET handle) {
  // It ends behind the lock: an object takes its time to end.
  std::vector<std::shared_ptr<Object>> taken;
  {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    Entry* const found = table.Find(handle);
    if (found == nullptr) return Fail(ERROR_INVALID_HANDLE);
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
