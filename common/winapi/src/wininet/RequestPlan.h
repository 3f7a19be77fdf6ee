// All that is known of a request before it is sent; internal to the layer.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace winapi::internet {

struct RequestPlan {
  std::string url;
  std::string server;  // scheme, host and port: whom a kept connection leads to
  std::string verb;
  std::string agent;
  std::string proxy;  // empty: none
  bool http10 = false;
  DWORD flags = 0;
  std::vector<std::string> headers;  // lines without their end

  // Whether the two differ in no more than whom they ask for what.
  bool IsLike(const RequestPlan& other) const {
    return agent == other.agent && proxy == other.proxy && http10 == other.http10 &&
           flags == other.flags && headers == other.headers;
  }
};

}  // namespace winapi::internet
