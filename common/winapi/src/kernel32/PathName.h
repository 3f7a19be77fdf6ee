// Windows paths and the POSIX paths behind them; internal to the layer.
#pragma once

#include <windef.h>

#include <string>
#include <string_view>

// Between UTF-16 and the UTF-8 of the disk; ill-formed pieces become U+FFFD.
std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

// Names are equal where these are: each unit in the upper case of Unicode, under every locale.
std::u16string FoldedName(std::u16string_view name);

inline bool IsSeparator(char16_t unit) {
  return unit == '\\' || unit == '/';
}

// The current folder, in its Windows form; empty text, and the reason in errno, where it has gone.
std::u16string CurrentFolder();

// The absolute form of a path by its text alone, "C:\folder\name": without "." and "..", without
// the points and blanks that end the last name and one point that ends another. A separator at the
// end stays.
std::u16string FullPath(std::u16string_view path);

// The file behind a path. For each name the entry of exactly that name counts first, then one that
// differs in case, then those of the name as the system takes it, without points and blanks at its
// end; what isn't there is written so. A separator at the end stays. A path that can't have a file
// (empty, unknown drive, forbidden characters in what isn't there) gives empty text and the last
// error.
std::string ToPosixPath(const char16_t* path);
// The same without a look at the disk: the file, if the path is written as on the disk.
std::string ToPosixPathAsGiven(const char16_t* path);
// A name as Windows has it. A "\" in it, and what isn't UTF-8, is U+FFFD; the file is found by that
// too.
std::u16string FromDiskName(std::string_view name);
// The Windows form of an absolute POSIX path.
std::u16string FromPosixPath(std::string_view path);

// Sets the last error to what errno means for a file; a missing one is told from a missing folder.
void SetFileError(int error, const std::string& posixPath);

// Hands a text to a caller's buffer: gives its length, or the size needed where it doesn't fit.
DWORD GiveText(std::u16string_view text, DWORD size, LPWSTR buffer);
