#include "kernel32/StaticCalls.h"

#ifdef WINAPI_STATIC

#include <windows.h>
// It needs the one before.
#include <winspool.h>

#include <string_view>

namespace {

struct Call {
  std::string_view name;
  void* address;
};

template <class Function>
Call CallOf(const char* name, Function* function) {
  return {name, reinterpret_cast<void*>(function)};
}

}  // namespace

void* StaticCall(const char* name) {
  static const Call calls[] = {
      // The spooler's, which a system may not have.
      CallOf("ClosePrinter", &ClosePrinter),
      CallOf("DocumentPropertiesW", &DocumentPropertiesW),
      CallOf("GetDefaultPrinterW", &GetDefaultPrinterW),
      CallOf("GetPrinterW", &GetPrinterW),
      CallOf("OpenPrinterW", &OpenPrinterW),
      CallOf("SetPrinterW", &SetPrinterW),
      // Those of monitors, which an old system may not have.
      CallOf("EnumDisplayDevicesW", &EnumDisplayDevicesW),
      CallOf("EnumDisplayMonitors", &EnumDisplayMonitors),
      CallOf("GetMonitorInfoW", &GetMonitorInfoW),
      CallOf("GetSystemMetrics", &GetSystemMetrics),
      CallOf("MonitorFromPoint", &MonitorFromPoint),
      CallOf("MonitorFromRect", &MonitorFromRect),
      CallOf("MonitorFromWindow", &MonitorFromWindow),
  };
  for (const Call& call : calls) {
    if (call.name == name) return call.address;
  }
  return nullptr;
}

#else

void* StaticCall(const char*) {
  return nullptr;
}

#endif
