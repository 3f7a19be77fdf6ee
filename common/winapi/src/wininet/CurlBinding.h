// libcurl, bound at the first use; internal to the layer.
//
// It brings some thirty libraries along, and every program that links this one would load them at
// its start. So the functions of <curl/curl.h> that this folder calls are defined here, hidden, and
// go on to libcurl's own.
#pragma once

namespace winapi::internet {

// Loads it. None of its functions may be called where it isn't there.
bool IsCurlThere();

}  // namespace winapi::internet
