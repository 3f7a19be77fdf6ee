// The open file behind a handle; internal to the layer.
#pragma once

#include <memory>

#include "kernel32/Descriptor.h"
#include "kernel32/KernelObject.h"

namespace winapi {

class File : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kFile;

  File(Descriptor file, DWORD rights)
      : KernelObject(kType), descriptor(std::move(file)), rights(rights) {}
  bool IsSignalled(const Thread&) const override { return true; }

  const Descriptor descriptor;
  const DWORD rights;  // as it was opened: GENERIC_READ, GENERIC_WRITE, FILE_WRITE_ATTRIBUTES
};

// The file stays open while a call uses it, whoever closes the handle meanwhile. Null, and the last
// error, where the handle is none of a file or lacks a right: any of the given ones will do, 0 asks
// for none.
std::shared_ptr<File> FindFile(HANDLE handle, DWORD rights);

}  // namespace winapi
