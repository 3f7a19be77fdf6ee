#include "user32/XMonitors.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include "PipeSignalScope.h"
#include "RunTimeLibrary.h"

namespace winapi {
namespace {

#define WINAPI_XCB_CALLS(CALL)   \
  CALL(xcb_connect)              \
  CALL(xcb_disconnect)           \
  CALL(xcb_connection_has_error) \
  CALL(xcb_get_setup)            \
  CALL(xcb_setup_roots_iterator) \
  CALL(xcb_screen_next)          \
  CALL(xcb_get_extension_data)   \
  CALL(xcb_intern_atom)          \
  CALL(xcb_intern_atom_reply)    \
  CALL(xcb_get_property)         \
  CALL(xcb_get_property_reply)   \
  CALL(xcb_get_property_value)   \
  CALL(xcb_get_atom_name)        \
  CALL(xcb_get_atom_name_reply)  \
  CALL(xcb_get_atom_name_name)   \
  CALL(xcb_get_atom_name_name_length)
#define WINAPI_RANDR_CALLS(CALL)                 \
  CALL(xcb_randr_query_version)                  \
  CALL(xcb_randr_query_version_reply)            \
  CALL(xcb_randr_get_monitors)                   \
  CALL(xcb_randr_get_monitors_reply)             \
  CALL(xcb_randr_get_monitors_monitors_iterator) \
  CALL(xcb_randr_monitor_info_next)

// The libraries' functions under their own names.
struct XcbCalls {
#define WINAPI_DECLARE(name) decltype(&::name) name;
  WINAPI_XCB_CALLS(WINAPI_DECLARE)
  WINAPI_RANDR_CALLS(WINAPI_DECLARE)
  xcb_extension_t* randr;
  bool isThere = true;

  XcbCalls() {
    const RunTimeLibrary xcb("libxcb.so.1");
    const RunTimeLibrary extension("libxcb-randr.so.0");
#define WINAPI_BIND(name) isThere = xcb.Bind(#name, name) && isThere;
    WINAPI_XCB_CALLS(WINAPI_BIND)
#define WINAPI_BIND_RANDR(name) isThere = extension.Bind(#name, name) && isThere;
    WINAPI_RANDR_CALLS(WINAPI_BIND_RANDR)
    isThere = extension.Bind("xcb_randr_id", randr) && isThere;
  }
};

template <class Reply>
std::unique_ptr<Reply, decltype(&std::free)> Owned(Reply* reply) {
  return {reply, &std::free};
}

// One conversation with the server that DISPLAY names. An answer that is an error, or never comes,
// is null.
class XServer {
 public:
  explicit XServer(const XcbCalls& xcb)
      : m_xcb(xcb), m_connection(xcb.xcb_connect(nullptr, &m_screenNumber)) {
    if (xcb.xcb_connection_has_error(m_connection) != 0) return;
    auto screens = xcb.xcb_setup_roots_iterator(xcb.xcb_get_setup(m_connection));
    for (int i = 0; i < m_screenNumber && screens.rem > 1; ++i) xcb.xcb_screen_next(&screens);
    if (screens.rem > 0) m_screen = screens.data;
  }
  ~XServer() { m_xcb.xcb_disconnect(m_connection); }
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;

  bool IsThere() const { return m_screen != nullptr; }
  std::vector<Monitor> Monitors() const;
  // By the window manager's hint for the desktop that is shown. It has one for all monitors.
  std::optional<RECT> WorkArea() const;

 private:
  bool HasMonitors() const;
  xcb_atom_t Atom(std::string_view name) const;
  std::string NameOf(xcb_atom_t atom) const;
  // Numbers of a property of the root window, from one of them on; false where they aren't there.
  template <std::size_t count>
  bool ReadNumbers(std::string_view property, std::uint32_t from,
                   std::array<std::uint32_t, count>& numbers) const;

