// Settings files of sections and keys.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

namespace fs = std::filesystem;

// The bytes of a file in UTF-16 with its mark, of ASCII text.
std::string Utf16(const std::string& text) {
  std::string bytes = "\xFF\xFE";
  for (const char byte : text) (bytes += byte) += '\0';
  return bytes;
}

class Profile : public testing::Test {
 protected:
  Wide Get(const WCHAR* section, const WCHAR* key, const WCHAR* def = WTEXT("?"),
           DWORD size = 200) const {
    Wide buffer(size, WTEXT('#'));
    const DWORD count =
        GetPrivateProfileStringW(section, key, def, buffer.data(), size, m_path.c_str());
    return buffer.substr(0, count);
  }
  bool Set(const WCHAR* section, const WCHAR* key, const WCHAR* value) const {
    return WritePrivateProfileStringW(section, key, value, m_path.c_str()) != 0;
  }
  void Write(const std::string& bytes) const { m_folder.Write("s.ini", bytes); }
  std::string Read() const { return m_folder.Read("s.ini"); }

  TempFolder m_folder;
  const Wide m_path = m_folder.Wide(WTEXT("s.ini"));
};

TEST_F(Profile, ReadsByNamesWithoutRegardToCaseAndBlanks) {
  const std::string text =
      "stray=0\r\n[One]\r\n a = first \r\nA=second\n;c=comment\n\n  ;d=4\nno value\nb=\"x y \"\n"
      "q='s\"'\nh=\"open\ne=\"\nempty=\n[ONE]\nlate=1\n [ Two ] rest\nEq=1=2;3\nlast=end";
  struct Case {
    const WCHAR* section;
    const WCHAR* key;
    const WCHAR* value;
  };
  const Case kCases[] = {
      {WTEXT("one"), WTEXT("A"), WTEXT("first")},  {WTEXT("ONE"), WTEXT(" a "), WTEXT("first")},
      {WTEXT("One"), WTEXT("b"), WTEXT("x y ")},   {WTEXT("One"), WTEXT("q"), WTEXT("s\"")},
      {WTEXT("One"), WTEXT("h"), WTEXT("\"open")}, {WTEXT("One"), WTEXT("e"), WTEXT("\"")},
      {WTEXT("One"), WTEXT("empty"), WTEXT("")},   {WTEXT("One"), WTEXT("c"), WTEXT("?")},
      {WTEXT("One"), WTEXT("d"), WTEXT("?")},      {WTEXT("One"), WTEXT("stray"), WTEXT("?")},
      {WTEXT("two"), WTEXT("eq"), WTEXT("1=2;3")}, {WTEXT("Two"), WTEXT("last"), WTEXT("end")},
      {WTEXT("Two"), WTEXT("a"), WTEXT("?")},      {WTEXT("None"), WTEXT("a"), WTEXT("?")},
      {WTEXT("Two\nEq"), WTEXT("a"), WTEXT("?")},  {WTEXT("One"), WTEXT("late"), WTEXT("?")},
  };
  for (const std::string& bytes : {text, Utf16(text)}) {
    Write(bytes);
    for (const Case& c : kCases) {
      EXPECT_EQ(Get(c.section, c.key), c.value) << fs::path(c.section) << fs::path(c.key);
    }
  }
  EXPECT_EQ(Get(WTEXT("One"), WTEXT("none"), WTEXT(" d  ")), WTEXT(" d"));
  if (UnderWine()) return;  // where the case of letters beyond ASCII counts
  Write(Utf16("[\xC9t\xE9]\nqualit\xE0=high\n"));
  EXPECT_EQ(Get(WTEXT("\u00E9T\u00C9"), WTEXT("QUALIT\u00C0")), WTEXT("high"));
  EXPECT_EQ(Get(WTEXT("\u00E9T\u00C9"), WTEXT("QUALIT\u00C8")), WTEXT("?"));
}

TEST_F(Profile, ListsNamesWithTwoTerminators) {
  Write("[One]\na=1\n;x=2\nlong=3\n[Two]\n");
  const Wide sections(WTEXT("One\0Two\0"), 8);
  const Wide keys(WTEXT("a\0long\0"), 7);
  EXPECT_EQ(Get(nullptr, WTEXT("a")), sections);
  EXPECT_EQ(Get(WTEXT("one"), nullptr), keys);
  EXPECT_EQ(Get(WTEXT("Two"), nullptr).substr(0, 1), WTEXT("?"));
  // Wine cuts a list that just fits.
  if (!UnderWine()) {
    EXPECT_EQ(Get(WTEXT("one"), nullptr, nullptr, 8), keys);
  }

  WCHAR buffer[] = WTEXT("########");
  EXPECT_EQ(GetPrivateProfileStringW(WTEXT("One"), nullptr, nullptr, buffer, 6, m_path.c_str()),
            4u);
  EXPECT_EQ(Wide(buffer, 8), Wide(WTEXT("a\0lo\0\0##"), 8));
}

