// Installing services, and asking about them.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Fail.h"
#include "advapi32/AccessList.h"
#include "advapi32/PackedTexts.h"
#include "advapi32/ServiceFolder.h"
#include "advapi32/ServiceHandle.h"
#include "advapi32/ServiceState.h"
#include "kernel32/PathName.h"
#include "kernel32/ProfileFile.h"

namespace {

using winapi::InstalledService;
using winapi::ServicePlace;
using winapi::ServiceState;
using winapi::ServiceTerms;

std::u16string TextOf(LPCWSTR text) {
  return text == nullptr ? std::u16string() : std::u16string(text);
}

// The rights that the caller gets of those that it asks for; nothing where it hasn't all.
std::optional<DWORD> Granted(DWORD wanted, const InstalledService& service) {
  const winapi::Account account = winapi::OwnAccount();
  const DWORD rights = account.user == 0 || account.user == service.owner
                           ? SERVICE_ALL_ACCESS
                           : winapi::RightsOf(account, service.terms);
  constexpr DWORD kGeneric = static_cast<DWORD>(GENERIC_READ) | GENERIC_WRITE | GENERIC_EXECUTE |
                             GENERIC_ALL | MAXIMUM_ALLOWED;
  const DWORD asked = winapi::OfServices(wanted);
  if ((asked & ~rights) != 0 || (wanted & ~(kGeneric | SERVICE_ALL_ACCESS)) != 0) {
    return std::nullopt;
  }
  return (wanted & MAXIMUM_ALLOWED) != 0 ? rights : asked;
}

SC_HANDLE Open(const InstalledService& found, DWORD access) {
  std::optional<ServiceState> state;
  DWORD error = ServiceState::Open(found.place, false, state);
  if (error != ERROR_SUCCESS) return Fail<SC_HANDLE>(error);
  // With the state kept, the service can't go any more; it may have gone just before.
  InstalledService service;
  error = winapi::ReadService(found.place, service);
  if (error != ERROR_SUCCESS) return Fail<SC_HANDLE>(error);
  const auto granted = Granted(access, service);
  if (!granted) return Fail<SC_HANDLE>(ERROR_ACCESS_DENIED);
  return winapi::AddServiceHandle({*granted, found.place, std::move(state)});
}

// Texts separated by their terminators, up to an empty one.
std::vector<std::u16string> ListOf(LPCWSTR list) {
  std::vector<std::u16string> texts;
  while (list != nullptr && *list != 0) {
    texts.emplace_back(list);
    list += texts.back().size() + 1;
  }
  return texts;
}

DWORD CheckTerms(DWORD type, DWORD startType, DWORD errorControl, const ServiceTerms& terms) {
  if (type != SERVICE_WIN32_OWN_PROCESS) return ERROR_NOT_SUPPORTED;
  if (startType == SERVICE_AUTO_START) return ERROR_NOT_SUPPORTED;
  if (startType != SERVICE_DEMAND_START && startType != SERVICE_DISABLED) {
    return ERROR_INVALID_PARAMETER;
  }
  if (errorControl > SERVICE_ERROR_CRITICAL || terms.program.empty()) {
    return ERROR_INVALID_PARAMETER;
  }
  // "+" begins the name of a group.
  const bool hasGroup =
      std::any_of(terms.needs.begin(), terms.needs.end(),
                  [](const std::u16string& need) { return need.front() == u'+'; });
  return hasGroup ? ERROR_NOT_SUPPORTED : ERROR_SUCCESS;
}

bool IsDisplayNameTaken(const ServiceTerms& terms) {
  const std::u16string name = FoldedName(terms.displayName);
  const auto services = winapi::AllServices();
  return std::any_of(services.begin(), services.end(), [&](const InstalledService& other) {
    return FoldedName(other.terms.displayName) == name || FoldedName(other.terms.name) == name;
  });
}

// Under the lock of the folder.
DWORD Install(const ServicePlace& place, const ServiceTerms& terms) {
  InstalledService old;
  const DWORD found = winapi::FindService(terms.name, old);
  if (found == ERROR_SUCCESS) {
    return old.terms.isDeleted ? ERROR_SERVICE_MARKED_FOR_DELETE : ERROR_SERVICE_EXISTS;
  }
  if (found != ERROR_SERVICE_DOES_NOT_EXIST) return found;
  if (IsDisplayNameTaken(terms)) return ERROR_DUPLICATE_SERVICE_NAME;
  return winapi::WriteTerms(place, terms);
}

bool IsListAlone(SECURITY_INFORMATION information) {
  if (information == DACL_SECURITY_INFORMATION) return true;
  SetLastError(information == 0 ? ERROR_INVALID_PARAMETER : ERROR_NOT_SUPPORTED);
  return false;
}

DWORD SetAccess(const winapi::ServiceHandle& handle, const std::optional<std::string>& access) {
  const winapi::ProfileLock lock(handle.place->TermsPath());
  if (!lock.IsHeld()) return ERROR_ACCESS_DENIED;
  InstalledService service;
  DWORD error = winapi::ReadService(*handle.place, service);
  if (error != ERROR_SUCCESS) return error;
  service.terms.access = access;
  error = winapi::WriteTerms(*handle.place, service.terms);
  if (error != ERROR_SUCCESS) return error;
  return handle.state->LetOthersStart(
      winapi::MayOthers(SERVICE_START, service.terms, service.owner));
}

}  // namespace

