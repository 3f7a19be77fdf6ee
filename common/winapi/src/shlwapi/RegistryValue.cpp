#include <shlwapi.h>

LSTATUS WINAPI SHGetValueW(HKEY key, LPCWSTR subKey, LPCWSTR name, DWORD* type, void* data,
                           DWORD* size) {
  HKEY opened;
  LSTATUS result = RegOpenKeyExW(key, subKey, 0, KEY_QUERY_VALUE, &opened);
  if (result != ERROR_SUCCESS) return result;
  result = RegQueryValueExW(opened, name, nullptr, type, static_cast<BYTE*>(data), size);
  RegCloseKey(opened);
  return result;
}
