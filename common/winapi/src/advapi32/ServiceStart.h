// Starting services; internal to the layer.
//
// Who looks after a service is the program "winapi-service" beside the layer's module. A fork of
// the caller alone would do without that file, but it would begin with whatever locks the caller's
// other threads hold, with its memory and with the name of its program; so a program is started,
// which has none of these. It forks once, alone, so that it's nobody's child.
#pragma once

#include <windef.h>

#include <string>
#include <vector>

#include "advapi32/ServiceFolder.h"

namespace winapi {

// Starts what the service needs, and then the service, with the arguments behind its name. Gives an
// error code.
DWORD StartWithNeeds(const InstalledService& service, const std::vector<std::string>& arguments);

// The services that need this one, those first that no other of them needs.
std::vector<InstalledService> DependentsOf(const ServiceTerms& terms);

// How a service is; stopped where that can't be read.
SERVICE_STATUS_PROCESS StatusOf(const ServicePlace& place);

}  // namespace winapi
