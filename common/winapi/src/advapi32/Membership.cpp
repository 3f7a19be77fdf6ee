// Identifiers of groups, and who is in them.
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "Fail.h"

namespace {

// As Windows has it: the numbers in use follow one another.
struct Identifier {
  BYTE revision;
  BYTE count;
  SID_IDENTIFIER_AUTHORITY authority;
  DWORD numbers[8];
};

constexpr BYTE kRevision = 1;

bool IsAdministrators(const Identifier& id) {
  constexpr SID_IDENTIFIER_AUTHORITY kNt = SECURITY_NT_AUTHORITY;
  return id.count == 2 &&
         std::equal(std::begin(kNt.Value), std::end(kNt.Value), id.authority.Value) &&
         id.numbers[0] == SECURITY_BUILTIN_DOMAIN_RID && id.numbers[1] == DOMAIN_ALIAS_RID_ADMINS;
}

}  // namespace

BOOL WINAPI AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD first,
                                     DWORD second, DWORD third, DWORD fourth, DWORD fifth,
                                     DWORD sixth, DWORD seventh, DWORD eighth, PSID* sid) {
  if (count == 0 || count > 8) return Fail(ERROR_INVALID_PARAMETER);
  auto* const id = new (std::nothrow) Identifier{
      kRevision, count, *authority, {first, second, third, fourth, fifth, sixth, seventh, eighth}};
  if (id == nullptr) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  *sid = id;
  return TRUE;
}

PVOID WINAPI FreeSid(PSID sid) {
  delete static_cast<Identifier*>(sid);
  return nullptr;
}

BOOL WINAPI CheckTokenMembership(HANDLE token, PSID sid, BOOL* isMember) {
  if (token != nullptr) return Fail(ERROR_INVALID_HANDLE);
  if (sid == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *isMember = geteuid() == 0 && IsAdministrators(*static_cast<const Identifier*>(sid));
  return TRUE;
}