  const XcbCalls& m_xcb;
  int m_screenNumber = 0;
  xcb_connection_t* const m_connection;
  const xcb_screen_t* m_screen = nullptr;
};

HMONITOR HandleOf(xcb_atom_t name) {
  constexpr std::uintptr_t kFirst = 0x10000;
  return reinterpret_cast<HMONITOR>(kFirst + name);
}

// A server without RandR 1.5 has one monitor, its screen.
bool XServer::HasMonitors() const {
  const auto* const extension = m_xcb.xcb_get_extension_data(m_connection, m_xcb.randr);
  if (extension == nullptr || !extension->present) return false;
  const auto version = Owned(m_xcb.xcb_randr_query_version_reply(
      m_connection, m_xcb.xcb_randr_query_version(m_connection, 1, 5), nullptr));
  return version != nullptr && (version->major_version > 1 || version->minor_version >= 5);
}

std::vector<Monitor> XServer::Monitors() const {
  if (!HasMonitors()) {
    const RECT all = {0, 0, m_screen->width_in_pixels, m_screen->height_in_pixels};
    return {{HandleOf(XCB_ATOM_NONE), all, all, true, "screen"}};
  }
  const auto reply = Owned(m_xcb.xcb_randr_get_monitors_reply(
      m_connection, m_xcb.xcb_randr_get_monitors(m_connection, m_screen->root, 1), nullptr));
  std::vector<Monitor> monitors;
  if (reply == nullptr) return monitors;
  auto next = m_xcb.xcb_randr_get_monitors_monitors_iterator(reply.get());
  for (; next.rem > 0; m_xcb.xcb_randr_monitor_info_next(&next)) {
    const xcb_randr_monitor_info_t& info = *next.data;
    const RECT area = {info.x, info.y, info.x + info.width, info.y + info.height};
    if (info.width == 0 || info.height == 0) continue;
    monitors.push_back({HandleOf(info.name), area, area, info.primary != 0, NameOf(info.name)});
  }
  return monitors;
}

std::optional<RECT> XServer::WorkArea() const {
  std::array<std::uint32_t, 1> desktop = {};
  ReadNumbers("_NET_CURRENT_DESKTOP", 0, desktop);
  std::array<std::uint32_t, 4> area;
  // Some window managers have one for all desktops.
  if (!ReadNumbers("_NET_WORKAREA", 4 * desktop[0], area) &&
      !ReadNumbers("_NET_WORKAREA", 0, area)) {
    return {};
  }
  // Whatever the numbers are, the screen's own sizes have 16 bits.
  const auto clamped = [](std::int64_t value) {
    return static_cast<LONG>(std::clamp<std::int64_t>(value, INT16_MIN, UINT16_MAX));
  };
  const std::int64_t x = static_cast<std::int32_t>(area[0]);
  const std::int64_t y = static_cast<std::int32_t>(area[1]);
  return RECT{clamped(x), clamped(y), clamped(x + area[2]), clamped(y + area[3])};
}

xcb_atom_t XServer::Atom(std::string_view name) const {
  const auto cookie =
      m_xcb.xcb_intern_atom(m_connection, 1, static_cast<std::uint16_t>(name.size()), name.data());
  const auto reply = Owned(m_xcb.xcb_intern_atom_reply(m_connection, cookie, nullptr));
  return reply == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : reply->atom;
}

std::string XServer::NameOf(xcb_atom_t atom) const {
  const auto reply = Owned(m_xcb.xcb_get_atom_name_reply(
      m_connection, m_xcb.xcb_get_atom_name(m_connection, atom), nullptr));
  if (reply == nullptr) return {};
  const int length = m_xcb.xcb_get_atom_name_name_length(reply.get());
  return {m_xcb.xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(length)};
}

template <std::size_t count>
bool XServer::ReadNumbers(std::string_view property, std::uint32_t from,
                          std::array<std::uint32_t, count>& numbers) const {
  const xcb_atom_t atom = Atom(property);
  if (atom == XCB_ATOM_NONE) return false;
  const auto cookie =
      m_xcb.xcb_get_property(m_connection, 0, m_screen->root, atom, XCB_ATOM_CARDINAL, from, count);
  const auto reply = Owned(m_xcb.xcb_get_property_reply(m_connection, cookie, nullptr));
  if (reply == nullptr || reply->format != 32 || reply->value_len != count) return false;
  const auto* const values =
      static_cast<const std::uint32_t*>(m_xcb.xcb_get_property_value(reply.get()));
  std::copy_n(values, count, numbers.begin());
  return true;
}

// The first stands for a primary one where the server has none.
Monitor& PrimaryOf(std::vector<Monitor>& monitors) {
  const auto found = std::find_if(monitors.begin(), monitors.end(),
                                  [](const Monitor& monitor) { return monitor.isPrimary; });
  return found == monitors.end() ? monitors.front() : *found;
}

}  // namespace

std::vector<Monitor> AskMonitors() {
  const char* const display = std::getenv("DISPLAY");
  if (display == nullptr || *display == 0) return {};
  static const XcbCalls calls;
  if (!calls.isThere) return {};
  const PipeSignalScope noSignal;
  const XServer server(calls);
  if (!server.IsThere()) return {};
  std::vector<Monitor> monitors = server.Monitors();
  if (monitors.empty()) return {};
  PrimaryOf(monitors).isPrimary = true;
  const RECT origin = PrimaryOf(monitors).area;
  const std::optional<RECT> work = server.WorkArea();
  for (Monitor& monitor : monitors) {
    // A monitor that the hint has nothing of is left to windows whole.
    RECT common;
    if (work && IntersectRect(&common, &*work, &monitor.area)) monitor.work = common;
    OffsetRect(&monitor.area, -origin.left, -origin.top);
    OffsetRect(&monitor.work, -origin.left, -origin.top);
  }
  return monitors;
}

}  // namespace winapi
