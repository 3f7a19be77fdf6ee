// Identifiers of groups, and who is in them.
#include <windows.h>

#include <new>
#include <string_view>

#include "Fail.h"
#include "advapi32/Identifier.h"

namespace {

// As Windows has it: the numbers in use follow one another.
struct Identifier {
  BYTE revision;
  BYTE count;
  SID_IDENTIFIER_AUTHORITY authority;
  DWORD numbers[8];
};

constexpr BYTE kRevision = 1;

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
  const std::string_view id = winapi::IdentifierAt(sid);
  if (id.empty()) return Fail(ERROR_INVALID_SID);
  *isMember = winapi::IsMember(winapi::OwnAccount(), id);
  return TRUE;
}
