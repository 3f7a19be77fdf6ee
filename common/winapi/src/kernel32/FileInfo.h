// What the disk tells of a file, in the terms of Windows; internal to the layer.
#pragma once

#include <minwinbase.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>

struct FileInfo {
  DWORD attributes;
  FILETIME created;
  FILETIME accessed;
  FILETIME written;
  std::uint64_t size;
};

// A file that nobody may write is read-only to everybody, the user who may do everything too.
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr bool IsWriteProtected(mode_t mode) {
  return (mode & kAnyWrite) == 0;
}

// A link stands for its target, or for itself if that is gone. False where there is no such file,
// with the reason in errno.
bool ReadFileInfo(const std::string& posixPath, FileInfo& info);

// Gives an open file the owner, group and mode of another. A group that can't be given gets no
// rights of its own. Fails with errno.
bool CopyRights(const struct stat& from, int file);
