#include "kernel32/Drive.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

namespace {

constexpr int kLetters = 26;

std::mutex mutex;
constinit std::atomic<char16_t> currentDrive = u'C';

// What stands as a drive, the topmost definition last. Never freed, so that paths work as long as
// the process does.
std::vector<std::string>& DefinitionsOf(char16_t letter) {
  static auto* const definitions = new std::vector<std::string>[kLetters];
  return definitions[(letter | 0x20) - 'a'];
}

}  // namespace

bool FindDrive(char16_t letter, std::string& root) {
  root.clear();
  if (IsRootDrive(letter)) return true;
  const std::lock_guard lock(mutex);
  const std::vector<std::string>& definitions = DefinitionsOf(letter);
  if (definitions.empty()) return false;
  root = definitions.back();
  return true;
}

void AddDrive(char16_t letter, const std::string& root) {
  const std::lock_guard lock(mutex);
  DefinitionsOf(letter).push_back(root);
}

bool RemoveDrive(char16_t letter, const std::string& root, bool exact) {
  const auto matches = [&](const std::string& definition) {
    return exact ? definition == root : definition.starts_with(root);
  };
  const std::lock_guard lock(mutex);
  std::vector<std::string>& definitions = DefinitionsOf(letter);
  const auto found = std::find_if(definitions.rbegin(), definitions.rend(), matches);
  if (found == definitions.rend()) return false;
  definitions.erase(std::next(found).base());
  return true;
}

char16_t CurrentDrive() {
  return currentDrive;
}

void SetCurrentDrive(char16_t letter) {
  currentDrive = letter;
}
