// The drives that the layer shows; internal to it.
#pragma once

#include <string>

constexpr bool IsDriveLetter(char16_t unit) {
  return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
}

// C: is the root folder, for good.
constexpr bool IsRootDrive(char16_t letter) {
  return (letter | 0x20) == 'c';
}

// The folder that stands as a drive, without a separator at its end, so empty for C:. False where
// there is no such drive.
bool FindDrive(char16_t letter, std::string& root);

// Puts a folder on top of what stands as a drive.
void AddDrive(char16_t letter, const std::string& root);
// Takes the topmost definition away that is the root, or else begins with it. False where there is
// none.
bool RemoveDrive(char16_t letter, const std::string& root, bool exact);

// The drive of the current folder as the program has set it.
char16_t CurrentDrive();
void SetCurrentDrive(char16_t letter);
