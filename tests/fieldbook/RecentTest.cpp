// The bytes of points files, and the list of those that were read last.
#include <gtest/gtest.h>

#include <algorithm>

#include "fieldbook/points/OpenBytes.h"
#include "kelp0lang/String.h"
#include "tests/fieldbook/RunProgram.h"

namespace {

console::Argument ArgumentOf(const DataFolder& folder, const char* name) {
  return {kelp::WString::ConvertFromUtf8(folder.PathOf(name).string().c_str()),
          folder.PathOf(name)};
}

TEST(ByteSource, AMappedFileIsReadAgainFromItsBeginning) {
  const DataFolder folder;
  std::string bytes;
  for (int i = 0; i < 3'000'000; ++i) bytes += std::to_string(i);  // more than is kept in memory
  folder.Write("long.csv", bytes);
  const auto source = fieldbook::OpenBytes(ArgumentOf(folder, "long.csv"));
  EXPECT_EQ(source->Size(), bytes.size());
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_TRUE(fieldbook::ReadRest(*source) == bytes) << pass;
    source->Rewind();
  }
}

// Within its last page, where zeros stand behind the end, and by many pages.
TEST(ByteSource, AFileThatBecomesShorterIsAFailure) {
  const DataFolder folder;
  for (const std::uintmax_t left : {299'990u, 1000u, 0u}) {
    folder.Write("cut.csv", std::string(300'000, 'x'));
    const auto source = fieldbook::OpenBytes(ArgumentOf(folder, "cut.csv"));
    char first[100];
    ASSERT_EQ(source->Read(first, sizeof first), sizeof first);
    std::error_code refused;  // as Windows does
    std::filesystem::resize_file(folder.PathOf("cut.csv"), left, refused);
    if (refused) continue;
    EXPECT_THROW(fieldbook::ReadRest(*source), console::Failure) << left;
  }
}

TEST(ByteSource, ThePathLeadsWhereTheSystemSays) {
  const DataFolder folder;
  std::filesystem::create_directories(folder.PathOf("b/c"));
  folder.Write("a.csv", "as the text says");
  folder.Write("b/a.csv", "behind the link");
  std::error_code refused;  // as Windows does
  std::filesystem::create_directory_symlink(folder.PathOf("b/c"), folder.PathOf("link"), refused);
  if (refused) return;
  const auto source = fieldbook::OpenBytes(ArgumentOf(folder, "link/../a.csv"));
  EXPECT_EQ(fieldbook::ReadRest(*source), "behind the link");
}

// Runs on settings of its own.
class Recent : public testing::Test {
 protected:
  ProgramResult Run(std::vector<std::string> arguments) const {
    arguments.push_back("--data=" + m_folder.PathOf("data").string());
    return RunFieldbook(arguments);
  }
  std::string List() const { return Run({"recent"}).out; }
  std::string Settings() const { return m_folder.PathOf("data/Support/fieldbook.ket").string(); }

  DataFolder m_folder;
};

TEST_F(Recent, ListsTenFilesTheNewestFirst) {
  EXPECT_EQ(List(), "");
  std::string expected;
  std::vector<std::string> paths;
  for (int i = 0; i < 12; ++i) {
    paths.push_back(m_folder.Write(std::to_string(i) + ".csv", "A,1,2\nB,3,4\n"));
    Run({"show", paths.back()});
    if (i >= 2) expected.insert(0, paths.back() + '\n');
  }
  EXPECT_EQ(List(), expected);

  const std::string before = ReadFile(Settings());
  Run({"inverse", paths[11], "A", "B"});
  EXPECT_EQ(ReadFile(Settings()), before) << "the newest already";

  // What couldn't be read as points is none, and one way to a file is as good as another.
  const std::string other = m_folder.Write("other.txt", "no points\n");
  Run({"check", paths[5], other, (m_folder.PathOf("x") / ".." / "5.csv").string()});
  Run({"edit", paths[7]});
  Run({"plot", paths[0], "-o", m_folder.PathOf("map.svg").string()});
  const std::string list = List();
  EXPECT_EQ(list.substr(0, list.find(paths[11])),
            paths[0] + '\n' + paths[7] + '\n' + paths[5] + '\n');
  EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 10);
  std::filesystem::remove(paths[7]);
  EXPECT_NE(List().find(paths[7] + " (gone)\n"), std::string::npos);
}

TEST_F(Recent, WhateverStandsInTheSettingsGivesAListWithoutDoubles) {
  std::filesystem::create_directories(m_folder.PathOf("data/Support"));
  const std::string here = m_folder.Write("here.csv", "A,1,2\n");
  const std::string kept = (here[0] == '/' ? "C:" : "") + here;
  const std::string tables[] = {
      "Order=2,1,2,1\nFile1=" + kept + "\nFile2=" + kept,
      "Order=1,2\nFile1=\\\\nowhere.invalid\\share\\a.csv\nFile2=" + kept,
      "Order=9,11,0,2,x,3\nFile2=" + kept + "\nFile3=" + kept + "x\nFile9=relative.csv",
  };
  for (const std::string& table : tables) {
    m_folder.Write("data/Support/fieldbook.ket", "[Recent]\n" + table + '\n');
    EXPECT_EQ(List(), here + '\n') << table;
    Run({"show", here});
    EXPECT_EQ(List(), here + '\n') << table;
  }
}

TEST_F(Recent, SettingsThatCannotTakeTheListDontSpoilTheCommand) {
  const std::string file = m_folder.Write("a.csv", "A,1,2\n");
  const std::string cut = "[Recent]\nOrder=1";
  std::filesystem::create_directories(m_folder.PathOf("data/Support"));
  m_folder.Write("data/Support/fieldbook.ket", cut);
  EXPECT_EQ(Run({"show", file}).status, 0);
  EXPECT_EQ(ReadFile(Settings()), cut);

  std::filesystem::remove_all(m_folder.PathOf("data"));
  m_folder.Write("data", "a file in the folder's place");
  const ProgramResult result = Run({"show", file, "--csv"});
  EXPECT_NE(result.out.find("A,1.000,2.000"), std::string::npos);
  EXPECT_EQ(result.status, 0);
}

}  // namespace
