// An X server of a test's own, with the monitors and the hints of a window manager that it wants.
#pragma once

#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

class XTestServer {
 public:
  // One screen of 1280 by 1024. Throws where it can't be started.
  explicit XTestServer(const std::string& options = "")
      : m_output(popen(("echo $$; exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp "
                        "-noreset " +
                        options + " 2>/dev/null")
                           .c_str(),
                       "r")) {
    int number = 0;
    if (std::fscanf(m_output, "%d %d", &m_process, &number) != 2) {
      throw std::runtime_error("Xvfb doesn't start");
    }
    m_display = ":" + std::to_string(number);
  }
  ~XTestServer() {
    kill(m_process, SIGTERM);
    pclose(m_output);
  }
  XTestServer(const XTestServer&) = delete;
  XTestServer& operator=(const XTestServer&) = delete;

  // As the variable DISPLAY names it.
  const std::string& Display() const { return m_display; }
  // A property of the root window: numbers with commas between them.
  void SetHint(const std::string& name, const std::string& numbers) const {
    Run("xprop -root -f " + name + " 32c -set " + name + " " + numbers);
  }
  // A part of the screen is a monitor, as xrandr names it: "500/0x1024/0+0+0 screen". A "*" before
  // the name makes it the primary one; one of them takes the server's output, which else is
  // another.
  void SetMonitor(const std::string& name, const std::string& place) const {
    Run("xrandr --setmonitor '" + name + "' " + place);
  }

 private:
  void Run(const std::string& command) const {
    if (std::system(("DISPLAY=" + m_display + " " + command).c_str()) != 0) {
      throw std::runtime_error(command);
    }
  }

  std::FILE* const m_output;
  pid_t m_process = 0;
  std::string m_display;
};
