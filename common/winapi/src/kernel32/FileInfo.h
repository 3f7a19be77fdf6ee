// What the disk tells of a file, in the terms of Windows; internal to the layer.
#pragma once

#include <minwinbase.h>

#include <cstdint>
#include <string>

struct FileInfo {
  DWORD attributes;
  FILETIME created;
  FILETIME accessed;
  FILETIME written;
  std::uint64_t size;
};

// A link stands for its target, or for itself if that is gone. False where there is no such file,
// with the reason in errno.
bool ReadFileInfo(const std::string& posixPath, FileInfo& info);
