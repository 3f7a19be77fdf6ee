// The documentation as it stands in the tree: what programs can call has a comment, and no page
// leads to anything that isn't there. The finished site is checked by docs.sh.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = PROJECT_ROOT;

std::string TextOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<fs::path> FilesOf(const char* folder, const std::string& end) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(kRoot / folder)) {
    if (entry.path().filename().string().ends_with(end)) files.push_back(entry.path());
  }
  EXPECT_FALSE(files.empty()) << folder;
  return files;
}

// The pages of the site that are written by hand.
std::vector<fs::path> SitePages() {
  std::vector<fs::path> pages = FilesOf("docs", ".md");
  for (const fs::path& unfinished : FilesOf("docs", ".md.in")) pages.push_back(unfinished);
  return pages;
}

// With those in the root, which lead to them.
std::vector<fs::path> AllPages() {
  std::vector<fs::path> pages = SitePages();
  for (const fs::path& page : FilesOf(".", ".md")) pages.push_back(page);
  return pages;
}

// The first group of each match.
std::vector<std::string> Matches(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::vector<std::string> matches;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    matches.push_back((*match)[1].str());
  }
  return matches;
}

// The lines of a header that export something without a comment above it, or above what it follows
// without an empty line between.
std::vector<int> Uncommented(const std::string& header) {
  const std::regex operation("(template .*|extern \"C\" )?KELP0LANG_API .*");
  std::vector<int> lines;
  std::istringstream text(header);
  bool hasComment = false;
  int number = 0;
  for (std::string line; std::getline(text, line);) {
    ++number;
    if (line.empty()) hasComment = false;
    if (!line.empty() && line.find("//") == line.find_first_not_of(' ')) hasComment = true;
    if (!hasComment && std::regex_match(line, operation)) lines.push_back(number);
  }
  return lines;
}

TEST(Docs, EveryExportedOperationHasAComment) {
  for (const fs::path& header : FilesOf("common/kelp/kelp0lang", ".h")) {
    for (const int line : Uncommented(TextOf(header))) ADD_FAILURE() << header << ':' << line;
  }
}

TEST(Docs, ACommentSpeaksForWhatFollowsItWithoutAnEmptyLine) {
  EXPECT_EQ(Uncommented("// A.\nKELP0LANG_API int A();\nKELP0LANG_API int\n  B();\n"),
            std::vector<int>());
  EXPECT_EQ(Uncommented("// A.\n\nKELP0LANG_API int A();\nclass KELP0LANG_API C {\n"),
            std::vector<int>{3});
}

TEST(Docs, NoLinkOfAPageIsDead) {
  std::set<std::string> labels = {"index", "files", "annotated", "md_CHANGELOG", "md_SECURITY"};
  for (const fs::path& page : SitePages()) {
    for (const std::string& label : Matches(TextOf(page), "\\{#(\\w+)\\}")) {
      EXPECT_TRUE(labels.insert(label).second) << page << ": " << label << " stands twice";
    }
  }
  // Made from the headers of the layer, and from the help of the programs.
  for (const fs::path& header : FilesOf("common/winapi/include", ".h")) {
    labels.insert("layer_" + header.stem().string());
  }
  for (const char* program : {"fieldbook", "ribbon"}) {
    labels.insert(std::string("program_") + program);
  }

  std::size_t links = 0;
  for (const fs::path& page : AllPages()) {
    for (const std::string& link : Matches(TextOf(page), "\\]\\(([^)\\s]+)\\)")) {
      ++links;
      if (link.starts_with("https://")) continue;
      if (link[0] == '#') {
        EXPECT_TRUE(labels.contains(link.substr(1))) << page << ": " << link;
        continue;
      }
      const fs::path target = page.parent_path() / link;
      EXPECT_TRUE(fs::exists(target) || fs::exists(target.string() + ".in"))
          << page << ": " << link;
    }
  }
  EXPECT_GT(links, 20u);

  const std::string footer = TextOf(kRoot / "docs/theme/footer.html");
  for (const std::string& label : Matches(footer, "relpath\\^(\\w+)\\.html")) {
    EXPECT_TRUE(labels.contains(label)) << "the list of pages: " << label;
  }
}

TEST(Docs, EveryHeaderThatAPageNamesIsThere) {
  std::set<std::string> headers;
  for (const auto& entry : fs::recursive_directory_iterator(kRoot / "common")) {
    headers.insert(entry.path().filename().string());
  }
  for (const fs::path& page : SitePages()) {
    for (const std::string& header : Matches(TextOf(page), "\\b([A-Z]\\w+\\.h)\\b")) {
      EXPECT_TRUE(headers.contains(header)) << page << ": " << header;
    }
  }
}

TEST(Docs, EveryExampleStandsOnAPageWithWhatItPrints) {
  std::set<std::string> shown;
  for (const fs::path& page : SitePages()) {
    for (const std::string& file : Matches(TextOf(page), "\\\\(?:verb)?include (\\S+)")) {
      EXPECT_TRUE(fs::exists(kRoot / "examples" / file)) << page << ": " << file;
      shown.insert(file);
    }
  }
  const std::string build = TextOf(kRoot / "examples/CMakeLists.txt");
  for (const fs::path& example : FilesOf("examples", ".cpp")) {
    const std::string name = example.stem().string();
    EXPECT_TRUE(shown.contains(name + ".cpp")) << name;
    EXPECT_TRUE(shown.contains(name + ".txt")) << name;
    EXPECT_TRUE(std::regex_search(build, std::regex("\\b" + name + "\\b"))) << name;
  }
}

}  // namespace
