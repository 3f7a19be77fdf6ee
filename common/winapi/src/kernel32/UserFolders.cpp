#include "kernel32/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <vector>

namespace winapi {
namespace {

// What stands in quotes behind NAME=, with a leading $HOME replaced; empty where the line is none
// of NAME. The values of user-dirs.dirs are absolute or begin with $HOME, and escape as a shell
// does within quotes.
std::string ValueOfLine(const std::string& line, const std::string& name) {
  const std::string head = name + "=\"";
  const std::size_t start = line.find_first_not_of(" \t");
  if (start == std::string::npos || line.compare(start, head.size(), head) != 0) return {};
  std::string value;
  for (std::size_t i = start + head.size(); i < line.size() && line[i] != '"'; ++i) {
    if (line[i] == '\\' && i + 1 < line.size()) ++i;
    value += line[i];
  }
  static const std::string kHome = "$HOME";
  if (value.compare(0, kHome.size(), kHome) == 0) value.replace(0, kHome.size(), HomeFolder());
  return value.starts_with('/') ? value : std::string();
}

}  // namespace

std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') return home;
  std::vector<char> buffer(16384);
  passwd entry;
  passwd* found = nullptr;
  getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
  return found == nullptr ? "/" : found->pw_dir;
}

std::string BaseFolder(const char* variable, const char* belowHome) {
  const char* folder = std::getenv(variable);
  return folder != nullptr && *folder == '/' ? folder : HomeFolder() + belowHome;
}

std::string DataFolder() {
  return BaseFolder("XDG_DATA_HOME", "/.local/share");
}

std::string DesktopFolder(const std::string& name, const char* belowHome) {
  std::ifstream file(BaseFolder("XDG_CONFIG_HOME", "/.config") + "/user-dirs.dirs");
  std::string found;
  for (std::string line; std::getline(file, line);) {
    const std::string value = ValueOfLine(line, name);
    if (!value.empty()) found = value;
  }
  return found.empty() ? HomeFolder() + belowHome : found;
}

}  // namespace winapi
