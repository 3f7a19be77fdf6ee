// Who may use a file while others have it open; internal to the layer.
//
//   const ShareGate gate(descriptor);
//   if (!gate.Allows(claim)) return Fail(ERROR_SHARING_VIOLATION);
//   gate.Hold(claim);
//
// An open file holds read locks on bytes far behind any content: one for each right that it uses
// and one for each that it keeps from others. They belong to the open file description, so they
// work between threads and processes alike and go with the last descriptor, a killed process's too.
//
// What this can't keep: programs that don't use the layer, streams of the C runtime but those of
// _wfsopen, and file systems without such locks keep nobody off and are kept off by nobody. A file
// that may be written but not read is held by no lock. Folders aren't shared by these rules.
#pragma once

#include <windef.h>

#include <optional>
#include <string>

#include "kernel32/Descriptor.h"

namespace winapi {

// Each a set of FILE_SHARE_READ, FILE_SHARE_WRITE and FILE_SHARE_DELETE. Who uses nothing is
// allowed always and refuses nothing.
struct ShareClaim {
  DWORD uses;
  DWORD shares;
};

// Held for the moment in which one looks what others hold and acts on it; others of the same file
// wait. The descriptor must stay open meanwhile.
class ShareGate {
 public:
  explicit ShareGate(int descriptor);
  ~ShareGate();
  ShareGate(const ShareGate&) = delete;
  ShareGate& operator=(const ShareGate&) = delete;

  bool Allows(ShareClaim claim) const;
  // Whether a mapping of the file is there, which keeps others from cutting it.
  bool IsMapped() const;

  // Until the descriptor and its copies are closed.
  void Hold(ShareClaim claim) const;
  void HoldMapping() const;

 private:
  bool IsHeldByAnother(DWORD bytes) const;
  void HoldBytes(DWORD bytes) const;

  const int m_descriptor;
  bool m_blocked;  // by a program that keeps the whole file for itself
};

// Keeps a file from being opened while its name is taken away.
class DeletionGate {
 public:
  explicit DeletionGate(const std::string& posixPath);
  // Whether nobody has the file open who keeps its name in place.
  bool Allows() const;

 private:
  const Descriptor m_file;
  std::optional<ShareGate> m_gate;
};

}  // namespace winapi
