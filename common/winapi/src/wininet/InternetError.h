// Why a transfer failed, as WinINet says it; internal to the layer.
#pragma once

#include <curl/curl.h>
#include <windows.h>

namespace winapi::internet {

// The error of a transfer, which began with HTTPS or not, and ended with a result other than
// CURLE_OK.
DWORD ErrorOfTransfer(CURL* easy, CURLcode result, bool isSecure);

}  // namespace winapi::internet
