// Processes behind handles; internal to the layer.
#pragma once

#include <sys/types.h>
#include <windows.h>

#include "kernel32/Descriptor.h"
#include "kernel32/KernelObject.h"

namespace winapi {

class Process : public KernelObject {
 public:
  static constexpr KernelType kType = KernelType::kProcess;

  // One that this process has started, or another by its descriptor.
  explicit Process(pid_t id) : KernelObject(kType), id(id) {}
  Process(pid_t id, Descriptor other) : KernelObject(kType), id(id), other(std::move(other)) {}
  bool IsSignalled(const Thread&) const override { return HasEnded(); }
  bool HasEnded() const;

  const pid_t id;
  const Descriptor other;  // -1 for a child
  bool ended = false;      // a child, whose exit code is known then
  DWORD exitCode = 0;
};

// A handle of a child that was started just now; null, and the last error, without room for it. The
// child is waited for, so that nothing is left of it, whether its handle is used or closed.
HANDLE AddChild(pid_t id);

}  // namespace winapi
