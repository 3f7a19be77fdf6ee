#include "kelp0lang/File.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "kelp0lang/FilePath.h"
#include "kelp0lang/FileSystem.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"
#include "tests/winapi/UnderWine.h"

using kelp::CFile;
using kelp::IFileSystem;
using kelp::WString;

namespace {

constexpr std::uint64_t kTicksPerSecond = 10'000'000;

CFile In(const TempFolder& folder, const WChar* name = nullptr) {
  return CFile(WString(folder.Wide(name).c_str()));
}

TEST(File, TakesPathsApart) {
  const struct {
    const WChar *given, *stored, *parent, *name, *stem, *extension;
    bool absolute;
  } kCases[] = {
      {KTEXT("C:\\dir\\"), KTEXT("C:\\dir"), KTEXT("C:"), KTEXT("dir"), KTEXT("dir"), KTEXT(""),
       true},
      {KTEXT("C:/dir///"), KTEXT("C:\\dir"), KTEXT("C:"), KTEXT("dir"), KTEXT("dir"), KTEXT(""),
       true},
      {KTEXT("C:\\"), KTEXT("C:\\"), KTEXT("C:"), KTEXT(""), KTEXT(""), KTEXT(""), true},
      {KTEXT("C:/"), KTEXT("C:"), KTEXT(""), KTEXT("C:"), KTEXT(""), KTEXT(""), false},
      {KTEXT("1:\\"), KTEXT("1:"), KTEXT(""), KTEXT("1:"), KTEXT(""), KTEXT(""), false},
      {KTEXT("\\/"), KTEXT(""), KTEXT(""), KTEXT(""), KTEXT(""), KTEXT(""), false},
      {KTEXT("//srv/share/"), KTEXT("\\\\srv\\share"), KTEXT("\\\\srv"), KTEXT("share"),
       KTEXT("share"), KTEXT(""), false},
      {KTEXT("a.b\\c"), KTEXT("a.b\\c"), KTEXT("a.b"), KTEXT("c"), KTEXT("c"), KTEXT(""), false},
      {KTEXT("x\\.rc"), KTEXT("x\\.rc"), KTEXT("x"), KTEXT(".rc"), KTEXT(""), KTEXT("rc"), false},
      {KTEXT(".rc"), KTEXT(".rc"), KTEXT(""), KTEXT(".rc"), KTEXT(""), KTEXT("rc"), false},
      {KTEXT("\\x"), KTEXT("\\x"), KTEXT(""), KTEXT("x"), KTEXT("x"), KTEXT(""), false},
      {KTEXT("name."), KTEXT("name."), KTEXT(""), KTEXT("name."), KTEXT("name"), KTEXT(""), false},
      {KTEXT("C:n.tar.gz"), KTEXT("C:n.tar.gz"), KTEXT(""), KTEXT("C:n.tar.gz"), KTEXT("n.tar"),
       KTEXT("gz"), false},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(WString(c.given).ToUtf8().c_str());
    const CFile file{WString(c.given)};
    EXPECT_EQ(file.GetPath(), c.stored);
    EXPECT_EQ(file.GetParent(), c.parent);
    EXPECT_EQ(file.GetParentFile().GetPath(), CFile(WString(c.parent)).GetPath());
    EXPECT_EQ(file.GetName(), c.name);
    EXPECT_EQ(file.GetNameWithoutExt(), c.stem);
    EXPECT_EQ(file.GetExt(), c.extension);
    EXPECT_EQ(file.IsAbsolute(), c.absolute);
  }
}

TEST(File, JoinsAsTheyStand) {
  const WString child = KTEXT("a.txt");
  EXPECT_EQ(CFile(KTEXT("C:\\dir"), child).GetPath(), KTEXT("C:\\dir\\a.txt"));
  EXPECT_EQ(CFile(KTEXT("C:/dir/"), child).GetPath(), KTEXT("C:/dir/a.txt"));
  EXPECT_EQ(CFile(WString(), child).ToString(), KTEXT("\\a.txt"));
  EXPECT_EQ(CFile(CFile(KTEXT("d/")), KTEXT("C:\\x\\")).GetPath(), KTEXT("d\\C:\\x\\"));
  EXPECT_EQ(CFile(KTEXT("C:/d/"), WString()).GetPath(), KTEXT("C:/d/"));
}

TEST(File, KnowsTheSystemsForms) {
  const IFileSystem& system = IFileSystem::GetFileSystem();
  EXPECT_EQ(&system, &kelp::CFileSystemWindows::s_FileSystem);
  EXPECT_EQ(system.GetSeparator(), KTEXT('\\'));
  EXPECT_EQ(system.GetPathSeparator(), KTEXT(':'));
  EXPECT_EQ(system.GetDefaultParent(), KTEXT("\\"));
  const CFile a(KTEXT("C:\\Ab")), b(KTEXT("c:\\aB")), c(KTEXT("c:\\ac"));
  EXPECT_EQ(system.Compare(&a, &b), 0);
  EXPECT_LT(system.Compare(&a, &c), 0);

  const CFile temp(CFile::GetTmpDir());
  EXPECT_TRUE(CFile::GetTmpDir().EndsWith(KTEXT("\\")));
  EXPECT_TRUE(temp.IsDirectory());
  const std::vector<CFile> roots = CFile::ListRoots();
  const WString drive = temp.GetAbsolutePath().substr(0, 3).ToUpperCase();
  EXPECT_EQ(std::ranges::count(roots, drive, [](const CFile& r) { return r.GetPath(); }), 1);
  // Wine keeps the definition of a drive, but doesn't list it.
  if (!UnderWine()) {
    ASSERT_TRUE(DefineDosDeviceW(0, KTEXT("A:"), temp.GetPath().c_str()));
    EXPECT_EQ(CFile::ListRoots().front().GetPath(), KTEXT("A:\\"));
    EXPECT_TRUE(DefineDosDeviceW(DDD_REMOVE_DEFINITION, KTEXT("A:"), nullptr));
  }

  WString longName = KTEXT("x/..");
  while (longName.Length() < 2000) longName = KTEXT("0123456789\\") + longName;
  EXPECT_EQ(CFile(longName).GetAbsolutePath(),
            CFile(longName.substr(0, longName.Length() - 5)).GetAbsolutePath());
  EXPECT_GT(CFile(longName).GetAbsolutePath().Length(), 1990);
  EXPECT_EQ(CFile(KTEXT("c:/a/../é.b")).GetAbsoluteFile().GetPath(), KTEXT("c:\\é.b"));
  EXPECT_EQ(CFile(KTEXT("c:\\a.b")).GetCanonicalFile().GetPath(), KTEXT("C:\\A.B"));
  for (const WChar* const pattern : {KTEXT("c:\\a?"), KTEXT("?a"), KTEXT("*")}) {
    EXPECT_EQ(system.Canonicalize(WString(pattern)), KTEXT(""));
  }
}

TEST(File, AsksTheDisk) {
  const TempFolder folder;
  folder.Write("five", "12345");
  const CFile file = In(folder, KTEXT("five")), root = In(folder), none = In(folder, KTEXT("none"));
  EXPECT_TRUE(file.Exists() && file.IsFile() && file.CanRead() && file.CanWrite());
  EXPECT_FALSE(file.IsDirectory() || file.IsHidden());
  EXPECT_TRUE(root.Exists() && root.IsDirectory());
  EXPECT_FALSE(root.IsFile() || root.CanRead() || root.CanWrite());
  EXPECT_FALSE(none.Exists() || none.IsFile() || none.IsDirectory() || none.CanRead());
  EXPECT_EQ(file.Length(), 5u);
  EXPECT_EQ(none.Length() + root.Length() + none.GetLastModifiedTime(), 0u);
  EXPECT_GT(file.GetCreationTime(), 0u);
  EXPECT_GT(file.GetLastAccessTime(), 0u);

  const std::uint64_t time = 133'000'000'000'000'000 + 7 * kTicksPerSecond;
  EXPECT_TRUE(file.SetLastModifiedTime(time));
  EXPECT_EQ(file.GetLastModifiedTime(), time);
  EXPECT_FALSE(none.SetLastModifiedTime(time));
  EXPECT_FALSE(none.Exists());

  EXPECT_TRUE(file.SetReadOnly());
  EXPECT_EQ(IFileSystem::GetFileSystem().GetBooleanAttributes(&file), 1u | 2 | 16);
  EXPECT_TRUE(file.CanRead());
  EXPECT_FALSE(file.Delete());
  // Wine opens what root may write, whatever the attribute says.
  if (!UnderWine()) {
    EXPECT_FALSE(file.CanWrite() || file.SetLastModifiedTime(time));
  }
  EXPECT_FALSE(none.SetReadOnly());
  SetFileAttributesW(file.GetPath().c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(File, MakesMovesAndDeletes) {
  const TempFolder folder;
  const CFile a = In(folder, KTEXT("a")), b = In(folder, KTEXT("b"));
  EXPECT_TRUE(a.CreateNewFile());
  EXPECT_FALSE(a.CreateNewFile());
  EXPECT_TRUE(a.RenameTo(b));
  EXPECT_TRUE(a.CreateNewFile());
  EXPECT_FALSE(a.RenameTo(b)) << "b is there";
  EXPECT_TRUE(b.Delete());
  EXPECT_FALSE(b.Delete());

  const CFile deep = In(folder, KTEXT("p\\q/r"));
  EXPECT_FALSE(deep.MkDir());
  EXPECT_TRUE(deep.MkDirs());
  EXPECT_TRUE(deep.IsDirectory());
  EXPECT_FALSE(deep.MkDirs()) << "it is there";
  EXPECT_FALSE(CFile(a, KTEXT("x\\y")).MkDirs()) << "a file stands in the way";
  EXPECT_FALSE(deep.Delete()) << "a folder";
}

TEST(File, ListsWhatTheSystemFinds) {
  const TempFolder folder;
  for (const char* name : {"a.dat", "b.dat", "c.txt"}) folder.Write(name, name);
  const CFile root = In(folder);
  const auto names = [](const CFile& file) { return file.List(); };
  EXPECT_EQ(names(CFile(root, KTEXT("*.dat"))),
            (std::vector<WString>{KTEXT("a.dat"), KTEXT("b.dat")}));
  EXPECT_EQ(names(CFile(root, KTEXT("*"))).size(), 5u) << "with . and ..";
  EXPECT_EQ(names(root), std::vector<WString>{root.GetName()});
  EXPECT_TRUE(names(CFile(root, KTEXT("*.no"))).empty());

  struct Filter : kelp::IFileNameFilter {
    bool Accept(const CFile* directory, const WString& name) override {
      return directory == listed && name != KTEXT("a.dat");
    }
    const CFile* listed = nullptr;
  } filter;
  const CFile pattern(root, KTEXT("?.dat"));
  filter.listed = &pattern;
  EXPECT_EQ(pattern.List(&filter), std::vector<WString>{KTEXT("b.dat")});
  const std::vector<CFile> files = pattern.ListFiles(&filter);
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0].Length(), 5u) << "the file that the name stands for";
  EXPECT_EQ(pattern.ListFiles().size(), 2u);
  EXPECT_EQ(root.ListFiles()[0].GetPath(), CFile(root, root.GetName()).GetPath());

  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  const std::vector<CFile> here = CFile(KTEXT("*.txt")).ListFiles();
  std::filesystem::current_path(before);
  ASSERT_EQ(here.size(), 1u);
  EXPECT_EQ(here[0].GetPath(), KTEXT("c.txt"));
}

#ifndef _WIN32  // where such a file may take what its length says
TEST(File, ALengthMayEndLikeAnError) {
  const TempFolder folder;
  folder.Write("big", "");
  constexpr std::uint64_t kLength = 0xFFFFFFFF;
  std::filesystem::resize_file(folder.Path() / "big", kLength);
  EXPECT_EQ(In(folder, KTEXT("big")).Length(), kLength);
}
#endif

TEST(File, TemporaryFilesAreOnesOwn) {
  const TempFolder folder;
  const CFile root = In(folder);
  std::atomic<int> distinct = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 25; ++n)
        distinct += CFile::CreateTempFile(&root, KTEXT("t"), WString()).IsFile();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(distinct, 100);
  EXPECT_TRUE(CFile(root, KTEXT("t0.tmp")).IsFile() && CFile(root, KTEXT("t99.tmp")).IsFile());
  EXPECT_EQ(CFile(root, KTEXT("*")).List().size(), 102u);
  const CFile missing(root, KTEXT("none"));
  EXPECT_EQ(CFile::CreateTempFile(&missing, KTEXT("t"), KTEXT(".x")).GetPath(), KTEXT(""));
  const CFile temp = CFile::CreateTempFile(nullptr, KTEXT("kelp-"), KTEXT(".x"));
  EXPECT_TRUE(temp.GetPath().StartsWith(CFile::GetTmpDir()) && temp.GetExt() == KTEXT("x"));
  EXPECT_TRUE(temp.Delete());
}

