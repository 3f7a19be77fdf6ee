// Starting and controlling services.
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "Fail.h"
#include "advapi32/PackedTexts.h"
#include "advapi32/ServiceHandle.h"
#include "advapi32/ServiceMessages.h"
#include "advapi32/ServiceStart.h"
#include "kernel32/PathName.h"

namespace {

using winapi::InstalledService;

// What comes before it may have to be waited for as well.
constexpr int kReplyLimit = 2 * winapi::kAnswerLimit / 1000;  // seconds

SERVICE_STATUS WithoutProcess(const SERVICE_STATUS_PROCESS& status) {
  SERVICE_STATUS record;
  std::memcpy(&record, &status, sizeof record);
  return record;
}

bool IsPending(DWORD state) {
  return state == SERVICE_START_PENDING || state == SERVICE_STOP_PENDING;
}

// Not open where nobody listens.
winapi::Descriptor ConnectTo(const winapi::ServiceRecord& record) {
  winapi::Descriptor connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  if (connection < 0) return connection;
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::size_t length = std::strlen(record.address);
  std::memcpy(address.sun_path + 1, record.address, length);
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
  const timeval limit = {kReplyLimit, 0};
  setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  if (connect(connection, reinterpret_cast<const sockaddr*>(&address), size) != 0) {
    return winapi::Descriptor();
  }
  ucred peer = {};
  socklen_t peerSize = sizeof peer;
  getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &peerSize);
  // The name of one that has ended may be somebody else's by now.
  return static_cast<DWORD>(peer.pid) == record.supervisor ? std::move(connection)
                                                           : winapi::Descriptor();
}

winapi::ControlAnswer Ask(const winapi::ServiceState& state, DWORD control) {
  winapi::ControlAnswer answer;
  const winapi::Descriptor connection = ConnectTo(state.Read());
  if (connection >= 0 && send(connection, &control, sizeof control, MSG_NOSIGNAL) > 0) {
    const ssize_t count = recv(connection, &answer, sizeof answer, 0);
    if (count == sizeof answer) return answer;
    if (count < 0) return {ERROR_SERVICE_REQUEST_TIMEOUT, {}};
  }
  answer.status = WithoutProcess(state.Status());
  answer.error = answer.status.dwCurrentState == SERVICE_STOPPED ? ERROR_SERVICE_NOT_ACTIVE
                                                                 : ERROR_SERVICE_CANNOT_ACCEPT_CTRL;
  return answer;
}

bool HasActiveDependents(const winapi::ServicePlace& place) {
  InstalledService service;
  if (winapi::ReadService(place, service) != ERROR_SUCCESS) return false;
  const auto dependents = winapi::DependentsOf(service.terms);
  return std::any_of(dependents.begin(), dependents.end(), [](const InstalledService& other) {
    return winapi::StatusOf(other.place).dwCurrentState != SERVICE_STOPPED;
  });
}

winapi::ControlAnswer Control(const winapi::ServiceHandle& handle, DWORD control) {
  const SERVICE_STATUS status = WithoutProcess(handle.state->Status());
  if (status.dwCurrentState == SERVICE_STOPPED) return {ERROR_SERVICE_NOT_ACTIVE, status};
  if (IsPending(status.dwCurrentState)) return {ERROR_SERVICE_CANNOT_ACCEPT_CTRL, status};
  if (control == SERVICE_CONTROL_STOP && HasActiveDependents(*handle.place)) {
    return {ERROR_DEPENDENT_SERVICES_RUNNING, status};
  }
  return Ask(*handle.state, control);
}

bool IsWanted(DWORD state, DWORD states) {
  return (states & (state == SERVICE_STOPPED ? SERVICE_INACTIVE : SERVICE_ACTIVE)) != 0;
}

struct Dependent {
  std::u16string name;
  std::u16string displayName;
  SERVICE_STATUS status;
  std::size_t Size() const {
    return sizeof(ENUM_SERVICE_STATUSW) + (name.size() + displayName.size() + 2) * sizeof(char16_t);
  }
};