SC_HANDLE WINAPI OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access) {
  if (machine != nullptr && *machine != 0) return Fail<SC_HANDLE>(RPC_S_SERVER_UNAVAILABLE);
  if (database != nullptr && *database != 0 && FoldedName(database) != u"SERVICESACTIVE") {
    return Fail<SC_HANDLE>(ERROR_DATABASE_DOES_NOT_EXIST);
  }
  constexpr DWORD kAll = static_cast<DWORD>(GENERIC_WRITE) | GENERIC_ALL | MAXIMUM_ALLOWED;
  // Who has a folder for services may make them there; the disk decides about that.
  if ((access & kAll) != 0) access |= SC_MANAGER_ALL_ACCESS;
  return winapi::AddServiceHandle({access | SC_MANAGER_CONNECT, std::nullopt, std::nullopt});
}

SC_HANDLE WINAPI OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) {
  if (winapi::FindServiceHandle(manager, false, SC_MANAGER_CONNECT) == nullptr) return nullptr;
  InstalledService service;
  const DWORD error = winapi::FindService(TextOf(name), service);
  if (error != ERROR_SUCCESS) return Fail<SC_HANDLE>(error);
  // What a killed process had open doesn't keep a deleted service.
  if (service.terms.isDeleted && winapi::RemoveIfUnused(service.place)) {
    return Fail<SC_HANDLE>(ERROR_SERVICE_DOES_NOT_EXIST);
  }
  return Open(service, access);
}

SC_HANDLE WINAPI CreateServiceW(SC_HANDLE manager, LPCWSTR name, LPCWSTR displayName, DWORD access,
                                DWORD type, DWORD startType, DWORD errorControl, LPCWSTR path,
                                LPCWSTR group, LPDWORD tag, LPCWSTR dependencies, LPCWSTR account,
                                LPCWSTR) {
  if (winapi::FindServiceHandle(manager, false, SC_MANAGER_CREATE_SERVICE) == nullptr) {
    return nullptr;
  }
  const bool hasGroup = group != nullptr && *group != 0;
  if (hasGroup || tag != nullptr) return Fail<SC_HANDLE>(ERROR_NOT_SUPPORTED);
  if (account != nullptr) return Fail<SC_HANDLE>(ERROR_INVALID_SERVICE_ACCOUNT);
  ServiceTerms terms;
  terms.name = TextOf(name);
  terms.displayName = displayName == nullptr || *displayName == 0 ? terms.name : displayName;
  terms.program = TextOf(path);
  terms.startType = startType;
  terms.errorControl = errorControl;
  terms.needs = ListOf(dependencies);
  terms.access = winapi::FirstAccess(geteuid());
  const auto place = winapi::NewPlace(terms.name);
  if (!place) return nullptr;
  DWORD error = CheckTerms(type, startType, errorControl, terms);
  if (error == ERROR_SUCCESS) error = winapi::MakeServiceFolder(place->folder);
  if (error != ERROR_SUCCESS) return Fail<SC_HANDLE>(error);
  winapi::RemoveIfUnused(*place);
  const winapi::ProfileLock lock(place->TermsPath());
  if (!lock.IsHeld()) return Fail<SC_HANDLE>(ERROR_ACCESS_DENIED);
  error = Install(*place, terms);
  if (error != ERROR_SUCCESS) return Fail<SC_HANDLE>(error);
  return Open({*place, terms, geteuid()}, access);
}

