// The drives that the layer shows; internal to it.
#pragma once

#include <string>

constexpr bool IsDriveLetter(char16_t unit) {
  return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
}

// The folder that stands as a drive, without a separator at its end, so empty for C:. False where
// there is no such drive.
bool FindDrive(char16_t letter, std::string& root);

// The drive of the current folder as the program has set it.
char16_t CurrentDrive();
void SetCurrentDrive(char16_t letter);