std::vector<Dependent> Dependents(const winapi::ServiceTerms& terms, DWORD states) {
  std::vector<Dependent> found;
  for (const InstalledService& service : winapi::DependentsOf(terms)) {
    const SERVICE_STATUS status = WithoutProcess(winapi::StatusOf(service.place));
    if (!IsWanted(status.dwCurrentState, states)) continue;
    found.push_back({service.terms.name, service.terms.displayName, status});
  }
  return found;
}

void Give(const std::vector<Dependent>& dependents, std::size_t count,
          LPENUM_SERVICE_STATUSW services) {
  winapi::PackedTexts packed(count * sizeof *services);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t name = packed.Add(dependents[i].name);
    const std::size_t displayName = packed.Add(dependents[i].displayName);
    services[i] = {winapi::TextAt(services, name), winapi::TextAt(services, displayName),
                   dependents[i].status};
  }
  if (count > 0) packed.CopyTo(services);
}

}  // namespace

BOOL WINAPI StartServiceW(SC_HANDLE service, DWORD count, LPCWSTR* arguments) {
  const auto handle = winapi::FindServiceHandle(service, true, SERVICE_START);
  if (handle == nullptr) return FALSE;
  std::vector<std::string> narrow;
  std::size_t size = 0;
  for (DWORD i = 0; i < count; ++i) {
    narrow.push_back(ToUtf8(arguments[i]));
    size += narrow.back().size() + 1;
  }
  if (size > winapi::kMostArguments) return Fail(ERROR_INVALID_PARAMETER);
  InstalledService found;
  DWORD error = winapi::ReadService(*handle->place, found);
  if (error == ERROR_SUCCESS) error = winapi::StartWithNeeds(found, narrow);
  return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

BOOL WINAPI ControlService(SC_HANDLE service, DWORD control, LPSERVICE_STATUS status) {
  const winapi::ControlRule* const rule = winapi::RuleOf(control);
  if (rule == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  const auto handle = winapi::FindServiceHandle(service, true, rule->right);
  if (handle == nullptr) return FALSE;
  const winapi::ControlAnswer answer = Control(*handle, control);
  constexpr DWORD kWithStatus[] = {ERROR_SUCCESS, ERROR_SERVICE_NOT_ACTIVE,
                                   ERROR_SERVICE_CANNOT_ACCEPT_CTRL, ERROR_INVALID_SERVICE_CONTROL};
  if (std::find(std::begin(kWithStatus), std::end(kWithStatus), answer.error) !=
      std::end(kWithStatus)) {
    *status = answer.status;
  }
  return answer.error == ERROR_SUCCESS ? TRUE : Fail(answer.error);
}

BOOL WINAPI EnumDependentServicesW(SC_HANDLE service, DWORD states, LPENUM_SERVICE_STATUSW services,
                                   DWORD size, LPDWORD needed, LPDWORD count) {
  if (states == 0 || (states & ~SERVICE_STATE_ALL) != 0) return Fail(ERROR_INVALID_PARAMETER);
  const auto handle = winapi::FindServiceHandle(service, true, SERVICE_ENUMERATE_DEPENDENTS);
  if (handle == nullptr) return FALSE;
  InstalledService found;
  const DWORD error = winapi::ReadService(*handle->place, found);
  if (error != ERROR_SUCCESS) return Fail(error);
  const std::vector<Dependent> dependents = Dependents(found.terms, states);
  std::size_t room = services == nullptr ? 0 : size;
  std::size_t given = 0;
  while (given < dependents.size() && dependents[given].Size() <= room) {
    room -= dependents[given++].Size();
  }
  Give(dependents, given, services);
  std::size_t missing = 0;
  for (std::size_t i = given; i < dependents.size(); ++i) missing += dependents[i].Size();
  *needed = static_cast<DWORD>(missing);
  *count = static_cast<DWORD>(given);
  return missing == 0 ? TRUE : Fail(ERROR_MORE_DATA);
}