TEST_F(Profile, CutsWhatDoesNotFit) {
  Write("[s]\nk=value\n");
  EXPECT_EQ(Get(WTEXT("s"), WTEXT("k"), nullptr, 6), WTEXT("value"));
  WCHAR buffer[] = WTEXT("########");
  SetLastError(0);
  EXPECT_EQ(GetPrivateProfileStringW(WTEXT("s"), WTEXT("k"), nullptr, buffer, 4, m_path.c_str()),
            3u);
  if (!UnderWine()) {
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MORE_DATA});
  }
  EXPECT_EQ(Wide(buffer, 5), Wide(WTEXT("val\0#"), 5));
  EXPECT_EQ(GetPrivateProfileStringW(WTEXT("s"), WTEXT("k"), nullptr, buffer, 0, m_path.c_str()),
            0u);
  EXPECT_EQ(buffer[0], 'v');
  EXPECT_EQ(GetPrivateProfileStringW(WTEXT("s"), WTEXT("k"), nullptr, buffer, 1, m_path.c_str()),
            0u);
  EXPECT_EQ(buffer[0], 0);
}

TEST_F(Profile, ReadsNumbers) {
  Write("[s]\na=42\nb=-7\nc=12abc\nd=x\ne=\"65\"\nf=4294967295\n");
  const std::pair<const WCHAR*, int> kCases[] = {
      {WTEXT("a"), 42}, {WTEXT("b"), -7}, {WTEXT("c"), 12},   {WTEXT("d"), 0},
      {WTEXT("e"), 65}, {WTEXT("f"), -1}, {WTEXT("none"), -5}};
  for (const auto& [key, value] : kCases) {
    EXPECT_EQ(GetPrivateProfileIntW(WTEXT("s"), key, -5, m_path.c_str()), static_cast<UINT>(value))
        << fs::path(key);
  }
}

TEST_F(Profile, WritesKeepAllElse) {
  const std::string text = "; head\r\n\r\n[One]\r\nA =  old \r\njunk\r\nb=2\r\n\r\n[Two]\r\nc=3";
  Write(Utf16(text));
  EXPECT_TRUE(Set(WTEXT("one"), WTEXT("a"), WTEXT("new")));
  EXPECT_TRUE(Set(WTEXT("ONE"), WTEXT("n"), WTEXT("1")));
  EXPECT_TRUE(Set(WTEXT("Two"), WTEXT("d"), WTEXT("4")));
  EXPECT_TRUE(Set(WTEXT("Three"), WTEXT("e"), WTEXT(" 5 ")));
  EXPECT_TRUE(Set(WTEXT("One"), WTEXT("B"), nullptr));
  EXPECT_TRUE(Set(WTEXT("One"), WTEXT("none"), nullptr));
  EXPECT_EQ(Get(WTEXT("One"), WTEXT("a")), WTEXT("new"));
  EXPECT_EQ(Get(WTEXT("One"), WTEXT("b")), WTEXT("?"));
  EXPECT_EQ(Get(WTEXT("Three"), WTEXT("e")), WTEXT("5"));
  // Wine lays the file out anew.
  if (!UnderWine()) {
    EXPECT_EQ(Read(), Utf16("; head\r\n\r\n[One]\r\nA =new\r\njunk\r\nn=1\r\n\r\n[Two]\r\nc=3\r\n"
                            "d=4\r\n[Three]\r\ne= 5 \r\n"));
  }
  EXPECT_TRUE(Set(WTEXT("Two"), nullptr, nullptr));
  EXPECT_EQ(Get(WTEXT("Two"), WTEXT("c")), WTEXT("?"));
  EXPECT_EQ(Get(WTEXT("Three"), WTEXT("e")), WTEXT("5"));
  EXPECT_FALSE(Set(nullptr, WTEXT("a"), WTEXT("1")));
}

