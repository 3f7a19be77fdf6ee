// fieldbook system.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/fieldbook/RunProgram.h"

#ifndef _WIN32
#include "tests/XTestServer.h"
#include "tests/winapi/Variable.h"
#endif

namespace {

TEST(System, EachThingHasItsLine) {
  const ProgramResult result = RunFieldbook({"system"});
  EXPECT_EQ(result.status, 0);
  std::size_t at = 0;
  for (const char* const begin :
       {"version: ", ", service pack ", "\nadministrator: ", "\n64 bits: yes\n", "monitor",
        "\nother programs of the office: ", "\nother programs of the field: "}) {
    at = result.out.find(begin, at);
    ASSERT_NE(at, std::string::npos) << begin << " in " << result.out;
  }
  EXPECT_EQ(RunFieldbook({"system", "monitors"}).status, 1);
}

// Beside a CUPS server of the tests' own (winapi/winspool/with_cups.sh).
TEST(System, ThePaperIsThatOfTheDefaultPrinter) {
  if (std::getenv("CUPS_PROCESS") == nullptr) GTEST_SKIP();
  EXPECT_NE(RunFieldbook({"system"}).out.find("\ndefault printer: 210.0 x 297.0 mm, portrait\n"),
            std::string::npos);
}

#ifndef _WIN32
TEST(System, MonitorsAreThoseOfTheDisplay) {
  const auto shows = [](const char* text) {
    return RunFieldbook({"system"}).out.find(text) != std::string::npos;
  };
  {
    const Variable none("DISPLAY", nullptr);
    EXPECT_TRUE(shows("\nmonitors: none\n"));
  }
  const XTestServer server;
  const Variable display("DISPLAY", server.Display().c_str());
  server.SetHint("_NET_WORKAREA", "8,0,1272,984");
  EXPECT_TRUE(shows("\nmonitor 1: 1272 x 984 pixels for windows, from 8, 0\n"));
}
#endif

}  // namespace
