// Copies of files; internal to the layer.
#pragma once

#include <sys/stat.h>

#include <string>

namespace winapi {

struct CopyRequest {
  int from;            // open for reading, at its begin
  std::string to;      // a path that isn't a link
  struct stat rights;  // the owner, group and mode of the copy
  bool replaces;       // else an existing target fails with EEXIST
  bool flushes;        // the content is on the disk before the name is there
};

// Writes the copy beside its target, which then takes the name in one step: whoever looks finds the
// old file or the whole new one. Its time of writing is that of the source. Fails with errno, and
// leaves nothing behind.
bool CopyWhole(const CopyRequest& request);

}  // namespace winapi
