#include "advapi32/ServiceHandle.h"

#include <map>
#include <mutex>
#include <utility>

#include "Fail.h"

namespace winapi {
namespace {

struct Handles {
  std::mutex mutex;
  std::map<SC_HANDLE, std::shared_ptr<const ServiceHandle>> open;
};

// It outlives all threads and static objects.
Handles& Table() {
  static Handles& handles = *new Handles;
  return handles;
}

std::shared_ptr<const ServiceHandle> Take(SC_HANDLE handle) {
  Handles& handles = Table();
  const std::lock_guard lock(handles.mutex);
  auto node = handles.open.extract(handle);
  return node.empty() ? nullptr : std::move(node.mapped());
}

}  // namespace

SC_HANDLE AddServiceHandle(ServiceHandle handle) {
  const auto added = std::make_shared<const ServiceHandle>(std::move(handle));
  auto* const key = reinterpret_cast<SC_HANDLE>(const_cast<ServiceHandle*>(added.get()));
  Handles& handles = Table();
  const std::lock_guard lock(handles.mutex);
  handles.open.emplace(key, added);
  return key;
}

std::shared_ptr<const ServiceHandle> FindServiceHandle(SC_HANDLE handle, bool isService,
                                                       DWORD access) {
  Handles& handles = Table();
  const std::lock_guard lock(handles.mutex);
  const auto found = handles.open.find(handle);
  if (found == handles.open.end() || found->second->place.has_value() != isService) {
    return Fail<std::shared_ptr<const ServiceHandle>>(ERROR_INVALID_HANDLE);
  }
  if ((found->second->access & access) != access) {
    return Fail<std::shared_ptr<const ServiceHandle>>(ERROR_ACCESS_DENIED);
  }
  return found->second;
}

}  // namespace winapi

BOOL WINAPI CloseServiceHandle(SC_HANDLE handle) {
  auto closed = winapi::Take(handle);
  if (closed == nullptr) return Fail(ERROR_INVALID_HANDLE);
  const std::optional<winapi::ServicePlace> place = closed->place;
  closed.reset();
  if (place) winapi::RemoveIfUnused(*place);
  return TRUE;
}
