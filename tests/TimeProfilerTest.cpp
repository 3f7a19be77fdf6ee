#include "kelp0lang/TimeProfiler.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "kelp0lang/String.h"
#include "tests/TestDrive.h"

using kelp::CTimeProfiler;

namespace {

// What the thread has taken of the processor, in ticks of which 10000 make a millisecond.
DWORD ProcessorTime() {
  FILETIME times[4];
  GetThreadTimes(GetCurrentThread(), &times[0], &times[1], &times[2], &times[3]);
  return times[2].dwLowDateTime + times[3].dwLowDateTime;
}

// Uses the processor until its clock has gone on by some milliseconds.
void Work(int milliseconds) {
  const DWORD start = ProcessorTime();
  while (ProcessorTime() - start < static_cast<DWORD>(milliseconds) * 10000) {
  }
}

// The report with each time as N, and its numbers in order.
struct Report {
  std::string text;
  std::vector<int> times;

  explicit Report(const std::string& written) {
    std::istringstream lines(written);
    for (std::string line; std::getline(lines, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      const std::size_t number = line.find("= ");
      if (number != std::string::npos) {
        times.push_back(std::stoi(line.substr(number + 2)));
        line = line.substr(0, number + 2) + "N" + line.substr(line.find(" [ms]"));
      }
      text += line + "\n";
    }
  }
};

std::string TimesAt(const std::string& indent) {
  return indent + "User Time = N [ms]\n" + indent + "Kernel Time = N [ms]\n" + indent +
         "Total Time = N [ms]\n";
}

TEST(TimeProfiler, ReportsTheTreeAtItsEnd) {
  const TestDrive drive;
  if (!drive.Ok()) GTEST_SKIP() << "no drive D:";
  {
    CTimeProfiler work(KTEXT("work"));
    Work(30);
  }
  const DWORD before = ProcessorTime();
  {
    CTimeProfiler outer;
    Work(20);
    {
      CTimeProfiler inner(KTEXT("inner"));
      CTimeProfiler innermost(KTEXT("innermost"));
      Work(40);
    }
    CTimeProfiler second(KTEXT("second"));
    EXPECT_EQ(Report(drive.Read("profile_times.txt")).times.size(), 3u) << "not written before";
  }
  const Report report(drive.Read("profile_times.txt"));
  EXPECT_EQ(report.text, "* work\n" + TimesAt("    ") +                           //
                             "* Unknown\n" + TimesAt("    ") +                    //
                             "    * inner\n" + TimesAt("        ") +              //
                             "        * innermost\n" + TimesAt("            ") +  //
                             TimesAt("        ") +                                //
                             "    * second\n" + TimesAt("        ") +             //
                             TimesAt("    "));
  ASSERT_EQ(report.times.size(), 21u);
  const auto total = [&](int block) {
    return report.times[static_cast<std::size_t>(block) * 3 + 2];
  };
  for (int block = 0; block < 7; ++block) {
    const int* const times = &report.times[static_cast<std::size_t>(block) * 3];
    EXPECT_EQ(times[0] + times[1], times[2]) << block;
  }
  EXPECT_LE(total(1), static_cast<int>((ProcessorTime() - before) / 10000));
  // Both parts of a time are cut to milliseconds.
  EXPECT_GE(total(0), 28);
  EXPECT_GE(total(3), 38);
  EXPECT_GE(total(1), 58);
  EXPECT_EQ(total(2) - total(3), total(4)) << "without innermost";
  EXPECT_EQ(total(1) - total(2) - total(5), total(6)) << "without inner and second";
}

TEST(TimeProfiler, ANameThatTheLocaleLacksKeepsItsLine) {
  const TestDrive drive;
  if (!drive.Ok()) GTEST_SKIP() << "no drive D:";
  { CTimeProfiler work(KTEXT("Punkte \u20AC \xD83D\xDE00!")); }
  EXPECT_EQ(Report(drive.Read("profile_times.txt")).text, "* Punkte ? ?!\n" + TimesAt("    "));
}

TEST(TimeProfiler, WithoutTheFileNothingHappens) {
  const TestDrive drive;
  if (!drive.Ok()) GTEST_SKIP() << "no drive D:";
  std::filesystem::create_directory(drive.Root() / "profile_times.txt");
  { CTimeProfiler profiler(KTEXT("x")); }
  EXPECT_TRUE(std::filesystem::is_empty(drive.Root() / "profile_times.txt"));
}

TEST(PrgName, IsKept) {
  EXPECT_EQ(kelp::WString(GetPrgName()), kelp::WString());
  kelp::WString longest;
  longest.resize(127, KTEXT('x'));
  for (const kelp::WString& name :
       {kelp::WString(KTEXT("Monte Bianco")), longest, kelp::WString()}) {
    SetPrgName(name.c_str());
    EXPECT_EQ(kelp::WString(GetPrgName()), name);
  }
}

}  // namespace
