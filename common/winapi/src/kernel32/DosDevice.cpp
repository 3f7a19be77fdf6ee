// The drives that are there, and folders that a program makes stand as drives.
#include <windows.h>

#include <string>
#include <string_view>

#include "Fail.h"
#include "kernel32/Drive.h"
#include "kernel32/PathName.h"

BOOL WINAPI DefineDosDeviceW(DWORD flags, LPCWSTR device, LPCWSTR target) {
  const bool removes = (flags & DDD_REMOVE_DEFINITION) != 0;
  const std::u16string_view name = device == nullptr ? u"" : device;
  if (name.size() != 2 || !IsDriveLetter(name[0]) || name[1] != ':' ||
      (target == nullptr && !removes)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  if (IsRootDrive(name[0])) return Fail(ERROR_ACCESS_DENIED);
  std::string root;
  if (target != nullptr) {
    root = ToPosixPath(target);
    if (root.empty()) return FALSE;
    root.erase(root.find_last_not_of('/') + 1);
  }
  if (!removes) {
    AddDrive(name[0], root);
    return TRUE;
  }
  const bool exact = target != nullptr && (flags & DDD_EXACT_MATCH_ON_REMOVE) != 0;
  return RemoveDrive(name[0], root, exact) ? TRUE : Fail(ERROR_FILE_NOT_FOUND);
}

DWORD WINAPI GetLogicalDrives() {
  DWORD drives = 0;
  std::string root;
  for (char16_t letter = 'A'; letter <= 'Z'; ++letter) {
    if (FindDrive(letter, root)) drives |= DWORD{1} << (letter - 'A');
  }
  return drives;
}
