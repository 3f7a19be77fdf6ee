// The monitors, and what each leaves for windows.
//
//   const CMonitorInfo monitors;
//   for (const TWorkArea& area : monitors.workAreas) place(area.left, area.top);
//
// Pixels of the virtual screen, whose origin is the top left corner of the primary monitor.
//
// Threads: any.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelptext/WideChar.h"

// Without the task bar and its like. Bottom and right are outside it.
struct TWorkArea {
  std::int32_t top;
  std::int32_t bottom;
  std::int32_t left;
  std::int32_t right;
};

class KELP0LANG_API CMonitorInfo {
 public:
  // The monitors as they are now; none where the system knows of none.
  CMonitorInfo();

  std::vector<TWorkArea> workAreas;  // of each monitor, in the system's order

 private:
  // Appends.
  void LoadListwa();
};

namespace kelp::detail {

// The system's display functions as it has them, found by name. A system that lacks one of them has
// one monitor for this library, the screen: all pointers are null then.
struct DisplayCalls {
  decltype(&::EnumDisplayMonitors) enumMonitors = nullptr;
  decltype(&::GetMonitorInfoW) getMonitorInfo = nullptr;  // of either width of text
  bool isWide = false;
};
// Those of a module in the process; in one form only is the name of a device wide.
KELP0LANG_API DisplayCalls BindDisplayCalls(const WChar* module, bool isWide);

// EnumDisplayMonitors and GetMonitorInfoW by these functions.
KELP0LANG_API BOOL EnumMonitors(const DisplayCalls& calls, HDC context, const RECT* clip,
                                MONITORENUMPROC callback, LPARAM data);
KELP0LANG_API BOOL ReadMonitor(const DisplayCalls& calls, HMONITOR monitor, MONITORINFO* info);

}  // namespace kelp::detail
