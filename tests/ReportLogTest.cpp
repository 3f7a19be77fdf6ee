#include "kelp0lang/ReportLog.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "tests/TestDrive.h"

namespace {

// The current folder is the root of a drive of the test's own. Wine takes "/Log.txt" for a path of
// Unix, which it shows as Z:; there the log is written where none is and the user may.
class ReportLog : public testing::Test {
 protected:
  void SetUp() override {
    if (UnderWine()) {
      m_root = "Z:\\";
      const bool isMine = !std::filesystem::exists(LogPath()) && std::ofstream(LogPath()).is_open();
      if (!isMine) GTEST_SKIP() << "no log of the test's own";
      RemoveLog();
      return;
    }
    WCHAR current[MAX_PATH];
    ASSERT_GT(GetCurrentDirectoryW(MAX_PATH, current), 0u);
    m_before = current;
    m_root = m_drive.Root();
    ASSERT_TRUE(SetCurrentDirectoryW(WTEXT("D:\\")));
  }
  void TearDown() override {
    if (!IsSkipped()) RemoveLog();
    EXPECT_TRUE(UnderWine() || SetCurrentDirectoryW(m_before.c_str()));
  }

  std::filesystem::path LogPath() const { return m_root / "Log.txt"; }
  // The lines of the log, each unit as the character of its number; "?" for those beyond.
  std::vector<std::string> Lines() const {
    std::ifstream file(LogPath(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    std::vector<std::string> lines(1);
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
      if (bytes[i + 1] != 0) {
        lines.back() += '?';
      } else if (bytes[i] == '\n') {
        EXPECT_EQ(lines.back().back(), '\r');
        lines.back().pop_back();
        lines.emplace_back();
      } else {
        lines.back() += bytes[i];
      }
    }
    EXPECT_EQ(lines.back(), "") << "every line ends";
    lines.pop_back();
    return lines;
  }

 private:
  void RemoveLog() const { std::filesystem::remove_all(LogPath()); }

  const TestDrive m_drive;
  std::filesystem::path m_root;
  Wide m_before;
};

// Without the time in front, which is to look like one.
std::string WithoutTime(const std::string& line) {
  static const std::regex kTime("^(\\d|1\\d|2[0-3]) [1-5]?\\d:[1-5]?\\d:\\d{1,3} - ");
  EXPECT_TRUE(std::regex_search(line, kTime)) << line;
  return std::regex_replace(line, kTime, "");
}

TEST_F(ReportLog, EachCallAppendsALine) {
  ReportLogNum(1, 2);
  ReportLogChr(0, KTEXT('A'));
  ReportLogChr(9, KTEXT('\x20AC'));
  EXPECT_EQ(Lines(), (std::vector<std::string>{"(1): 2", "A 65", "? 8364"}));

  ReportLogTxt(7, KTEXT("x\x20AC"));
  ReportLogTxtNum(-7, KTEXT("x"), -1);
  ReportLogTxtTxt(7, KTEXT("x"), KTEXT("y"));
  ReportLogTxtTxtNum(7, KTEXT("x"), KTEXT(""), 1);
  ReportLogTxtTxtNumNum(7, KTEXT("x"), KTEXT("y"), 1, 2);
  const std::vector<std::string> lines = Lines();
  const char* const expected[] = {"(7): x?", "(-7): x -1", "(7): x y", "(7): x  1", "(7): x y 1 2"};
  ASSERT_EQ(lines.size(), 3 + std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(WithoutTime(lines[3 + i]), expected[i]);
  }
}

TEST_F(ReportLog, TheTimeIsTheLocalOne) {
  SYSTEMTIME before, after;
  int hour = 0, minute = 0, second = 0, millisecond = 0;
  GetLocalTime(&before);
  ReportLogTxt(0, KTEXT(""));
  GetLocalTime(&after);
  if (after.wDay != before.wDay) GTEST_SKIP() << "midnight";
  const std::string line = Lines().at(0);
  ASSERT_EQ(std::sscanf(line.c_str(), "%d %d:%d:%d", &hour, &minute, &second, &millisecond), 4);
  const auto count = [](int h, int m, int s, int ms) {
    return ((h * 60 + m) * 60 + s) * 1000 + ms;
  };
  const int time = count(hour, minute, second, millisecond);
  EXPECT_GE(time, count(before.wHour, before.wMinute, before.wSecond, before.wMilliseconds));
  EXPECT_LE(time, count(after.wHour, after.wMinute, after.wSecond, after.wMilliseconds));
}

TEST_F(ReportLog, LinesOfSeveralThreadsStayWhole) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 50; ++i) ReportLogNum(12345, 67890);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Lines(), std::vector<std::string>(200, "(12345): 67890"));
}

TEST_F(ReportLog, WithoutTheFileNothingHappens) {
  std::filesystem::create_directory(LogPath());
  ReportLogTxt(1, KTEXT("x"));
  EXPECT_TRUE(std::filesystem::is_empty(LogPath()));
}

}  // namespace
