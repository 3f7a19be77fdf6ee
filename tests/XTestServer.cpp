#include "tests/XTestServer.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

// Runs in the new process.
[[noreturn]] void RunServer(int numberPipe, const std::vector<std::string>& options) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  // It tells of every number that is taken.
  if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(126);
  const std::string number = std::to_string(numberPipe);
  std::vector<const char*> texts = {"Xvfb",         "-displayfd", number.c_str(), "-screen", "0",
                                    "1280x1024x24", "-nolisten",  "tcp",          "-noreset"};
  for (const std::string& option : options) texts.push_back(option.c_str());
  texts.push_back(nullptr);
  execvp(texts[0], const_cast<char* const*>(texts.data()));
  _exit(127);
}

xcb_atom_t Atom(xcb_connection_t* connection, const std::string& name) {
  auto* const reply = xcb_intern_atom_reply(
      connection,
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
      nullptr);
  const xcb_atom_t atom = reply == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : reply->atom;
  std::free(reply);
  return atom;
}

const xcb_screen_t& Screen(xcb_connection_t* connection) {
  return *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

// The outputs that no monitor of a test has yet are a monitor by themselves.
std::vector<xcb_randr_output_t> Outputs(xcb_connection_t* connection) {
  auto* const reply = xcb_randr_get_screen_resources_current_reply(
      connection, xcb_randr_get_screen_resources_current(connection, Screen(connection).root),
      nullptr);
  if (reply == nullptr) return {};
  const auto* const outputs = xcb_randr_get_screen_resources_current_outputs(reply);
  const std::vector<xcb_randr_output_t> all(outputs, outputs + reply->num_outputs);
  std::free(reply);
  return all;
}

// The server has done what it was told.
void Wait(xcb_connection_t* connection) {
  Atom(connection, "_TEST_DONE");
}

}  // namespace

XTestServer::XTestServer(const std::vector<std::string>& options) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  m_process = fork();
  if (m_process == 0) RunServer(ends[1], options);
  close(ends[1]);
  std::string number;
  for (char digit; read(ends[0], &digit, 1) == 1 && digit != '\n';) number += digit;
  close(ends[0]);
  if (!number.empty()) m_display = ":" + number;
  m_connection = xcb_connect(m_display.c_str(), nullptr);
  if (m_display.empty() || xcb_connection_has_error(m_connection) != 0) {
    throw std::runtime_error("Xvfb doesn't start");
  }
}

XTestServer::~XTestServer() {
  xcb_disconnect(m_connection);
  kill(m_process, SIGTERM);
  waitpid(m_process, nullptr, 0);
}

void XTestServer::SetHint(const char* name, const std::vector<std::uint32_t>& numbers) const {
  xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, Screen(m_connection).root,
                      Atom(m_connection, name), XCB_ATOM_CARDINAL, 32,
                      static_cast<std::uint32_t>(numbers.size()), numbers.data());
  Wait(m_connection);
}

void XTestServer::AddMonitor(const char* name, bool isPrimary, bool takesOutputs, std::int16_t x,
                             std::uint16_t width) const {
  xcb_randr_monitor_info_t info = {};
  info.name = Atom(m_connection, name);
  info.primary = isPrimary;
  info.x = x;
  info.width = width;
  info.height = Screen(m_connection).height_in_pixels;
  const std::vector<xcb_randr_output_t> outputs =
      takesOutputs ? Outputs(m_connection) : std::vector<xcb_randr_output_t>();
  info.nOutput = static_cast<std::uint16_t>(outputs.size());
  // xcb_randr_set_monitor itself doesn't count what a monitor takes.
  xcb_protocol_request_t request = {3, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
  xcb_randr_set_monitor_request_t head = {};
  head.window = Screen(m_connection).root;
  iovec parts[5] = {
      {},
      {},
      {&head, sizeof head},
      {&info, sizeof info},
      {const_cast<xcb_randr_output_t*>(outputs.data()), sizeof outputs[0] * outputs.size()}};
  xcb_send_request(m_connection, 0, parts + 2, &request);
  Wait(m_connection);
}
