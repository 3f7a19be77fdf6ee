// Where services are kept; internal to the layer.
#pragma once

#include <winsvc.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "advapi32/ServiceTerms.h"

namespace winapi {

// The two files of a service.
struct ServicePlace {
  std::string folder;
  std::string stem;
  std::string TermsPath() const { return folder + '/' + stem + ".service"; }
  std::string StatePath() const { return folder + '/' + stem + ".state"; }
};

// A service as it stands in its file.
struct InstalledService {
  ServicePlace place;
  ServiceTerms terms;
  uid_t owner = 0;
};

// Where a service of a name would be made; nothing, and ERROR_INVALID_NAME, where none can have it.
std::optional<ServicePlace> NewPlace(std::u16string_view name);
// The folder of new services, made where it isn't there. Gives an error code.
DWORD MakeServiceFolder(const std::string& folder);

// They give ERROR_SUCCESS, ERROR_SERVICE_DOES_NOT_EXIST, ERROR_ACCESS_DENIED or ERROR_BADDB.
DWORD ReadService(const ServicePlace& place, InstalledService& service);
DWORD FindService(std::u16string_view name, InstalledService& service);
// All that can be read.
std::vector<InstalledService> AllServices();

// Under the lock of the file (ProfileLock). Gives an error code.
DWORD WriteTerms(const ServicePlace& place, const ServiceTerms& terms);
// Takes away a service that is marked for it, doesn't run and isn't used by anybody's handle; true
// if it has gone. Without the rights it stays.
bool RemoveIfUnused(const ServicePlace& place);

// What a file that can't be read or written means for a service.
DWORD ServiceFileError(int error);

}  // namespace winapi
