#include "kernel32/Drive.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string_view>
#include <vector>

#include "kernel32/PathName.h"

namespace {

constexpr int kLetters = 26;
constexpr int kDriveC = 2;

int IndexOf(char16_t letter) {
  return (letter | 0x20) - 'a';
}

std::mutex mutex;
constinit std::atomic<char16_t> currentDrive = u'C';

// What stands as each drive, the topmost definition last. Never freed, so that paths work as long
// as the process does.
std::vector<std::string>* Definitions() {
  static auto* const definitions = new std::vector<std::string>[kLetters];
  return definitions;
}

BOOL Refuse(DWORD error) {
  SetLastError(error);
  return FALSE;
}

// Takes the topmost definition away; with a target, the topmost one that is the target, or begins
// with it.
BOOL Remove(std::vector<std::string>& definitions, const std::string& target, bool exact) {
  const auto matches = [&](const std::string& root) {
    return exact ? root == target : root.starts_with(target);
  };
  const auto found = std::find_if(definitions.rbegin(), definitions.rend(), matches);
  if (found == definitions.rend()) return Refuse(ERROR_FILE_NOT_FOUND);
  definitions.erase(std::next(found).base());
  return TRUE;
}

}  // namespace

bool FindDrive(char16_t letter, std::string& root) {
  root.clear();
  const int index = IndexOf(letter);
  if (index == kDriveC) return true;
  const std::lock_guard lock(mutex);
  const std::vector<std::string>& definitions = Definitions()[index];
  if (definitions.empty()) return false;
  root = definitions.back();
  return true;
}

char16_t CurrentDrive() {
  return currentDrive;
}

void SetCurrentDrive(char16_t letter) {
  currentDrive = letter;
}

BOOL WINAPI DefineDosDeviceW(DWORD flags, LPCWSTR device, LPCWSTR target) {
  const bool removes = (flags & DDD_REMOVE_DEFINITION) != 0;
  const std::u16string_view name = device == nullptr ? u"" : device;
  if (name.size() != 2 || !IsDriveLetter(name[0]) || name[1] != ':' ||
      (target == nullptr && !removes)) {
    return Refuse(ERROR_INVALID_PARAMETER);
  }
  const int index = IndexOf(name[0]);
  if (index == kDriveC) return Refuse(ERROR_ACCESS_DENIED);
  std::string root;
  if (target != nullptr) {
    root = ToPosixPath(target);
    if (root.empty()) return FALSE;
    root.erase(root.find_last_not_of('/') + 1);
  }
  const std::lock_guard lock(mutex);
  std::vector<std::string>& definitions = Definitions()[index];
  if (removes) {
    return Remove(definitions, root, target != nullptr && (flags & DDD_EXACT_MATCH_ON_REMOVE) != 0);
  }
  definitions.push_back(root);
  return TRUE;
}
