#include "kelp0lang/MonitorInfo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using kelp::detail::DisplayCalls;
using Areas = std::vector<TWorkArea>;

BOOL CALLBACK Note(HMONITOR monitor, HDC, RECT* area, LPARAM list) {
  EXPECT_EQ(monitor, reinterpret_cast<HMONITOR>(std::intptr_t{0x12340042}));
  reinterpret_cast<Areas*>(list)->push_back(
      {static_cast<std::int32_t>(area->top), static_cast<std::int32_t>(area->bottom),
       static_cast<std::int32_t>(area->left), static_cast<std::int32_t>(area->right)});
  return TRUE;
}

TEST(MonitorInfo, EachMonitorHasItsWorkArea) {
  const CMonitorInfo monitors;
  ASSERT_EQ(static_cast<int>(monitors.workAreas.size()), GetSystemMetrics(SM_CMONITORS));
  RECT work;
  bool isPrimary = !SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
  for (const TWorkArea& area : monitors.workAreas) {
    isPrimary |= area.top == work.top && area.bottom == work.bottom && area.left == work.left &&
                 area.right == work.right;
  }
  EXPECT_TRUE(isPrimary);
}

TEST(MonitorInfo, WithoutTheSystemsFunctionsThereIsOneScreen) {
  EXPECT_EQ(kelp::detail::BindDisplayCalls(KTEXT("kelp0lang.dll"), true).enumMonitors, nullptr);
  const DisplayCalls none;
  const std::int32_t width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
  const RECT clips[] = {{10, 20, 40'000, 40'000}, {-5, -5, 0, 0}};
  for (const RECT* clip : {static_cast<const RECT*>(nullptr), &clips[0], &clips[1]}) {
    Areas areas;
    EXPECT_TRUE(EnumMonitors(none, nullptr, clip, Note, reinterpret_cast<LPARAM>(&areas)));
    ASSERT_EQ(areas.size(), clip == &clips[1] || (clip != nullptr && width == 0) ? 0u : 1u);
    if (areas.empty()) continue;
    EXPECT_EQ(areas[0].left, clip == nullptr ? 0 : 10);
    EXPECT_EQ(areas[0].top, clip == nullptr ? 0 : 20);
    EXPECT_EQ(areas[0].right, width);
    EXPECT_EQ(areas[0].bottom, height);
  }
  const HMONITOR screen = reinterpret_cast<HMONITOR>(std::intptr_t{0x12340042});
  MONITORINFOEXW info = {};
  auto* const record = reinterpret_cast<MONITORINFO*>(&info);
  for (const DWORD size : {sizeof info - 1, sizeof info}) {
    info.cbSize = size;
    EXPECT_EQ(ReadMonitor(none, screen, record), width > 0);
    EXPECT_EQ(info.szDevice[0], size == sizeof info && width > 0 ? 'D' : 0);
  }
  EXPECT_EQ(info.rcMonitor.right, width);
  info.cbSize = sizeof(MONITORINFO) - 1;
  EXPECT_FALSE(ReadMonitor(none, screen, record));
  info.cbSize = sizeof info;
  EXPECT_FALSE(ReadMonitor(none, nullptr, record));
}

TEST(MonitorInfo, ANarrowNameIsWidened) {
  DisplayCalls narrow;
  narrow.getMonitorInfo = [](HMONITOR, MONITORINFO* info) -> BOOL {
    std::strcpy(reinterpret_cast<MONITORINFOEXA*>(info)->szDevice, "DISPLAY1\xE8");
    return TRUE;
  };
  MONITORINFOEXW info = {};
  info.cbSize = sizeof info;
  EXPECT_TRUE(ReadMonitor(narrow, nullptr, reinterpret_cast<MONITORINFO*>(&info)));
  EXPECT_EQ(std::basic_string<WChar>(info.szDevice), KTEXT("DISPLAY1\u00E8"));
}

}  // namespace
