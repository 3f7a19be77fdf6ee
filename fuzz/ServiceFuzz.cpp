// Files of services of any content: what can be opened can be asked, and is the same when its list
// of rights is set as it is; what can't is told and stays. Nothing is started.
#include <windows.h>
#include <winsvc.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/TempFolder.h"
#include "winapi_host.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

class Services {
 public:
  Services() { WinapiSetServiceFolder(m_folder.Wide().c_str()); }
  void Write(const std::string& terms, const std::string& state) const {
    m_folder.Write("FUZZ.service", terms);
    m_folder.Write("FUZZ.state", state);
  }
  std::string Terms() const { return m_folder.Read("FUZZ.service"); }
  SC_HANDLE Manager() const { return m_manager; }

 private:
  const TempFolder m_folder;
  const SC_HANDLE m_manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
};

std::vector<BYTE> Config(SC_HANDLE service) {
  DWORD needed = 0;
  Require(!QueryServiceConfigW(service, nullptr, 0, &needed));
  std::vector<BYTE> buffer(needed);
  auto* const config = reinterpret_cast<LPQUERY_SERVICE_CONFIGW>(buffer.data());
  Require(QueryServiceConfigW(service, config, needed, &needed));
  // What follows differs with the place of the buffer.
  return {buffer.begin() + sizeof *config, buffer.end()};
}

std::vector<BYTE> Descriptor(SC_HANDLE service) {
  DWORD needed = 0;
  Require(!QueryServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, nullptr, 0, &needed));
  std::vector<BYTE> buffer(needed);
  Require(QueryServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, buffer.data(), needed,
                                     &needed));
  return buffer;
}

void Look(SC_HANDLE service) {
  SERVICE_STATUS_PROCESS status;
  DWORD needed = 0;
  DWORD count = 0;
  Require(QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                               sizeof status, &needed));
  // Nobody holds its locks.
  Require(status.dwCurrentState == SERVICE_STOPPED && status.dwProcessId == 0);
  EnumDependentServicesW(service, SERVICE_STATE_ALL, nullptr, 0, &needed, &count);
  const std::vector<BYTE> config = Config(service);
  std::vector<BYTE> descriptor = Descriptor(service);
  if (!SetServiceObjectSecurity(service, DACL_SECURITY_INFORMATION, descriptor.data())) return;
  Require(Config(service) == config);
  Require(Descriptor(service) == descriptor);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Services services;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  // The terms, and behind a zero the state.
  const std::size_t end = bytes.find('\0');
  const std::string terms = bytes.substr(0, end);
  const std::string state = end == bytes.npos ? "" : bytes.substr(end + 1);
  services.Write(terms, state);
  const SC_HANDLE service = OpenServiceW(services.Manager(), u"fuzz", SERVICE_ALL_ACCESS);
  if (service == nullptr) {
    Require(services.Terms() == terms || services.Terms().empty());
    return 0;
  }
  Look(service);
  CloseServiceHandle(service);
  return 0;
}
