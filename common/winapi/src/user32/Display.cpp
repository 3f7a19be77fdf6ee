// The monitors, for those who ask by the calls of Windows.
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "CopyText.h"
#include "Fail.h"
#include "kernel32/PathName.h"
#include "user32/XMonitors.h"

using winapi::AskMonitors;
using winapi::Monitor;

namespace {

using Monitors = std::vector<Monitor>;

const Monitor* Primary(const Monitors& monitors) {
  const auto found = std::find_if(monitors.begin(), monitors.end(),
                                  [](const Monitor& monitor) { return monitor.isPrimary; });
  return found == monitors.end() ? nullptr : &*found;
}

// The devices are numbered from 1 in the order of the monitors.
std::u16string DeviceName(std::size_t index) {
  return u"\\\\.\\DISPLAY" + FromUtf8(std::to_string(index + 1));
}

template <std::size_t size>
void Copy(std::u16string_view text, WCHAR (&field)[size]) {
  CopyText(text, field, static_cast<int>(size));
}

RECT AllOf(const Monitors& monitors) {
  RECT all = {};
  for (const Monitor& monitor : monitors) {
    if (&monitor == &monitors.front()) all = monitor.area;
    all = {std::min(all.left, monitor.area.left), std::min(all.top, monitor.area.top),
           std::max(all.right, monitor.area.right), std::max(all.bottom, monitor.area.bottom)};
  }
  return all;
}

std::int64_t ExtentOf(const RECT& rect) {
  return std::int64_t{rect.right - rect.left} * (rect.bottom - rect.top);
}

// How far apart two stretches are, 0 where they touch.
std::int64_t Gap(std::int64_t begin, std::int64_t end, std::int64_t otherBegin,
                 std::int64_t otherEnd) {
  return std::max<std::int64_t>({0, otherBegin - end, begin - otherEnd});
}

std::int64_t SquaredDistance(const RECT& rect, const RECT& other) {
  const std::int64_t x = Gap(rect.left, rect.right, other.left, other.right);
  const std::int64_t y = Gap(rect.top, rect.bottom, other.top, other.bottom);
  return x * x + y * y;
}

HMONITOR HandleOf(const Monitor* monitor) {
  return monitor == nullptr ? nullptr : monitor->handle;
}

// That which has most of the rectangle; else by the flags, where without a rectangle none is near.
HMONITOR Choose(const RECT* rect, DWORD flags) {
  const Monitors monitors = AskMonitors();
  const Monitor* most = nullptr;
  const Monitor* nearest = nullptr;
  std::int64_t extent = 0;
  for (const Monitor& monitor : monitors) {
    if (rect == nullptr) break;
    RECT common;
    if (IntersectRect(&common, rect, &monitor.area) && ExtentOf(common) > extent) {
      most = &monitor;
      extent = ExtentOf(common);
    }
    if (nearest == nullptr ||
        SquaredDistance(*rect, monitor.area) < SquaredDistance(*rect, nearest->area)) {
      nearest = &monitor;
    }
  }
  if (most != nullptr) return most->handle;
  if ((flags & MONITOR_DEFAULTTONEAREST) != 0 && nearest != nullptr) return nearest->handle;
  return flags == MONITOR_DEFAULTTONULL ? nullptr : HandleOf(Primary(monitors));
}

}  // namespace

