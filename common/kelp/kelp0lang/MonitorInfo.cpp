#include "kelp0lang/MonitorInfo.h"

#include <algorithm>
#include <iterator>

#include "kelptext/WideChar.h"

namespace kelp::detail {
namespace {

// Stands for the screen of a system that doesn't tell its monitors apart.
const HMONITOR kScreen = reinterpret_cast<HMONITOR>(std::intptr_t{0x12340042});

RECT ScreenArea() {
  return {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
}

// Cuts an area down to what a context can draw on, and moves it to where that begins.
bool CutByContext(HDC context, RECT& area) {
  RECT box;
  POINT origin;
  if (GetClipBox(context, &box) == ERROR || !GetDCOrgEx(context, &origin)) return false;
  OffsetRect(&area, -origin.x, -origin.y);
  return IntersectRect(&area, &area, &box) != FALSE;
}

BOOL EnumScreen(HDC context, const RECT* clip, MONITORENUMPROC callback, LPARAM data) {
  if (callback == nullptr) return FALSE;
  RECT area = ScreenArea();
  if (context != nullptr && !CutByContext(context, area)) return TRUE;
  if (clip != nullptr && !IntersectRect(&area, &area, clip)) return TRUE;
  return callback(kScreen, context, &area, data);
}

BOOL ReadScreen(HMONITOR monitor, MONITORINFO* info) {
  RECT work;
  if (monitor != kScreen || info == nullptr || info->cbSize < sizeof(MONITORINFO) ||
      !SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0)) {
    return FALSE;
  }
  info->rcMonitor = ScreenArea();
  info->rcWork = work;
  info->dwFlags = MONITORINFOF_PRIMARY;
  if (info->cbSize >= sizeof(MONITORINFOEXW)) {
    constexpr WChar kName[] = KTEXT("DISPLAY");
    std::copy_n(kName, std::size(kName), reinterpret_cast<MONITORINFOEXW*>(info)->szDevice);
  }
  return TRUE;
}

// In place; the name of a device is plain ASCII.
void WidenName(MONITORINFOEXW& info) {
  char name[CCHDEVICENAME];
  std::copy_n(reinterpret_cast<const MONITORINFOEXA&>(info).szDevice, CCHDEVICENAME, name);
  std::transform(name, name + CCHDEVICENAME, info.szDevice,
                 [](char unit) { return static_cast<WChar>(static_cast<unsigned char>(unit)); });
}

// Also where they aren't needed here: a system that lacks one isn't one that tells monitors apart.
constexpr const char* kOthers[] = {"GetSystemMetrics", "MonitorFromWindow", "MonitorFromRect",
                                   "MonitorFromPoint", "EnumDisplayDevicesW"};

template <class Function>
bool Bind(HMODULE module, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  return function != nullptr;
}

bool IsNtSystem() {
  OSVERSIONINFOA info = {};
  info.dwOSVersionInfoSize = sizeof info;
  return GetVersionExA(&info) && info.dwPlatformId == VER_PLATFORM_WIN32_NT;
}

const DisplayCalls& SystemCalls() {
  static const DisplayCalls calls = BindDisplayCalls(KTEXT("USER32"), IsNtSystem());
  return calls;
}

BOOL CALLBACK AddMonitor(HMONITOR monitor, HDC, RECT*, LPARAM list) {
  MONITORINFOEXW info = {};
  info.cbSize = sizeof info;
  ReadMonitor(SystemCalls(), monitor, reinterpret_cast<MONITORINFO*>(&info));
  const RECT& work = info.rcWork;
  reinterpret_cast<std::vector<TWorkArea>*>(list)->push_back(
      {static_cast<std::int32_t>(work.top), static_cast<std::int32_t>(work.bottom),
       static_cast<std::int32_t>(work.left), static_cast<std::int32_t>(work.right)});
  return TRUE;
}

}  // namespace

DisplayCalls BindDisplayCalls(const WChar* name, bool isWide) {
  const HMODULE module = GetModuleHandleW(name);
  if (module == nullptr) return {};
  DisplayCalls calls;
  calls.isWide = isWide;
  bool areThere =
      Bind(module, "EnumDisplayMonitors", calls.enumMonitors) &&
      Bind(module, isWide ? "GetMonitorInfoW" : "GetMonitorInfoA", calls.getMonitorInfo);
  for (const char* const other : kOthers) {
    areThere = areThere && GetProcAddress(module, other) != nullptr;
  }
  return areThere ? calls : DisplayCalls();
}

BOOL EnumMonitors(const DisplayCalls& calls, HDC context, const RECT* clip,
                  MONITORENUMPROC callback, LPARAM data) {
  if (calls.enumMonitors == nullptr) return EnumScreen(context, clip, callback, data);
  return calls.enumMonitors(context, clip, callback, data);
}

BOOL ReadMonitor(const DisplayCalls& calls, HMONITOR monitor, MONITORINFO* info) {
  if (calls.getMonitorInfo == nullptr) return ReadScreen(monitor, info);
  if (!calls.getMonitorInfo(monitor, info)) return FALSE;
  if (!calls.isWide && info->cbSize >= sizeof(MONITORINFOEXW)) {
    WidenName(*reinterpret_cast<MONITORINFOEXW*>(info));
  }
  return TRUE;
}

}  // namespace kelp::detail

CMonitorInfo::CMonitorInfo() {
  LoadListwa();
}

void CMonitorInfo::LoadListwa() {
  kelp::detail::EnumMonitors(kelp::detail::SystemCalls(), nullptr, nullptr,
                             &kelp::detail::AddMonitor, reinterpret_cast<LPARAM>(&workAreas));
}
