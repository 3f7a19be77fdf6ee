// What a service was installed with, as the file of a service has it; internal to the layer.
//
//   winapi service 1
//   name=fieldwatch
//   display=Field watch
//   program=\"/opt/kelp/fieldwatch\" /srv/in /srv/points
//   start=3
//   error=1
//   needs=network
//   access=02001c00…
//
// "needs" once for each dependency; "access" is the list of rights in hexadecimal, or nothing where
// everybody has every right; a line "deleted" says that the service is to go. Backslash, quote and
// line ends in texts are escaped by a backslash.
#pragma once

#include <winsvc.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "advapi32/Identifier.h"

namespace winapi {

struct ServiceTerms {
  std::u16string name;
  std::u16string displayName;
  std::u16string program;  // with its arguments
  DWORD startType = SERVICE_DEMAND_START;
  DWORD errorControl = SERVICE_ERROR_NORMAL;
  std::vector<std::u16string> needs;
  std::optional<std::string> access;
  bool isDeleted = false;
};

std::string FormatTerms(const ServiceTerms& terms);
// Nothing for a text that isn't whole or has other lines.
std::optional<ServiceTerms> ParseTerms(std::string_view text);

// Why it can't be started, if its file says so; else ERROR_SUCCESS.
DWORD StartRefusal(const ServiceTerms& terms);

// Everything for the owner and the administrators, questions for everybody.
std::string FirstAccess(uid_t owner);
// What an account that isn't the owner's has of the rights of a service.
DWORD RightsOf(const Account& account, const ServiceTerms& terms);
// Whether somebody but the owner and root may have the right.
bool MayOthers(DWORD right, const ServiceTerms& terms, uid_t owner);
// What the rights that hold for any object mean for a service.
DWORD OfServices(DWORD rights);

}  // namespace winapi
