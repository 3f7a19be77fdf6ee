// fieldbook service, and what the service does.
#include <gtest/gtest.h>
#include <windows.h>
// Needs windows.h before it.
#include <winsvc.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

#include "fieldbook/Program.h"
#include "fieldbook/watch/FolderWatch.h"
#include "fieldbook/watch/WatchService.h"
#include "tests/console/RunProcess.h"

namespace {

namespace fs = std::filesystem;
using fieldbook::FolderWatch;

constexpr const char* kPoints = "point,east,north\nA,1,2\nB,3,4\n";

class Watch : public testing::Test {
 protected:
  Watch() {
    fs::create_directory(From());
    fs::create_directory(To());
  }
  fs::path From() const { return m_folder.PathOf("from"); }
  fs::path To() const { return m_folder.PathOf("to"); }
  // The lines of a look, in one text.
  static std::string Look(FolderWatch& watch, bool isToStop = false) {
    std::string text;
    for (const auto& line : watch.Look([&] { return isToStop; })) {
      console::AppendUtf8(text, line);
      text += '\n';
    }
    return text;
  }
  DataFolder m_folder;
};

TEST_F(Watch, AFileAtRestIsCheckedAndCopiedOnce) {
  FolderWatch watch(From(), To());
  m_folder.Write("from/a.csv", kPoints);
  m_folder.Write("from/.b.csv", kPoints);
  fs::create_directory(From() / "c.csv");
  EXPECT_EQ(Look(watch), "");
  EXPECT_FALSE(fs::exists(To() / "a.csv"));
  EXPECT_EQ(Look(watch, true), "");
  const std::string said = Look(watch);
  EXPECT_TRUE(said.ends_with("a.csv: copied, 2 points\n")) << said;
  EXPECT_EQ(m_folder.Read("to/a.csv"), kPoints);
  EXPECT_EQ(Look(watch), "");
  EXPECT_EQ(std::distance(fs::directory_iterator(To()), {}), 1);
  // One that begins anew finds the copy there.
  FolderWatch second(From(), To());
  Look(second);
  EXPECT_EQ(Look(second), "");
}

TEST_F(Watch, AFileThatChangesIsCopiedAgainAndTheOldCopyIsKept) {
  FolderWatch watch(From(), To());
  m_folder.Write("from/a.csv", kPoints);
  Look(watch);
  m_folder.Write("from/a.csv", std::string(kPoints) + "C,5,");
  EXPECT_EQ(Look(watch), "");  // it is being written
  m_folder.Write("from/a.csv", std::string(kPoints) + "C,5,6\n");
  EXPECT_EQ(Look(watch), "");
  m_folder.Write("to/a.csv", "mine");
  EXPECT_TRUE(Look(watch).ends_with("a.csv: copied, 3 points\n"));
  EXPECT_EQ(m_folder.Read("to/a.csv.bak"), "mine");
}

TEST_F(Watch, WhatIsntSoundIsToldAndNotCopied) {
  const struct {
    const char* bytes;
    const char* said;
  } cases[] = {
      {"", "a.csv: this isn't a points file: it holds no point\n"},
      {"\1\2\3\nxyz\n", "a.csv: this isn't a points file: line 1: "},
      {"point,east,north\nA,1,2\nB,3,x\n", "a.csv: 1 rows can't be read, the first in line 3: "},
  };
  for (const auto& test : cases) {
    FolderWatch watch(From(), To());
    m_folder.Write("from/a.csv", test.bytes);
    Look(watch);
    const std::string said = Look(watch);
    EXPECT_NE(said.find(test.said), said.npos) << said;
    EXPECT_EQ(Look(watch), "");
    EXPECT_TRUE(fs::is_empty(To()));
  }
}

TEST_F(Watch, WhatCouldntBeWrittenIsTriedAgainAndToldOnce) {
  FolderWatch watch(From(), To());
  m_folder.Write("from/a.csv", kPoints);
  fs::create_directories(To() / "a.csv" / "in the way");
  Look(watch);
  const std::string said = Look(watch);
  EXPECT_NE(said.find("a.csv: "), said.npos) << said;
  EXPECT_EQ(Look(watch), "");
  fs::remove_all(To() / "a.csv");
  EXPECT_TRUE(Look(watch).ends_with("a.csv: copied, 2 points\n"));

  fs::rename(From(), m_folder.PathOf("elsewhere"));
  EXPECT_NE(Look(watch), "");
  EXPECT_EQ(Look(watch), "") << "told once";
}

// In this very process, whose services are those of the tests.
ProgramResult Service(const std::vector<std::string>& arguments) {
  std::vector<console::Argument> all;
  const auto add = [&all](const std::string& text) {
    all.push_back({console::Decode(text, true), FromUtf8(text)});
  };
  for (const char* const text : {"--lang=en", "service"}) add(text);
  for (const std::string& text : arguments) add(text);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ProgramResult result = {};
  {
    console::Console console(KTEXT("fieldbook"));
    result.status = fieldbook::Run(all, console);
  }
  std::fflush(stdout);
  result.out = testing::internal::GetCapturedStdout();
  result.err = testing::internal::GetCapturedStderr();
  return result;
}

TEST_F(Watch, TheServiceIsInstalledRunsAndIsRemoved) {
  const std::string from = From().string();
  const std::string to = To().string();
  Service({"remove"});  // what a run that was broken off has left
  EXPECT_EQ(Service({"status"}).status, 1);
  EXPECT_EQ(Service({"start"}).status, 1);
  EXPECT_EQ(Service({"install", from, from}).status, 1);
  EXPECT_EQ(Service({"install", from, to + "x"}).status, 1);
  EXPECT_EQ(Service({"install", from}).status, 1);
  const ProgramResult installed = Service({"install", from, to});
  ASSERT_EQ(installed.status, 0) << installed.out << installed.err;
  EXPECT_EQ(Service({"install", from, to}).status, 1);
  EXPECT_EQ(Service({"status"}).out, "fieldwatch is installed and hasn't run yet\n");

  const ProgramResult started = Service({"start"});
  ASSERT_EQ(started.status, 0) << started.out << started.err;
  EXPECT_NE(started.out.find("Service started successfully."), std::string::npos) << started.out;
  EXPECT_TRUE(Service({"status"}).out.starts_with("fieldwatch runs as process "));
  m_folder.Write("from/a.csv", kPoints);
  for (int i = 0; i < 600 && !fs::exists(To() / "a.csv"); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  EXPECT_EQ(m_folder.Read("to/a.csv"), kPoints);
  EXPECT_EQ(Service({"stop"}).status, 0);
  EXPECT_EQ(Service({"status"}).out, "fieldwatch doesn't run; it ended with 0\n");
  const std::string log = m_folder.Read("to/fieldwatch.log");
  EXPECT_TRUE(log.ends_with("a.csv: copied, 2 points\n")) << log;

  // A folder that has gone.
  fs::rename(To(), m_folder.PathOf("elsewhere"));
  EXPECT_EQ(Service({"start"}).status, 1);
  EXPECT_EQ(Service({"status"}).out, "fieldwatch doesn't run; it ended with 3\n");
  EXPECT_EQ(Service({"remove"}).status, 0);
  EXPECT_EQ(Service({"remove"}).status, 1);
}

TEST_F(Watch, TheServicesProgramIsntACommand) {
  const ProgramResult result = RunProgram("fieldwatch", {From().string(), To().string()});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("fieldbook service --help"), result.err.npos) << result.err;
}

}  // namespace
