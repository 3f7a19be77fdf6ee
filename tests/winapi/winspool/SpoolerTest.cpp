// Two queues of a CUPS server of the tests' own (with_cups.sh), of which "plotter" is the default
// one; both have A4, A3 and Letter.
#include <gtest/gtest.h>
#include <windows.h>
// It needs the one before.
#include <winspool.h>

#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

class Printer {
 public:
  explicit Printer(const WCHAR* name) {
    Wide text = name;
    EXPECT_TRUE(OpenPrinterW(text.data(), &m_handle, nullptr));
  }
  ~Printer() { EXPECT_TRUE(ClosePrinter(m_handle)); }
  Printer(const Printer&) = delete;
  Printer& operator=(const Printer&) = delete;

  operator HANDLE() const { return m_handle; }
  PRINTER_INFO_2W& Info() {
    DWORD needed = 0;
    EXPECT_EQ(ErrorOf(GetPrinterW(m_handle, 2, nullptr, 0, &needed)), ERROR_INSUFFICIENT_BUFFER);
    m_block.resize(needed);
    EXPECT_TRUE(GetPrinterW(m_handle, 2, m_block.data(), needed, &needed));
    return *reinterpret_cast<PRINTER_INFO_2W*>(m_block.data());
  }
  // What the driver makes of a change of its settings; the size and the orientation, 0 for a
  // refusal.
  int Changed(DWORD fields, short paper, short orientation, short width = 0, short length = 0) {
    DEVMODEW& mode = *Info().pDevMode;
    mode.dmFields = fields;
    mode.dmPaperSize = paper;
    mode.dmOrientation = orientation;
    mode.dmPaperWidth = width;
    mode.dmPaperLength = length;
    SetLastError(0);
    const LONG result =
        DocumentPropertiesW(nullptr, m_handle, nullptr, &mode, &mode, DM_IN_BUFFER | DM_OUT_BUFFER);
    return result == IDOK ? 10 * mode.dmPaperSize + mode.dmOrientation : 0;
  }

 private:
  HANDLE m_handle = nullptr;
  std::vector<BYTE> m_block;
};

TEST(Spooler, TheDefaultPrinterIsTheServers) {
  WCHAR name[100];
  DWORD size = 0;
  ASSERT_EQ(ErrorOf(GetDefaultPrinterW(nullptr, &size)), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(size, 8u);
  size = 7;
  EXPECT_EQ(ErrorOf(GetDefaultPrinterW(name, &size)), ERROR_INSUFFICIENT_BUFFER);
  size = 100;
  ASSERT_TRUE(GetDefaultPrinterW(name, &size));
  EXPECT_EQ(Wide(name), WTEXT("plotter"));
}

TEST(Spooler, ARecordTellsTheQueue) {
  Printer printer(WTEXT("other"));
  const PRINTER_INFO_2W& info = printer.Info();
  EXPECT_EQ(Wide(info.pPrinterName), WTEXT("other"));
  EXPECT_EQ(Wide(info.pLocation), WTEXT("Field office"));
  EXPECT_EQ(Wide(info.pComment), WTEXT("The other of the tests"));
  ASSERT_NE(info.pDevMode, nullptr);
  EXPECT_EQ(Wide(info.pDevMode->dmDeviceName), WTEXT("other"));
  EXPECT_NE(info.pDevMode->dmFields & DM_ORIENTATION, 0u);
  EXPECT_EQ(info.pDevMode->dmPaperSize, DMPAPER_A4);
  EXPECT_EQ(info.pDevMode->dmOrientation, DMORIENT_PORTRAIT);
}

TEST(Spooler, TheDriverTakesWhatTheQueueHas) {
  Printer printer(WTEXT("other"));
  // Wine's driver takes any paper, leaves out what it doesn't know, and goes on from the settings
  // that it was asked about last.
  const int refused = UnderWine() ? -1 : 0;
  const struct {
    DWORD fields;
    short paper, orientation, width, length;
    int result;
  } cases[] = {
      {DM_ORIENTATION, 77, 2, 0, 0, 92},
      {DM_PAPERSIZE | DM_ORIENTATION, DMPAPER_A3, 1, 0, 0, 81},
      {DM_PAPERSIZE, DMPAPER_LETTER, 9, 0, 0, 11},
      {DM_PAPERSIZE | DM_ORIENTATION, DMPAPER_LETTER, 2, 0, 0, 12},
      {DM_PAPERSIZE, 66, 1, 0, 0, refused},
      {DM_PAPERSIZE, -1, 1, 0, 0, refused},
      {DM_ORIENTATION, 9, 3, 0, 0, refused},
      {14, 0, 1, 2970, 4200, UnderWine() ? -1 : 81},
      {14, 0, 1, 2970, 2100, UnderWine() ? -1 : 91},
      {14, 0, 1, 8400, 11800, refused},
      {14, 0, 1, -2100, 2970, refused},
      {DM_PAPERSIZE | DM_ORIENTATION, DMPAPER_A4, 1, 0, 0, 91},
  };
  for (const auto& c : cases) {
    const int result = printer.Changed(c.fields, c.paper, c.orientation, c.width, c.length);
    if (c.result >= 0) {
      EXPECT_EQ(result, c.result) << c.paper << ' ' << c.width;
    }
  }
  DEVMODEW mode = {};
  EXPECT_GE(DocumentPropertiesW(nullptr, printer, nullptr, nullptr, nullptr, 0),
            static_cast<LONG>(sizeof mode));
}

TEST(Spooler, WhatIsSetIsTheUsersFromThenOn) {
  const auto set = [](short paper, short orientation) {
    Printer printer(WTEXT("other"));
    PRINTER_INFO_2W& info = printer.Info();
    info.pDevMode->dmFields = DM_PAPERSIZE | DM_ORIENTATION;
    info.pDevMode->dmPaperSize = paper;
    info.pDevMode->dmOrientation = orientation;
    info.pSecurityDescriptor = nullptr;
    return SetPrinterW(printer, 2, reinterpret_cast<BYTE*>(&info), 0) != FALSE;
  };
  for (const short orientation : {DMORIENT_LANDSCAPE, DMORIENT_PORTRAIT}) {
    ASSERT_TRUE(set(DMPAPER_LETTER, orientation));
    Printer printer(WTEXT("other"));
    EXPECT_EQ(printer.Info().pDevMode->dmPaperSize, DMPAPER_LETTER);
    EXPECT_EQ(printer.Info().pDevMode->dmOrientation, orientation);
    Printer plotter(WTEXT("plotter"));
    EXPECT_EQ(plotter.Info().pDevMode->dmPaperSize, DMPAPER_A4);
  }
  ASSERT_TRUE(set(DMPAPER_A4, DMORIENT_PORTRAIT));
}

TEST(Spooler, WhatIsntThereFails) {
  HANDLE printer = nullptr;
  Wide name = WTEXT("no such printer");
  EXPECT_EQ(ErrorOf(OpenPrinterW(name.data(), &printer, nullptr)), ERROR_INVALID_PRINTER_NAME);
  DWORD needed = 0;
  const HANDLE none = reinterpret_cast<HANDLE>(0x7654321);
  EXPECT_EQ(ErrorOf(GetPrinterW(none, 2, nullptr, 0, &needed)), ERROR_INVALID_HANDLE);
  EXPECT_EQ(ErrorOf(ClosePrinter(none)), ERROR_INVALID_HANDLE);
  Printer open(WTEXT("plotter"));
  EXPECT_EQ(ErrorOf(GetPrinterW(open, 77, nullptr, 0, &needed)), ERROR_INVALID_LEVEL);
}

}  // namespace