BOOL WINAPI EnumDisplayMonitors(HDC context, LPCRECT clip, MONITORENUMPROC callback, LPARAM data) {
  if (context != nullptr) return Fail(ERROR_INVALID_HANDLE);
  if (callback == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  for (const Monitor& monitor : AskMonitors()) {
    RECT area = monitor.area;
    if (clip != nullptr && !IntersectRect(&area, &area, clip)) continue;
    if (!callback(monitor.handle, nullptr, &area, data)) return FALSE;
  }
  return TRUE;
}

BOOL WINAPI GetMonitorInfoW(HMONITOR handle, LPMONITORINFO info) {
  if (info == nullptr ||
      (info->cbSize != sizeof(MONITORINFO) && info->cbSize != sizeof(MONITORINFOEXW))) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const Monitors monitors = AskMonitors();
  const auto found =
      std::find_if(monitors.begin(), monitors.end(),
                   [handle](const Monitor& monitor) { return monitor.handle == handle; });
  if (found == monitors.end()) return Fail(ERROR_INVALID_MONITOR_HANDLE);
  info->rcMonitor = found->area;
  info->rcWork = found->work;
  info->dwFlags = found->isPrimary ? MONITORINFOF_PRIMARY : 0;
  if (info->cbSize == sizeof(MONITORINFOEXW)) {
    const auto index = static_cast<std::size_t>(found - monitors.begin());
    Copy(DeviceName(index), reinterpret_cast<MONITORINFOEXW*>(info)->szDevice);
  }
  return TRUE;
}

HMONITOR WINAPI MonitorFromPoint(POINT point, DWORD flags) {
  // Its pixel, which at the end of the numbers is the one before.
  const LONG x = std::min(point.x, INT32_MAX - 1);
  const LONG y = std::min(point.y, INT32_MAX - 1);
  const RECT pixel = {x, y, x + 1, y + 1};
  return Choose(&pixel, flags);
}

HMONITOR WINAPI MonitorFromRect(LPCRECT rect, DWORD flags) {
  if (rect == nullptr) return Fail<HMONITOR>(ERROR_INVALID_PARAMETER);
  // One without an extent is the point where it begins.
  if (rect->left >= rect->right || rect->top >= rect->bottom) {
    return MonitorFromPoint({rect->left, rect->top}, flags);
  }
  return Choose(rect, flags);
}

HMONITOR WINAPI MonitorFromWindow(HWND, DWORD flags) {
  return Choose(nullptr, flags);
}

int WINAPI GetSystemMetrics(int index) {
  if (index != SM_CXSCREEN && index != SM_CYSCREEN &&
      (index < SM_XVIRTUALSCREEN || index > SM_CMONITORS)) {
    return 0;
  }
  const Monitors monitors = AskMonitors();
  const Monitor* const primary = Primary(monitors);
  if (primary == nullptr) return 0;
  const RECT all = AllOf(monitors);
  switch (index) {
    case SM_CXSCREEN:
      return primary->area.right;
    case SM_CYSCREEN:
      return primary->area.bottom;
    case SM_XVIRTUALSCREEN:
      return all.left;
    case SM_YVIRTUALSCREEN:
      return all.top;
    case SM_CXVIRTUALSCREEN:
      return all.right - all.left;
    case SM_CYVIRTUALSCREEN:
      return all.bottom - all.top;
    default:
      return static_cast<int>(monitors.size());
  }
}

BOOL WINAPI SystemParametersInfoA(UINT action, UINT, PVOID value, UINT) {
  if (action != SPI_GETWORKAREA) return Fail(ERROR_INVALID_SPI_VALUE);
  if (value == nullptr) return Fail(ERROR_NOACCESS);
  const Monitors monitors = AskMonitors();
  const Monitor* const primary = Primary(monitors);
  if (primary == nullptr) return Fail(ERROR_INVALID_MONITOR_HANDLE);
  *static_cast<RECT*>(value) = primary->work;
  return TRUE;
}

BOOL WINAPI EnumDisplayDevicesW(LPCWSTR device, DWORD number, PDISPLAY_DEVICEW info, DWORD) {
  if (info == nullptr || info->cb != sizeof(DISPLAY_DEVICEW)) return Fail(ERROR_INVALID_PARAMETER);
  const Monitors monitors = AskMonitors();
  std::size_t index = number;
  if (device != nullptr) {
    for (index = 0; index < monitors.size() && DeviceName(index) != device;) ++index;
    if (number > 0) index = monitors.size();
  }
  if (index >= monitors.size()) return FALSE;
  *info = {};
  info->cb = sizeof *info;
  info->StateFlags = DISPLAY_DEVICE_ATTACHED_TO_DESKTOP;
  const std::u16string name = FromUtf8(monitors[index].name);
  if (device != nullptr) {
    Copy(DeviceName(index) + u"\\Monitor0", info->DeviceName);
    Copy(name, info->DeviceString);
  } else {
    if (monitors[index].isPrimary) info->StateFlags |= DISPLAY_DEVICE_PRIMARY_DEVICE;
    Copy(DeviceName(index), info->DeviceName);
    Copy(u"X screen", info->DeviceString);
  }
  return TRUE;
}
