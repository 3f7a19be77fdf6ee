// The monitors, whatever there are of them where the tests run.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/WideText.h"

namespace {

struct Seen {
  HMONITOR handle;
  RECT area;
};

BOOL CALLBACK Note(HMONITOR monitor, HDC, LPRECT area, LPARAM list) {
  reinterpret_cast<std::vector<Seen>*>(list)->push_back({monitor, *area});
  return TRUE;
}

std::vector<Seen> Monitors(const RECT* clip = nullptr) {
  std::vector<Seen> seen;
  EXPECT_TRUE(EnumDisplayMonitors(nullptr, clip, Note, reinterpret_cast<LPARAM>(&seen)));
  return seen;
}

MONITORINFOEXW InfoOf(HMONITOR monitor) {
  MONITORINFOEXW info = {};
  info.cbSize = sizeof info;
  EXPECT_TRUE(GetMonitorInfoW(monitor, reinterpret_cast<MONITORINFO*>(&info)));
  return info;
}

bool Equal(const RECT& one, const RECT& other) {
  return one.left == other.left && one.top == other.top && one.right == other.right &&
         one.bottom == other.bottom;
}

TEST(Display, TheCallsTellOneStoryOfTheMonitors) {
  const std::vector<Seen> seen = Monitors();
  EXPECT_EQ(GetSystemMetrics(SM_CMONITORS), static_cast<int>(seen.size()));
  RECT all = {};
  int primaries = 0;
  for (const Seen& monitor : seen) {
    const MONITORINFOEXW info = InfoOf(monitor.handle);
    EXPECT_TRUE(Equal(info.rcMonitor, monitor.area));
    RECT common;
    EXPECT_TRUE(IntersectRect(&common, &info.rcWork, &info.rcMonitor));
    EXPECT_TRUE(Equal(common, info.rcWork)) << "the work area is a part";
    EXPECT_EQ(Wide(info.szDevice).rfind(WTEXT("\\\\.\\DISPLAY"), 0), 0u);
    EXPECT_EQ(MonitorFromRect(&monitor.area, MONITOR_DEFAULTTONULL), monitor.handle);
    EXPECT_EQ(MonitorFromPoint({monitor.area.right - 1, monitor.area.top}, MONITOR_DEFAULTTONULL),
              monitor.handle);
    all = {std::min(all.left, monitor.area.left), std::min(all.top, monitor.area.top),
           std::max(all.right, monitor.area.right), std::max(all.bottom, monitor.area.bottom)};
    if ((info.dwFlags & MONITORINFOF_PRIMARY) == 0) continue;
    ++primaries;
    EXPECT_TRUE(
        Equal(monitor.area, {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}));
    RECT work;
    EXPECT_TRUE(SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0));
    EXPECT_TRUE(Equal(work, info.rcWork));
    EXPECT_EQ(MonitorFromPoint({INT_MAX, INT_MIN}, MONITOR_DEFAULTTOPRIMARY), monitor.handle);
  }
  EXPECT_EQ(primaries, seen.empty() ? 0 : 1);
  EXPECT_TRUE(
      Equal(all, {GetSystemMetrics(SM_XVIRTUALSCREEN), GetSystemMetrics(SM_YVIRTUALSCREEN),
                  GetSystemMetrics(SM_XVIRTUALSCREEN) + GetSystemMetrics(SM_CXVIRTUALSCREEN),
                  GetSystemMetrics(SM_YVIRTUALSCREEN) + GetSystemMetrics(SM_CYVIRTUALSCREEN)}));
  EXPECT_EQ(MonitorFromPoint({INT_MAX, INT_MAX}, MONITOR_DEFAULTTONULL), nullptr);
}

TEST(Display, WhatIsntThereFails) {
  MONITORINFO info = {};
  info.cbSize = sizeof info;
  EXPECT_EQ(ErrorOf(GetMonitorInfoW(reinterpret_cast<HMONITOR>(0x7654321), &info)),
            ERROR_INVALID_MONITOR_HANDLE);
  info.cbSize = 12;
  for (const Seen& monitor : Monitors()) EXPECT_FALSE(GetMonitorInfoW(monitor.handle, &info));
  DISPLAY_DEVICEW device = {};
  device.cb = sizeof device;
  EXPECT_FALSE(EnumDisplayDevicesW(nullptr, 1000, &device, 0));
  EXPECT_FALSE(EnumDisplayDevicesW(WTEXT("\\\\.\\DISPLAY1000"), 0, &device, 0));
  EXPECT_EQ(GetSystemMetrics(-1), 0);
}

TEST(Rect, HaveInCommonWhatBothCover) {
  const RECT rect = {0, 0, 10, 20};
  const struct {
    RECT other, common;
  } cases[] = {
      {{5, -5, 50, 5}, {5, 0, 10, 5}},
      {{10, 0, 20, 20}, {}},  // touches
      {{3, 3, 3, 9}, {}},     // has no extent
      {{9, 9, 2, 2}, {}},     // upside down
      {{-9, -9, 99, 99}, rect},
  };
  for (const auto& c : cases) {
    RECT common = c.other;
    EXPECT_EQ(IntersectRect(&common, &rect, &common), Equal(c.common, {}) ? FALSE : TRUE);
    EXPECT_TRUE(Equal(common, c.common)) << c.other.left;
  }
  RECT moved = rect;
  OffsetRect(&moved, -3, 4);
  EXPECT_TRUE(Equal(moved, {-3, 4, 7, 24}));
}

}  // namespace
