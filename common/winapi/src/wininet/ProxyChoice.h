// Which proxy a request goes through; internal to the layer.
#pragma once

#include <string>

namespace winapi::internet {

// The proxy of a list for a scheme ("http", "https") and host, empty where there is none or the
// bypass names the host. The lists are those of InternetOpenW.
std::string ChooseProxy(const std::string& proxies, const std::string& bypass,
                        const std::string& scheme, const std::string& host);

}  // namespace winapi::internet
