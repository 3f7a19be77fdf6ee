// Paths for hosts that also call their own system.
#include <algorithm>
#include <string>
#include <string_view>

#include "kernel32/PathName.h"
#include "winapi_host.h"

namespace {

template <class Unit>
DWORD Give(std::basic_string_view<Unit> text, DWORD size, Unit* buffer) {
  const auto length = static_cast<DWORD>(text.size());
  if (length >= size) return length + 1;
  *std::copy(text.begin(), text.end(), buffer) = 0;
  return length;
}

}  // namespace

DWORD WinapiToHostPath(LPCWSTR path, DWORD size, LPSTR buffer) {
  const std::string posix = ToPosixPath(path);
  return posix.empty() ? 0 : Give<char>(posix, size, buffer);
}

DWORD WinapiFromHostPath(LPCSTR path, DWORD size, LPWSTR buffer) {
  return *path != '/' ? 0 : Give<WCHAR>(FromPosixPath(path), size, buffer);
}
