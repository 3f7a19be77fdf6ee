// The program of a service, as its supervisor starts it; internal to the layer.
#pragma once

#include <sys/types.h>
#include <windef.h>

#include <string>

#include "advapi32/ServiceFolder.h"
#include "kernel32/Descriptor.h"

namespace winapi {

// Descriptors above those that the program finds open.
Descriptor Raised(Descriptor descriptor);

struct ServiceProcess {
  pid_t id = 0;
  Descriptor ended;   // can be read when it has ended
  Descriptor status;  // the supervisor's ends
  Descriptor control;
};

// Takes on the account of the owner of a service, where this process is root's. Gives an error
// code.
DWORD BecomeOwner(uid_t owner);

// Starts the program of a service. Gives an error code.
DWORD StartProgram(const InstalledService& service, ServiceProcess& process);

// The command line of a service cut into its arguments, the file of the program in front: what is
// in quotes, or else the shortest that ends at a blank and is a file. Empty, and the last error,
// where there is none.
std::vector<std::string> ProgramArguments(std::u16string_view commandLine);

}  // namespace winapi
