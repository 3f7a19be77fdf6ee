// Opening a file as CreateFileW does; internal to the layer.
#pragma once

#include <string>

#include "kernel32/Descriptor.h"
#include "kernel32/Sharing.h"

namespace winapi {

// The arguments of CreateFileW.
struct OpenRequest {
  DWORD access;
  DWORD share;
  DWORD disposition;
  DWORD flags;

  bool IsKnown() const;
  bool MayMake() const;
  bool Empties() const;  // what was in the file
  bool Changes() const;
  ShareClaim Claim() const;
};

struct OpenedFile {
  Descriptor file;  // -1, and the last error, where it couldn't be opened
  bool made = false;
};

// The file holds its share of the file until the descriptor and its copies are closed.
OpenedFile OpenFile(const std::string& posixPath, const OpenRequest& request);

}  // namespace winapi
