// Telling the user something.
#include <winapi_host.h>
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "Fail.h"
#include "kernel32/PathName.h"

namespace {

std::atomic<WINAPI_MESSAGE_BOX> messageBox = nullptr;

std::string TextOf(LPCWSTR text) {
  return text == nullptr ? std::string() : ToUtf8(text);
}

}  // namespace

int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
  if (const WINAPI_MESSAGE_BOX shown = messageBox) return shown(owner, text, caption, type);
  if ((type & MB_TYPEMASK) != MB_OK) return Fail(ERROR_NOT_SUPPORTED);
  std::fprintf(stderr, "%s: %s\n", TextOf(caption).c_str(), TextOf(text).c_str());
  return IDOK;
}

HWND WINAPI GetForegroundWindow() {
  return nullptr;
}

void WinapiSetMessageBox(WINAPI_MESSAGE_BOX shown) {
  messageBox = shown;
}
