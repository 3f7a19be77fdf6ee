#include "kelp0lang/SystemQuery.h"

#include <windows.h>
// It needs the one before.
#include <psapi.h>
#include <tchar.h>

#include <algorithm>
#include <cstddef>

#include "kelptext/WideChar.h"

namespace {

constexpr std::size_t kFirstRoom = 1024;
constexpr std::size_t kMostRoom = 131'072;  // ids

struct Prefix {
  const WChar* text;
  std::size_t length;
};
constexpr Prefix kOffice[] = {{KTEXT("Ostrand"), 7}, {KTEXT("Talvera"), 7}};
constexpr Prefix kField[] = {{KTEXT("Brevik"), 6}, {KTEXT("Lumen"), 5}};

// Empty where they can't be had.
std::vector<DWORD> ProcessIds() {
  std::vector<DWORD> ids(kFirstRoom);
  for (;;) {
    const auto size = static_cast<DWORD>(ids.size() * sizeof(DWORD));
    DWORD used = 0;
    if (!EnumProcesses(ids.data(), size, &used)) return {};
    if (used < size || ids.size() >= kMostRoom) {
      ids.resize(std::min<std::size_t>(used, size) / sizeof(DWORD));
      return ids;
    }
    ids.resize(2 * ids.size());
  }
}

template <std::size_t count>
bool BeginsWithOne(const WChar* name, const Prefix (&prefixes)[count]) {
  return std::any_of(prefixes, prefixes + count, [name](const Prefix& prefix) {
    return _wcsnicmp(name, prefix.text, prefix.length) == 0;
  });
}

bool IsOfFamily(HANDLE process, bool office, bool field) {
  HMODULE program = nullptr;
  DWORD needed = 0;
  WChar name[260] = {};
  if (!EnumProcessModules(process, &program, sizeof program, &needed)) return false;
  if (GetModuleBaseNameW(process, program, name, 260) == 0) return false;
  return (office && BeginsWithOne(name, kOffice)) || (field && BeginsWithOne(name, kField));
}

}  // namespace

bool GetOSVersion(unsigned long& major, unsigned long& minor, unsigned long& servicePack,
                  bool& isServer) {
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof info;
  const bool known = GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)) != FALSE;
  if (!known) info = {};
  major = info.dwMajorVersion;
  minor = info.dwMinorVersion;
  servicePack = info.wServicePackMajor;
  isServer = known && info.wProductType != VER_NT_WORKSTATION;
  return known;
}

bool GetOSVersion(unsigned long& major) {
  unsigned long minor, servicePack;
  bool isServer;
  return GetOSVersion(major, minor, servicePack, isServer);
}

bool IsAdmin() {
  SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
  PSID administrators = nullptr;
  if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS,
                                0, 0, 0, 0, 0, 0, &administrators)) {
    return false;
  }
  BOOL isMember = FALSE;
  const bool known = CheckTokenMembership(nullptr, administrators, &isMember) != FALSE;
  FreeSid(administrators);
  return known && isMember != FALSE;
}

void GetRunningInstances(std::vector<int>& ids, bool office, bool field) {
  if (!office && !field) return;
  for (const DWORD id : ProcessIds()) {
    if (id == GetCurrentProcessId()) continue;
    const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id);
    if (process == nullptr) continue;
    if (IsOfFamily(process, office, field)) ids.push_back(static_cast<int>(id));
    CloseHandle(process);
  }
}
