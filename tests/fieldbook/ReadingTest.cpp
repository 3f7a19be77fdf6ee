// Several files at once, the progress of reading, and the time of a run.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <regex>
#include <sstream>

#include "tests/fieldbook/RunProgram.h"

namespace {

const std::string kItalian = std::string(FIELDBOOK_DATA) + "/it.po";
const std::string kHeads =
    "Read as point, easting, northing, elevation, description (as the settings say), in m (as the "
    "settings say).\nPoint  Easting (m)  Northing (m)  Elevation (m)  Description\n";

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string LocalClock() {
  SYSTEMTIME now = {};
  GetLocalTime(&now);
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", now.wYear, now.wMonth, now.wDay,
                now.wHour, now.wMinute, now.wSecond);
  return text;
}

TEST(Reading, FilesAreShownInTheirOrderWithTheFaultsOfEach) {
  const DataFolder folder;
  const std::string a = folder.Write("a.csv", "A1,1,2,3,\nA2,1,x,3,\n");
  const std::string none = folder.PathOf("none.csv").string();
  const std::string b = folder.Write("b.csv", "B1,4,5,6,\n");

  const ProgramResult tables = RunFieldbook({"show", b, none, "-", a, "--to", "m"}, "C1,7,8\n");
  EXPECT_EQ(tables.out, b + ":\n" + kHeads +
                            "B1           4.000         5.000          6.000\n\n-:\n" + kHeads +
                            "C1           7.000         8.000\n\n" + a + ":\n" + kHeads +
                            "A1           1.000         2.000          3.000\n");
  EXPECT_EQ(tables.err, "fieldbook: " + none + ": there is no such file\n" + a +
                            ":2: northing \"x\": not a number\n");
  EXPECT_EQ(tables.status, 1);

  const ProgramResult list = RunFieldbook({"show", none, a, b, "--to", "m", "--csv"});
  EXPECT_EQ(list.out,
            "Point,Easting (m),Northing (m),Elevation (m),Description\n"
            "A1,1.000,2.000,3.000,\nB1,4.000,5.000,6.000,\n");
  EXPECT_EQ(RunFieldbook({"show", a, b}).status, 2);
  EXPECT_EQ(RunFieldbook({"show", b, b}).status, 0);
}

TEST(Reading, ManyLongFilesComeOutAsOneByOne) {
  const DataFolder folder;
  std::vector<std::string> all = {"show", "--csv", "--to", "ft"};
  std::string expected;
  for (int file = 0; file < 20; ++file) {
    std::string rows;
    for (int i = 0; i < 50 * (20 - file); ++i) {
      rows.append("P").append(std::to_string(file)).append(".").append(std::to_string(i));
      rows.append(",").append(std::to_string(i)).append(".25,2,3,x\n");
    }
    all.push_back(folder.Write(std::to_string(file).append(".csv"), rows));
    const std::string one = RunFieldbook({"show", "--csv", "--to", "ft", all.back()}).out;
    expected += file == 0 ? one : one.substr(one.find('\n') + 1);
  }
  const ProgramResult together = RunFieldbook(all);
  EXPECT_EQ(together.out, expected);
}

TEST(Reading, ProgressIsShownWhereItIsAskedFor) {
  const DataFolder folder;
  std::string rows;
  for (int i = 0; i < 5000; ++i) rows.append("P").append(std::to_string(i)).append(",1,2,3,x\n");
  const std::string path = folder.Write("long.csv", rows);
  const ProgramResult silent = RunFieldbook({"show", path});
  const ProgramResult shown = RunFieldbook({"show", path, path, "--progress"});
  EXPECT_EQ(silent.err, "");
  EXPECT_EQ(shown.status, 0);

  const std::vector<std::string> lines = LinesOf(shown.err);
  ASSERT_GE(lines.size(), 2u) << shown.err;
  EXPECT_EQ(lines.front(), "[....................]   0% reading");
  EXPECT_EQ(lines.back(), "[####################] 100% reading");
  int last = -1;
  for (const std::string& line : lines) {
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(line, parts, std::regex("\\[#*\\.*\\] +(\\d+)% reading"))) << line;
    EXPECT_GT(std::stoi(parts[1]), last) << shown.err;
    last = std::stoi(parts[1]);
  }

  const ProgramResult inverse =
      RunFieldbook({"inverse", path, "P1", "P2", "--progress", "--lang", kItalian});
  EXPECT_EQ(LinesOf(inverse.err).back(), "[####################] 100% lettura");
}

TEST(Reading, VerboseTellsTheLocalTimeOfTheRun) {
  const std::string before = LocalClock();
  const ProgramResult result = RunFieldbook({"units", "--verbose"});
  const std::string after = LocalClock();
  ASSERT_EQ(result.err.find("started: "), 0u) << result.err;
  const std::string time = result.err.substr(9, 19);
  EXPECT_EQ(result.err, "started: " + time + "\n");
  EXPECT_LE(before, time);
  EXPECT_LE(time, after);
  EXPECT_EQ(result.out, RunFieldbook({"units"}).out);
}

#ifndef _WIN32
TEST(Reading, ATerminalGetsABarThatGoesAgain) {
  const DataFolder folder;
  const std::string path = folder.Write("short.csv", "P1,1,2,3,x\n");
  const ProgramResult result = RunFieldbookOnTerminal({"show", path, "--progress"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, RunFieldbook({"show", path}).out);
  EXPECT_TRUE(std::regex_match(
      result.err, std::regex("\r\\[\\.{20}\\]   0% reading *(\r\\[#*\\.*\\] +\\d+% [a-z ]+)+"
                             "\r *\r")))
      << result.err;
}
#endif

TEST(Reading, CtrlCEndsItWithOneLineAndNothingElse) {
  if (!CanPressCtrlC()) GTEST_SKIP() << "the tests' own output would be lost";
  const ProgramResult result =
      InterruptFieldbook({"show", "-", "--to", "m", "--progress"}, "P1,1,2,3,\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "[....................]   0% reading\n"
            "fieldbook: stopped by Ctrl-C\n");
}

}  // namespace