TEST(File, ForcedCopiesDontOverwrite) {
  const TempFolder folder;
  folder.Write("source", "new");
  folder.Write("report.txt", "old");
  const WString source = In(folder, KTEXT("source")).GetPath();
  const WString target = In(folder, KTEXT("report.txt")).GetPath();
  for (int i = 0; i < 2; ++i) kelp::CopyFileForced(source, target);
  kelp::CopyFileForced(source, In(folder, KTEXT("none\\x")).GetPath());
  EXPECT_EQ(folder.Read("report.txt"), "old");
  EXPECT_EQ(folder.Read("report (2).txt"), "new");
  EXPECT_EQ(folder.Read("report (3).txt"), "new");
}

TEST(FilePath, BothNameTheSameFile) {
  const TempFolder folder;
  const WString unit = KTEXT("ab\u00E8\u4E2D");
  WString longName;
  for (int i = 0; i < 30; ++i) longName += unit;  // 210 bytes
  for (const WString& name : {WString(KTEXT("survey.dat")), unit, longName}) {
    const CFile file(In(folder), name);
    const std::filesystem::path path = kelp::FileToPath(file);
    EXPECT_EQ(path.parent_path(), folder.Path());
    EXPECT_FALSE(file.Exists());
    std::ofstream(path) << "points";
    EXPECT_EQ(file.Length(), 6u);
    EXPECT_EQ(kelp::PathToFile(path).GetPath(), file.GetAbsolutePath());
  }
  std::filesystem::path deep = folder.Path();
  for (int i = 0; i < 60; ++i) deep /= "123456789";
  EXPECT_EQ(kelp::FileToPath(kelp::PathToFile(deep)), deep);
}

