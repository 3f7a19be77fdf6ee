// The monitors as the X server and the window manager tell them; internal to the layer.
//
// They are asked through XCB and not through Xlib, whose handlers of errors belong to the whole
// process, and which ends it where the server goes. The headers give only types: both libraries are
// bound at the first question behind DISPLAY, so that a machine without a screen needs neither.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace winapi {

struct Monitor {
  HMONITOR handle;  // of the monitor's name, which is the same for as long as the server runs
  RECT area;        // the primary one's begins at (0, 0)
  RECT work;
  bool isPrimary;
  std::string name;  // UTF-8
};

// In the server's order, on a connection that is made and closed. Empty without a display,
// libraries or a monitor that is on, and where the server goes while it is asked.
std::vector<Monitor> AskMonitors();

}  // namespace winapi