BOOL WINAPI DeleteService(SC_HANDLE service) {
  const auto handle = winapi::FindServiceHandle(service, true, DELETE);
  if (handle == nullptr) return FALSE;
  const winapi::ProfileLock lock(handle->place->TermsPath());
  if (!lock.IsHeld()) return Fail(ERROR_ACCESS_DENIED);
  InstalledService found;
  DWORD error = winapi::ReadService(*handle->place, found);
  if (error != ERROR_SUCCESS) return Fail(error);
  if (found.terms.isDeleted) return Fail(ERROR_SERVICE_MARKED_FOR_DELETE);
  found.terms.isDeleted = true;
  error = winapi::WriteTerms(*handle->place, found.terms);
  return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

BOOL WINAPI QueryServiceConfigW(SC_HANDLE service, LPQUERY_SERVICE_CONFIGW config, DWORD size,
                                LPDWORD needed) {
  const auto handle = winapi::FindServiceHandle(service, true, SERVICE_QUERY_CONFIG);
  if (handle == nullptr) return FALSE;
  InstalledService found;
  const DWORD error = winapi::ReadService(*handle->place, found);
  if (error != ERROR_SUCCESS) return Fail(error);
  const ServiceTerms& terms = found.terms;
  winapi::PackedTexts packed(sizeof *config);
  const std::size_t program = packed.Add(terms.program);
  const std::size_t group = packed.Add(u"");
  const std::size_t account = packed.Add(u"LocalSystem");
  const std::size_t displayName = packed.Add(terms.displayName);
  const std::size_t needs = packed.Size();
  for (const std::u16string& need : terms.needs) packed.Add(need);
  packed.Add(u"");
  *needed = static_cast<DWORD>(packed.Size());
  if (size < packed.Size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
  packed.CopyTo(config);
  *config = {SERVICE_WIN32_OWN_PROCESS,
             terms.startType,
             terms.errorControl,
             winapi::TextAt(config, program),
             winapi::TextAt(config, group),
             0,
             winapi::TextAt(config, needs),
             winapi::TextAt(config, account),
             winapi::TextAt(config, displayName)};
  return TRUE;
}

BOOL WINAPI QueryServiceStatusEx(SC_HANDLE service, SC_STATUS_TYPE level, BYTE* buffer, DWORD size,
                                 LPDWORD needed) {
  if (level != SC_STATUS_PROCESS_INFO) return Fail(ERROR_INVALID_LEVEL);
  const auto handle = winapi::FindServiceHandle(service, true, SERVICE_QUERY_STATUS);
  if (handle == nullptr) return FALSE;
  *needed = sizeof(SERVICE_STATUS_PROCESS);
  if (size < sizeof(SERVICE_STATUS_PROCESS)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  const SERVICE_STATUS_PROCESS status = handle->state->Status();
  std::memcpy(buffer, &status, sizeof status);
  return TRUE;
}

BOOL WINAPI QueryServiceStatus(SC_HANDLE service, LPSERVICE_STATUS status) {
  SERVICE_STATUS_PROCESS found;
  DWORD needed;
  if (!QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&found),
                            sizeof found, &needed)) {
    return FALSE;
  }
  // The one begins with the other.
  std::memcpy(status, &found, sizeof *status);
  return TRUE;
}

BOOL WINAPI QueryServiceObjectSecurity(SC_HANDLE service, SECURITY_INFORMATION information,
                                       PSECURITY_DESCRIPTOR descriptor, DWORD size,
                                       LPDWORD needed) {
  if (!IsListAlone(information)) return FALSE;
  const auto handle = winapi::FindServiceHandle(service, true, READ_CONTROL);
  if (handle == nullptr) return FALSE;
  InstalledService found;
  const DWORD error = winapi::ReadService(*handle->place, found);
  if (error != ERROR_SUCCESS) return Fail(error);
  const std::string list = found.terms.access.value_or("");
  SECURITY_DESCRIPTOR_RELATIVE head = {};
  head.Revision = SECURITY_DESCRIPTOR_REVISION;
  head.Control = SE_SELF_RELATIVE | SE_DACL_PRESENT;
  if (found.terms.access) head.Dacl = sizeof head;
  *needed = static_cast<DWORD>(sizeof head + list.size());
  if (size < *needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(descriptor, &head, sizeof head);
  std::memcpy(static_cast<char*>(descriptor) + sizeof head, list.data(), list.size());
  return TRUE;
}

BOOL WINAPI SetServiceObjectSecurity(SC_HANDLE service, SECURITY_INFORMATION information,
                                     PSECURITY_DESCRIPTOR descriptor) {
  if (!IsListAlone(information)) return FALSE;
  const auto handle = winapi::FindServiceHandle(service, true, WRITE_DAC);
  if (handle == nullptr) return FALSE;
  BOOL isPresent = FALSE;
  BOOL isDefaulted = FALSE;
  PACL list = nullptr;
  if (!GetSecurityDescriptorDacl(descriptor, &isPresent, &list, &isDefaulted)) return FALSE;
  if (!isPresent) return Fail(ERROR_INVALID_SECURITY_DESCR);
  std::optional<std::string> access;
  if (list != nullptr) {
    access.emplace(reinterpret_cast<const char*>(list), list->AclSize);
    std::vector<winapi::AccessEntry> entries;
    if (!winapi::ReadAccessList(*access, entries)) return Fail(ERROR_INVALID_ACL);
  }
  const DWORD error = SetAccess(*handle, access);
  return error == ERROR_SUCCESS ? TRUE : Fail(error);
}
