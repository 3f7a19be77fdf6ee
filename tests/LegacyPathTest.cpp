#include "kelp0lang/LegacyPath.h"

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::WString;

namespace {

TEST(LegacyPath, TakesNamesApart) {
  struct Case {
    const WChar* path;
    const WChar* folder;
    const WChar* nameAndExtension;
    const WChar* name;
    const WChar* extension;
    const WChar* withoutExtension;
  };
  const Case kCases[] = {
      {KTEXT("D:\\jobs\\a.b.dat"), KTEXT("D:\\jobs\\"), KTEXT("a.b.dat"), KTEXT("a.b"),
       KTEXT("dat"), KTEXT("D:\\jobs\\a.b")},
      {KTEXT("D:\\jobs/x"), KTEXT("D:\\jobs/"), KTEXT("x"), KTEXT("x"), KTEXT("D:\\jobs/x"),
       KTEXT("D:\\jobs/x")},
      {KTEXT("a/b\\c.d/e"), KTEXT("a/b\\c.d/"), KTEXT("e"), KTEXT("e"), KTEXT("d/e"),
       KTEXT("a/b\\c")},
      {KTEXT("C:x.y"), KTEXT("C:"), KTEXT("x.y"), KTEXT("x"), KTEXT("y"), KTEXT("C:x")},
      {KTEXT("/a:b"), KTEXT("/"), KTEXT("a:b"), KTEXT("a:b"), KTEXT("/a:b"), KTEXT("/a:b")},
      {KTEXT("name"), KTEXT(""), KTEXT("name"), KTEXT("name"), KTEXT("name"), KTEXT("name")},
      {KTEXT("dir\\"), KTEXT("dir\\"), KTEXT(""), KTEXT(""), KTEXT("dir\\"), KTEXT("dir\\")},
      {KTEXT(".ext"), KTEXT(""), KTEXT(".ext"), KTEXT(""), KTEXT("ext"), KTEXT("")},
      {KTEXT("end."), KTEXT(""), KTEXT("end."), KTEXT("end"), KTEXT(""), KTEXT("end")},
      {KTEXT(""), KTEXT(""), KTEXT(""), KTEXT(""), KTEXT(""), KTEXT("")},
  };
  const auto apply = [](void (*take)(WString&), const WChar* path) {
    WString text(path);
    take(text);
    return text;
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(WString(c.path).ToUtf8().c_str());
    EXPECT_EQ(apply(EstraiIlPathFile, c.path), c.folder);
    EXPECT_EQ(apply(EstraiNomeEdEstensFile, c.path), c.nameAndExtension);
    EXPECT_EQ(apply(EstraiIlNomeFile, c.path), c.name);
    EXPECT_EQ(apply(EstraiEstensFile, c.path), c.extension);
    EXPECT_EQ(apply(EliminaEstensioneFile, c.path), c.withoutExtension);
  }
}

TEST(LegacyPath, TellsFilesFromFolders) {
  const TempFolder folder;
  folder.Write("file.txt", "");
  const auto file = folder.Wide(KTEXT("file.txt"));
  EXPECT_TRUE(FEsisteIlFile(file.c_str()));
  EXPECT_FALSE(FEsisteIlFile(folder.Wide().c_str())) << "a folder doesn't open";
  EXPECT_FALSE(FEsisteIlFile(folder.Wide(KTEXT("none.txt")).c_str()));
  EXPECT_FALSE(FEsisteIlFile(KTEXT("")));
  EXPECT_FALSE(FEsisteIlFile(nullptr));

  EXPECT_TRUE(FEsisteIlDir(folder.Wide().c_str()));
  EXPECT_TRUE(FEsisteIlDir(file.c_str())) << "any entry that is found";
  EXPECT_TRUE(FEsisteIlDir((folder.Wide() + KTEXT("\\*.txt")).c_str())) << "by a pattern too";
  EXPECT_FALSE(FEsisteIlDir((folder.Wide() + KTEXT("\\")).c_str()));
  EXPECT_FALSE(FEsisteIlDir(folder.Wide(KTEXT("none")).c_str()));
  EXPECT_FALSE(FEsisteIlDir(KTEXT("")));
  EXPECT_FALSE(FEsisteIlDir(nullptr));
}

TEST(LegacyPath, MakesAFolderWithItsParents) {
  const TempFolder folder;
  const WString root(folder.Wide().c_str());
  EXPECT_TRUE(CheckSeDirExist(root));
  EXPECT_TRUE(CheckSeDirExist(root + KTEXT("\\a/b\\c")));
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "a" / "b" / "c"));
  EXPECT_TRUE(CheckSeDirExist(root + KTEXT("/new\\")));
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "new"));
  EXPECT_TRUE(CheckSeDirExist(root + KTEXT("/new\\"))) << "it is there";
  EXPECT_TRUE(CheckSeDirExist(root + KTEXT("/d\\e/"))) << "the parent's making made it";

  folder.Write("file", "");
  EXPECT_FALSE(CheckSeDirExist(root + KTEXT("\\file\\")));
  EXPECT_FALSE(CheckSeDirExist(root + KTEXT("\\file\\a\\b")));
  EXPECT_FALSE(CheckSeDirExist(root + KTEXT("\\no|name\\a")));
  EXPECT_FALSE(CheckSeDirExist(KTEXT("")));
}

TEST(LegacyPath, ThreadsMakeTheSameFolders) {
  const TempFolder folder;
  for (int round = 0; round < 50; ++round) {
    const WString path =
        folder.Wide(KTEXT("r")).c_str() + WString::ValueOf(round) + KTEXT("/a/b/c/d");
    std::atomic<int> made = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([&] { made += CheckSeDirExist(path); });
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(made, 4);
  }
}

TEST(LegacyPath, ComposesFileFilters) {
  EXPECT_EQ(ComposeFileFilterFromNameAndExts(KTEXT("Survey"), KTEXT("*.sur;*.dat")),
            WString(KTEXT("Survey (*.sur;*.dat)")));
  EXPECT_EQ(ComposeFileFilterFromNameAndExts(KTEXT("All"), KTEXT("")), KTEXT("All"));
}

}  // namespace
