// What X servers and window managers tell of the monitors.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "tests/XTestServer.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/Variable.h"

namespace {

// "left,top-right,bottom" of work areas, the primary one marked.
std::string Monitors() {
  std::string text;
  EnumDisplayMonitors(
      nullptr, nullptr,
      [](HMONITOR monitor, HDC, LPRECT, LPARAM target) -> BOOL {
        MONITORINFO info = {};
        info.cbSize = sizeof info;
        EXPECT_TRUE(GetMonitorInfoW(monitor, &info));
        const RECT& work = info.rcWork;
        *reinterpret_cast<std::string*>(target) +=
            (info.dwFlags != 0 ? "*" : "") + std::to_string(work.left) + ',' +
            std::to_string(work.top) + '-' + std::to_string(work.right) + ',' +
            std::to_string(work.bottom) + ' ';
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&text));
  return text;
}

TEST(DisplayHost, TheWorkAreaIsTheWindowManagersForTheDesktopThatIsShown) {
  const XTestServer server;
  const Variable display("DISPLAY", server.Display().c_str());
  EXPECT_EQ(Monitors(), "*0,0-1280,1024 ");
  const struct {
    std::string desktop, area, monitors;
  } cases[] = {
      {"0", "0,0,1280,984", "*0,0-1280,984 "},
      {"1", "0,0,1280,984,50,24,1230,1000", "*50,24-1280,1024 "},
      {"7", "0,0,1280,984", "*0,0-1280,984 "},
      {"0", "4294967286,10,4294967295,2147483647", "*0,10-1280,1024 "},
      {"0", "5000,0,100,100", "*0,0-1280,1024 "},
      {"0", "0,0,1280", "*0,0-1280,1024 "},
      {"1073741825", "1,2,3,4", "*1,2-4,6 "},
  };
  for (const auto& test : cases) {
    server.SetHint("_NET_CURRENT_DESKTOP", test.desktop);
    server.SetHint("_NET_WORKAREA", test.area);
    EXPECT_EQ(Monitors(), test.monitors);
  }
}

TEST(DisplayHost, ThePrimaryMonitorIsTheOrigin) {
  const XTestServer server;
  const Variable display("DISPLAY", server.Display().c_str());
  server.SetMonitor("left", "500/0x1024/0+0+0 screen");
  server.SetMonitor("*right", "780/0x1024/0+500+0 none");
  server.SetHint("_NET_WORKAREA", "0,30,1280,994");
  const std::string monitors = Monitors();
  EXPECT_NE(monitors.find("*0,30-780,1024 "), std::string::npos) << monitors;
  EXPECT_NE(monitors.find(" -500,30-0,1024 "), std::string::npos) << monitors;
  EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), 780);
  EXPECT_EQ(GetSystemMetrics(SM_XVIRTUALSCREEN), -500);
  EXPECT_EQ(GetSystemMetrics(SM_CXVIRTUALSCREEN), 1280);
  const HMONITOR left = MonitorFromPoint({-1, 0}, MONITOR_DEFAULTTONULL);
  const HMONITOR right = MonitorFromPoint({0, 0}, MONITOR_DEFAULTTONULL);
  EXPECT_NE(left, right);
  const RECT rects[] = {{-9000, 50, -8000, 60}, {-300, 0, 200, 10}, {-5, -7, -5, -7}};
  for (const RECT& rect : rects) EXPECT_EQ(MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST), left);
  const RECT mostlyRight = {-10, 0, 100, 10};
  EXPECT_EQ(MonitorFromRect(&mostlyRight, MONITOR_DEFAULTTONULL), right);
  EXPECT_EQ(MonitorFromWindow(nullptr, MONITOR_DEFAULTTONEAREST), right);
  DISPLAY_DEVICEW adapter = {};
  adapter.cb = sizeof adapter;
  DISPLAY_DEVICEW device = adapter;
  std::u16string names;
  for (DWORD i = 0; EnumDisplayDevicesW(nullptr, i, &adapter, 0); ++i) {
    EXPECT_TRUE(EnumDisplayDevicesW(adapter.DeviceName, 0, &device, 0));
    names += device.DeviceString;
  }
  EXPECT_NE(names.find(u"left"), names.npos);
}

TEST(DisplayHost, AServerWithoutRandRHasItsScreen) {
  const XTestServer server("-extension RANDR");
  const Variable display("DISPLAY", server.Display().c_str());
  EXPECT_EQ(Monitors(), "*0,0-1280,1024 ");
}

TEST(DisplayHost, WithoutADisplayThereIsNoMonitor) {
  for (const char* const name : {static_cast<const char*>(nullptr), "", ":32123", "nonsense"}) {
    const Variable display("DISPLAY", name);
    EXPECT_EQ(Monitors(), "");
    EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), 0);
    EXPECT_EQ(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTONEAREST), nullptr);
    RECT work;
    EXPECT_EQ(ErrorOf(SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0)),
              ERROR_INVALID_MONITOR_HANDLE);
  }
}

}  // namespace