TEST(FilePath, TheyAreAbsoluteAndMayBeEmpty) {
  const std::filesystem::path here = std::filesystem::current_path();
  EXPECT_EQ(kelp::FileToPath(CFile(KTEXT("a/b"))), here / "a" / "b");
  EXPECT_EQ(kelp::PathToFile("a").GetPath(), CFile(KTEXT("a")).GetAbsolutePath());
  EXPECT_TRUE(kelp::FileToPath(CFile()).empty());
  EXPECT_TRUE(kelp::FileToPath(CFile(KTEXT("a\\*.dat"))).empty());
  EXPECT_EQ(kelp::PathToFile({}).GetPath(), KTEXT(""));
}

#ifndef _WIN32
TEST(FilePath, NamesAreSpeltAsOnTheDisk) {
  const TempFolder folder;
  folder.Write("Survey.Dat", "");
  EXPECT_EQ(kelp::FileToPath(CFile(In(folder), KTEXT("SURVEY.DAT"))), folder.Path() / "Survey.Dat");
  const std::filesystem::path odd = folder.Path() / "a\\b\xff";
  std::ofstream(odd) << "odd";
  const CFile file = kelp::PathToFile(odd);
  EXPECT_EQ(file.Length(), 3u);
  EXPECT_EQ(kelp::FileToPath(file), odd);
}
#endif

}  // namespace
