// What the handles of services lead to; internal to the layer.
#pragma once

#include <winsvc.h>

#include <memory>
#include <optional>

#include "advapi32/ServiceFolder.h"
#include "advapi32/ServiceState.h"

namespace winapi {

struct ServiceHandle {
  DWORD access;
  // Of a service; the manager has none.
  std::optional<ServicePlace> place;
  std::optional<ServiceState> state;
};

SC_HANDLE AddServiceHandle(ServiceHandle handle);

// What a call of the service's or the manager's rights uses; it stays while the call does, whoever
// closes the handle. Null, and ERROR_INVALID_HANDLE or ERROR_ACCESS_DENIED.
std::shared_ptr<const ServiceHandle> FindServiceHandle(SC_HANDLE handle, bool isService,
                                                       DWORD access);

}  // namespace winapi
