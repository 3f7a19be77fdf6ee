// The default printer is one of a CUPS server of the tests' own (winapi/winspool/with_cups.sh),
// with A4, A3 and Letter.
#include "kelp0lang/PrinterPage.h"

#include <gtest/gtest.h>

#include "kelp0lang/Singleton.h"
#include "tests/winapi/UnderWine.h"

#ifndef _WIN32
#include <signal.h>

#include <cstdlib>
#endif

namespace {

struct Page {
  short format = 0;
  bool landscape = false;
  bool operator==(const Page&) const = default;
};

Page Current() {
  Page page;
  GetPaperSizeAndOrientation(page.format, page.landscape);
  return page;
}

TEST(PrinterPage, AFormatHasItsSize) {
  const struct {
    short format;
    bool landscape;
    int width, height;
  } cases[] = {
      {1, false, 2159, 2794},   {9, false, 2100, 2970},   {9, true, 2970, 2100},
      {56, false, 0, 3048},     {73, false, 900, 2050},   {118, false, 4580, 3240},
      {260, true, 11800, 8400}, {261, false, 5940, 8400}, {0, false, 0, 0},
      {119, false, 0, 0},       {300, true, 0, 0},        {-1, false, 0, 0},
  };
  for (const auto& c : cases) {
    int width = -1, height = -1;
    GetSizeOfPageFormat(c.format, c.landscape, width, height);
    EXPECT_EQ(width, c.width) << c.format;
    EXPECT_EQ(height, c.height) << c.format;
  }
}

TEST(PrinterPage, ASizeHasItsLowestFormat) {
  const struct {
    int width, height;
    Page page;
  } cases[] = {
      {2970, 2100, {9, true}},   {2159, 2794, {1, false}},   {4318, 2794, {3, true}},
      {2159, 2159, {75, true}},  {1250, 1760, {35, true}},   {4580, 3240, {29, true}},
      {3048, 2794, {90, false}}, {8400, 11800, {-2, false}}, {2101, 2970, {-2, false}},
  };
  for (const auto& c : cases) {
    Page page = {7, true};
    EXPECT_EQ(GetPageFormatAndOrientationFromSize(c.width, c.height, page.format, page.landscape),
              c.page.format > 0);
    EXPECT_EQ(page, c.page) << c.width << " x " << c.height;
  }
}

TEST(PrinterPage, ThePrinterKeepsWhatItTakes) {
  EXPECT_EQ(Current(), (Page{9, false}));
  EXPECT_NE(SetPaperSizeAndOrientation(8, true), 0);
  EXPECT_EQ(Current(), (Page{8, true}));
  // Wine's driver refuses no paper.
  if (!UnderWine()) {
    for (const short format : {66, 260, 261, 0, -1}) {
      EXPECT_EQ(SetPaperSizeAndOrientation(format, false), 0) << format;
      EXPECT_EQ(Current(), (Page{8, false})) << "the second pass is tried all the same";
    }
  }
  EXPECT_NE(SetPaperSizeAndOrientation(9, false), 0);
  EXPECT_EQ(Current(), (Page{9, false}));
}

TEST(PrinterPage, TheSingletonPutsBackWhatItFound) {
  CPrinterPageSetter& setter = CPrinterPageSetter::GetInstance();
  EXPECT_EQ(&setter, &CPrinterPageSetter::GetInstance());
  EXPECT_NE(setter.SetPaperSizeAndOrientation(1, true), 0);
  EXPECT_EQ(Current(), (Page{1, true}));
  kelp::CSingletonManager::DeleteSingletons();
  EXPECT_EQ(Current(), (Page{9, false}));
}

#ifndef _WIN32
// The last one: the server doesn't come back. Wine keeps what it knows of printers.
TEST(PrinterPage, WithoutAServerNothingCanBeReadOrSet) {
  CPrinterPageSetter& setter = CPrinterPageSetter::GetInstance();
  const auto server = static_cast<pid_t>(std::atoi(std::getenv("CUPS_PROCESS")));
  kill(server, SIGTERM);
  Page page = {5, true};
  for (int i = 0; i < 500 && page.format != -1; ++i) {
    usleep(10'000);
    page.landscape = true;
    GetPaperSizeAndOrientation(page.format, page.landscape);
  }
  EXPECT_EQ(page, (Page{-1, true}));
  EXPECT_EQ(setter.SetPaperSizeAndOrientation(8, false), 0);
}
#endif

}  // namespace
