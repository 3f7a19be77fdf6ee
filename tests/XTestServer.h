// An X server of a test's own, with the monitors and the hints of a window manager that it wants.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;

class XTestServer {
 public:
  // One screen of 1280 by 1024. Throws where it can't be started.
  explicit XTestServer(const std::vector<std::string>& options = {});
  ~XTestServer();
  XTestServer(const XTestServer&) = delete;
  XTestServer& operator=(const XTestServer&) = delete;

  // As the variable DISPLAY names it.
  const std::string& Display() const { return m_display; }
  // A property of the root window.
  void SetHint(const char* name, const std::vector<std::uint32_t>& numbers) const;
  // A part of the screen, as high as it is, is a monitor; one of them takes the server's outputs,
  // which else are another one.
  void AddMonitor(const char* name, bool isPrimary, bool takesOutputs, std::int16_t x,
                  std::uint16_t width) const;

 private:
  std::string m_display;
  pid_t m_process = -1;
  xcb_connection_t* m_connection = nullptr;
};
