// The zone of the process for a scope, where TZ sets it, and the zones that there are.
#pragma once

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/winapi/Variable.h"

// What TZ is to say; null unsets it.
class ZoneScope {
 public:
  explicit ZoneScope(const char* zone) : m_zone("TZ", zone) { tzset(); }

 private:
  Variable m_zone;
};

// The files of the system's database of zones; none where there is no database.
inline std::vector<std::filesystem::path> ZonesOfTheDatabase() {
  const std::filesystem::path database = "/usr/share/zoneinfo";
  std::vector<std::filesystem::path> zones;
  if (!std::filesystem::exists(database)) return zones;
  for (std::filesystem::recursive_directory_iterator entry(database), end; entry != end; ++entry) {
    const std::filesystem::path& path = entry->path();
    // They have the same zones once more.
    if (path == database / "posix" || path == database / "right") entry.disable_recursion_pending();
    std::ifstream file(path, std::ios::binary);
    std::string magic(4, ' ');
    if (file.read(magic.data(), 4) && magic == "TZif") zones.push_back(path);
  }
  return zones;
}
