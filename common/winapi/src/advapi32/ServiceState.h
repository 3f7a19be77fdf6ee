// How a service is, as its processes share it; internal to the layer.
//
// The file of the state is written in place, not anew: the locks on it tell who is alive, and a
// user who may start a service of somebody else may not make files in its folder. It holds one
// record of a fixed size. One lock is the supervisor's and one that of the service's program, each
// as long as it lives, whatever ends it; a third guards the record. Whoever has a handle of the
// service keeps the file itself, so that a service that is deleted goes with the last of them.
#pragma once

#include <winsvc.h>

#include <optional>
#include <string>

#include "advapi32/ServiceFolder.h"
#include "kernel32/Descriptor.h"

namespace winapi {

struct ServiceRecord {
  char mark[8];
  SERVICE_STATUS status;
  DWORD process;     // of the service, 0 where none runs
  DWORD supervisor;  // the process whose lock it is
  char address[8];   // of the supervisor's socket, in the abstract names of the kernel
};

class ServiceState {
 public:
  // The file of a service, made where it isn't there yet. Writing is for those who start services.
  // Gives an error code.
  static DWORD Open(const ServicePlace& place, bool forWriting, std::optional<ServiceState>& state);

  // What the record and the locks say together.
  SERVICE_STATUS_PROCESS Status() const;
  bool HasSupervisor() const;
  // Lets other users start the service, or not.
  DWORD LetOthersStart(bool may) const;

  // Takes the place of the supervisor and says that the service starts. False where another has it.
  bool Claim(const ServiceRecord& record) const;
  // Those of the supervisor. The program's lock goes with the descriptor.
  void Write(const ServiceRecord& record) const;
  static Descriptor OpenForProgram(const ServicePlace& place);

  // The record alone; that of a service that never ran where the file isn't one.
  ServiceRecord Read() const;

 private:
  explicit ServiceState(Descriptor file) : m_file(std::move(file)) {}
  Descriptor m_file;
};

// The record of a service that has just ended, or hasn't run.
ServiceRecord StoppedRecord(DWORD exitCode);

}  // namespace winapi
