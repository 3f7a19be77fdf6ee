// The house as it stands, by the include lines of its sources: no folder needs one above it, and no
// two components need each other. A component is the header and the source of one name. What isn't
// C++ itself, but a word of one compiler, stands in one header.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Graph = std::map<std::string, std::set<std::string>>;

// From the ground up. What lives in a folder needs only this folder and those before it.
const std::string kFolders[] = {
    "common/kelptext",
    "common/winapi/include",
    "common/winapi/src",
    "common/winapi/src/kernel32",
    "common/winapi/src/crt",
    "common/winapi/src/advapi32",
    "common/winapi/src/gdi32",
    "common/winapi/service",
    "common/winapi/src/user32",
    "common/winapi/src/shell32",
    "common/winapi/src/ole32",
    "common/winapi/src/shlwapi",
    "common/winapi/src/oleaut32",
    "common/winapi/src/wininet",
    "common/winapi/src/winspool",
    "common/winapi/src/ws2_32",
    "common/sarnutils",
    "common/kelp/kelp0lang",
    "apps/console",
    "apps/fieldbook/values",
    "apps/fieldbook/console",
    "apps/fieldbook/web",
    "apps/fieldbook/points",
    "apps/fieldbook/watch",
    "apps/fieldbook/commands",
    "apps/fieldbook",
    "apps/fieldwatch",
    "apps/ostrandadmin",
    "apps/ribbon/files",
    "apps/ribbon/rules",
    "apps/ribbon/commands",
    "apps/ribbon",
};

// Where an include line looks, beside the file's own folder.
const char* const kIncludeRoots[] = {"common/kelp", "common", "common/winapi/include",
                                     "common/winapi/src", "apps"};

std::ptrdiff_t LevelOf(const std::string& file) {
  const std::string folder = fs::path(file).parent_path().generic_string();
  return std::find(std::begin(kFolders), std::end(kFolders), folder) - std::begin(kFolders);
}

std::set<std::string> Sources() {
  const fs::path root = PROJECT_ROOT;
  std::set<std::string> files;
  for (const char* const part : {"common", "apps"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root / part)) {
      const fs::path& path = entry.path();
      if (path.extension() == ".h" || path.extension() == ".cpp" || path.extension() == ".inc") {
        files.insert(path.lexically_relative(root).generic_string());
      }
    }
  }
  return files;
}

// A file, and those files of the tree that it includes.
Graph ReadIncludes() {
  const fs::path root = PROJECT_ROOT;
  const std::set<std::string> files = Sources();
  const std::regex includeLine("\\s*#\\s*include\\s*[<\"]([^>\"]+)[>\"].*");
  Graph includes;
  for (const std::string& file : files) {
    std::set<std::string>& included = includes[file];
    std::ifstream text(root / file);
    std::smatch match;
    for (std::string line; std::getline(text, line);) {
      if (!std::regex_match(line, match, includeLine)) continue;
      std::vector<fs::path> places = {fs::path(file).parent_path() / match[1].str()};
      for (const char* const place : kIncludeRoots)
        places.push_back(place / fs::path(match[1].str()));
      for (const fs::path& place : places) {
        if (files.count(place.generic_string()) == 0) continue;
        included.insert(place.generic_string());
        break;
      }
    }
  }
  return includes;
}

std::string ComponentOf(const std::string& file) {
  return fs::path(file).replace_extension().generic_string();
}

// The components of a cycle in order, empty where there is none.
class CycleSearch {
 public:
  explicit CycleSearch(const Graph& graph) : m_graph(graph) {}
  std::vector<std::string> Find() {
    for (const auto& [component, needed] : m_graph) {
      if (Visit(component)) return std::move(m_way);
    }
    return {};
  }

 private:
  bool Visit(const std::string& component) {
    const auto onWay = std::find(m_way.begin(), m_way.end(), component);
    if (onWay != m_way.end()) {
      m_way.erase(m_way.begin(), onWay);
      return true;
    }
    if (!m_visited.insert(component).second) return false;
    m_way.push_back(component);
    const auto found = m_graph.find(component);
    if (found != m_graph.end()) {
      for (const std::string& needed : found->second) {
        if (needed != component && Visit(needed)) return true;
      }
    }
    m_way.pop_back();
    return false;
  }

  const Graph& m_graph;
  std::set<std::string> m_visited;
  std::vector<std::string> m_way;
};

TEST(House, NoFolderNeedsOneAboveIt) {
  const Graph includes = ReadIncludes();
  std::size_t lines = 0;
  for (const auto& [file, included] : includes) {
    EXPECT_LT(LevelOf(file), std::ssize(kFolders)) << file << ": its folder has no place yet";
    for (const std::string& other : included) {
      EXPECT_LE(LevelOf(other), LevelOf(file)) << file << " includes " << other;
    }
    lines += included.size();
  }
  EXPECT_GT(lines, includes.size()) << "the include lines weren't found";
}

TEST(House, NoTwoComponentsNeedEachOther) {
  Graph components;
  for (const auto& [file, included] : ReadIncludes()) {
    for (const std::string& other : included) {
      components[ComponentOf(file)].insert(ComponentOf(other));
    }
  }
  EXPECT_EQ(CycleSearch(components).Find(), std::vector<std::string>());
}

TEST(House, WordsOfOneCompilerStandInOneHeader) {
  const std::regex words(
      "__int128|__builtin_|__attribute__|__declspec|__extension__|__asm|\\basm\\b|\\btypeof\\b|"
      "\\[\\[(gnu|clang|msvc)::|[=(,] *\\(\\{");
  int found = 0;
  for (const std::string& file : Sources()) {
    const bool isTheirs = file == "common/kelptext/Compiler.h";
    std::ifstream text(fs::path(PROJECT_ROOT) / file);
    for (std::string line; std::getline(text, line);) {
      if (!std::regex_search(line, words)) continue;
      found += isTheirs;
      EXPECT_TRUE(isTheirs) << file << ": " << line;
    }
  }
  EXPECT_GT(found, 5) << "the words weren't found where they are";
}

TEST(House, ACycleIsFoundFromOutsideIt) {
  const Graph graph = {{"a", {"a", "b", "e"}}, {"b", {"c"}}, {"c", {"d"}}, {"d", {"b", "e"}}};
  EXPECT_EQ(CycleSearch(graph).Find(), (std::vector<std::string>{"b", "c", "d"}));
  EXPECT_EQ(CycleSearch({{"a", {"b", "c"}}, {"b", {"c"}}}).Find(), std::vector<std::string>());
}

}  // namespace
