// The zones of the system's database as records.
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "kernel32/PathName.h"
#include "kernel32/ZoneFile.h"
#include "kernel32/ZoneRecord.h"

namespace fs = std::filesystem;

namespace {

// The names of the zones of a folder, in their order. They are its files' paths; "posix" and
// "right" hold the same zones once more.
std::vector<std::string> ZonesOf(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  constexpr auto kAll = fs::directory_options::skip_permission_denied;
  for (fs::recursive_directory_iterator entry(folder, kAll, error), end; !error && entry != end;
       entry.increment(error)) {
    const fs::path& path = entry->path();
    if (path == folder / "posix" || path == folder / "right") {
      entry.disable_recursion_pending();
    } else if (LastLineOfZoneFile(path)) {
      names.push_back(path.lexically_relative(folder).string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

// They are listed again for the first one, so that a walk sees the zones that there are.
std::string NameOfZone(const std::string& folder, DWORD index) {
  static std::mutex mutex;
  static std::string listed;
  static std::vector<std::string> names;
  const std::lock_guard lock(mutex);
  if (index == 0 || listed != folder) {
    names = ZonesOf(folder);
    listed = folder;
  }
  return index < names.size() ? names[index] : std::string();
}

}  // namespace

DWORD WINAPI EnumDynamicTimeZoneInformation(DWORD index, PDYNAMIC_TIME_ZONE_INFORMATION zone) {
  if (zone == nullptr) return ERROR_INVALID_PARAMETER;
  const std::string folder = ZoneFolder();
  const std::string name = NameOfZone(folder, index);
  if (name.empty()) return ERROR_NO_MORE_ITEMS;
  *zone = {};
  FromUtf8(name).copy(zone->TimeZoneKeyName, std::size(zone->TimeZoneKeyName) - 1);
  const std::optional<ZoneFile> file = ZoneFile::Read(folder + '/' + name);
  // One that can't be read is UTC, as it is for a process.
  if (!file) return ERROR_SUCCESS;
  const ZoneNow now([&file](std::chrono::sys_seconds moment) { return file->PeriodAt(moment); });
  TIME_ZONE_INFORMATION record;
  ToRecord(RuleOfFile(file->LastLine(), now), now, record);
  static_assert(offsetof(DYNAMIC_TIME_ZONE_INFORMATION, TimeZoneKeyName) == sizeof record);
  std::memcpy(zone, &record, sizeof record);
  return ERROR_SUCCESS;
}