TEST_F(Profile, AFileKeepsItsEncodingAndLineEnds) {
  EXPECT_TRUE(Set(WTEXT("s"), WTEXT("k"), WTEXT("1")));
  EXPECT_EQ(Read().substr(0, 3), "[s]") << "a new file has bytes";
  Write(Utf16(""));
  EXPECT_TRUE(Set(WTEXT("s"), WTEXT("k\x20AC"), WTEXT("\x4E2D")));
  EXPECT_EQ(Get(WTEXT("S"), WTEXT("K\x20AC")), WTEXT("\x4E2D"));
  EXPECT_EQ(Read().substr(0, 2), "\xFF\xFE");
  if (UnderWine()) return;  // it reads and writes such bytes as text of its own

  Write("[s]\n\xE9\x80=old\nk=1\n");
  EXPECT_TRUE(Set(WTEXT("s"), WTEXT("k"), WTEXT("2")));
  EXPECT_TRUE(Set(WTEXT("s"), WTEXT("new"), WTEXT("\x20AC")));
  EXPECT_EQ(Read(), "[s]\n\xE9\x80=old\nk=2\nnew=\xE2\x82\xAC\n");
  Write(Utf16("[s]\nk=1") + "\x41");
  EXPECT_TRUE(Set(WTEXT("s"), WTEXT("k"), WTEXT("2")));
  EXPECT_EQ(Read(), Utf16("[s]\nk=2"));
  Write(std::string("[s]\na\0b=1\0\nk=1\n", 15));
  EXPECT_TRUE(Set(WTEXT("s"), WTEXT("k"), WTEXT("2")));
  EXPECT_EQ(Read(), std::string("[s]\na\0b=1\0\nk=2\n", 15));
}

// Also where both have the same size and the same moment.
TEST_F(Profile, SeesWhatOthersWrite) {
  if (UnderWine()) GTEST_SKIP() << "Wine keeps a file for two seconds";
  for (char value = 'a'; value <= 'z'; ++value) {
    m_folder.Write("new", std::string("[s]\nk=") + value);
    fs::rename(m_folder.Path() / "new", m_folder.Path() / "s.ini");
    EXPECT_EQ(Get(WTEXT("s"), WTEXT("k")), Wide(1, static_cast<WCHAR>(value)));
  }
  fs::remove(m_folder.Path() / "s.ini");
  SetLastError(0);
  EXPECT_EQ(Get(WTEXT("s"), WTEXT("k")), WTEXT("?"));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(Profile, ThreadsLoseNoKey) {
  constexpr int kThreads = 4;
  constexpr int kKeys = 10;
  const auto name = [](int thread, int key) {
    return Wide(1, static_cast<WCHAR>('a' + thread)) + Wide(1, static_cast<WCHAR>('0' + key));
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int k = 0; k < kKeys; ++k) EXPECT_TRUE(Set(WTEXT("s"), name(i, k).c_str(), WTEXT("1")));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < kThreads; ++i) {
    for (int k = 0; k < kKeys; ++k) EXPECT_EQ(Get(WTEXT("s"), name(i, k).c_str()), WTEXT("1"));
  }
}

TEST_F(Profile, KeepsRightsAndLinks) {
  if (UnderWine()) GTEST_SKIP() << "Wine follows no rule for the links of the disk beneath";
  Write("[s]\nk=1\n");
  const fs::path file = m_folder.Path() / "s.ini";
  fs::create_directory(m_folder.Path() / "sub");
  fs::create_symlink("../s.ini", m_folder.Path() / "sub" / "link.ini");
  fs::permissions(file, fs::perms(0640));
  const Wide link = m_folder.Wide(WTEXT("sub\\LINK.ini"));
  EXPECT_TRUE(WritePrivateProfileStringW(WTEXT("s"), WTEXT("k"), WTEXT("2"), link.c_str()));
  EXPECT_TRUE(fs::is_symlink(m_folder.Path() / "sub" / "link.ini"));
  EXPECT_EQ(Read(), "[s]\nk=2\n");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
}

TEST_F(Profile, AWriteThatCanNotBeLeavesAll) {
  Write("[s]\nk=1\n");
  const fs::path file = m_folder.Path() / "s.ini";
  fs::create_directory(m_folder.Path() / "folder.ini");
  const auto write = [this](const WCHAR* name) {
    return ErrorOf(WritePrivateProfileStringW(WTEXT("s"), WTEXT("k"), WTEXT("2"),
                                              m_folder.Wide(name).c_str()));
  };
  EXPECT_EQ(write(WTEXT("folder.ini")), ERROR_ACCESS_DENIED);
  EXPECT_EQ(write(WTEXT("none\\s.ini")), ERROR_PATH_NOT_FOUND);
  // Wine lets a user write who may do everything.
  if (!UnderWine()) {
    fs::permissions(file, fs::perms(0222), fs::perm_options::remove);
    EXPECT_EQ(write(WTEXT("s.ini")), ERROR_ACCESS_DENIED);
    fs::permissions(file, fs::perms(0222), fs::perm_options::add);
  }
  EXPECT_EQ(Read(), "[s]\nk=1\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(m_folder.Path()), {}), 2) << "nothing is left";
}

}  // namespace
