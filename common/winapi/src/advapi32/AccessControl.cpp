// Lists of rights from entries.
#include <aclapi.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "advapi32/AccessList.h"

namespace {

using winapi::AccessEntry;
using Entries = std::vector<AccessEntry>;

std::string IdentifierOf(const TRUSTEE_W& trustee) {
  if (trustee.pMultipleTrustee != nullptr || trustee.ptstrName == nullptr) return {};
  if (trustee.TrusteeForm == TRUSTEE_IS_NAME) return winapi::IdentifierOfName(trustee.ptstrName);
  if (trustee.TrusteeForm != TRUSTEE_IS_SID) return {};
  return std::string(winapi::IdentifierAt(static_cast<const void*>(trustee.ptstrName)));
}

// Denials are before permissions.
void Insert(Entries& list, const AccessEntry& entry) {
  const auto isPermission = [](const AccessEntry& old) { return !old.isDenial; };
  list.insert(entry.isDenial ? list.begin() : std::find_if(list.begin(), list.end(), isPermission),
              entry);
}

DWORD Apply(Entries& list, const EXPLICIT_ACCESS_W& wanted) {
  const std::string identifier = IdentifierOf(wanted.Trustee);
  if (identifier.empty()) return ERROR_NONE_MAPPED;
  const auto isPermission = [&](const AccessEntry& entry) {
    return entry.identifier == identifier && !entry.isDenial;
  };
  const DWORD rights = wanted.grfAccessPermissions;
  switch (wanted.grfAccessMode) {
    case GRANT_ACCESS: {
      const auto old = std::find_if(list.begin(), list.end(), isPermission);
      if (old == list.end()) {
        Insert(list, {false, rights, identifier});
      } else {
        old->rights |= rights;
      }
      return ERROR_SUCCESS;
    }
    case SET_ACCESS:
    case REVOKE_ACCESS:
      std::erase_if(list, [&](const AccessEntry& entry) { return entry.identifier == identifier; });
      if (wanted.grfAccessMode == SET_ACCESS) Insert(list, {false, rights, identifier});
      return ERROR_SUCCESS;
    case DENY_ACCESS:
      Insert(list, {true, rights, identifier});
      return ERROR_SUCCESS;
    default:
      return ERROR_INVALID_PARAMETER;
  }
}

}  // namespace

void WINAPI BuildExplicitAccessWithNameW(PEXPLICIT_ACCESS_W entry, LPWSTR name, DWORD rights,
                                         ACCESS_MODE mode, DWORD inheritance) {
  *entry = {rights,
            mode,
            inheritance,
            {nullptr, NO_MULTIPLE_TRUSTEE, TRUSTEE_IS_NAME, TRUSTEE_IS_UNKNOWN, name}};
}

DWORD WINAPI SetEntriesInAclW(ULONG count, PEXPLICIT_ACCESS_W entries, PACL old, PACL* list) {
  if (list == nullptr) return ERROR_INVALID_PARAMETER;
  *list = nullptr;
  Entries result;
  if (old != nullptr &&
      !winapi::ReadAccessList({reinterpret_cast<const char*>(old), old->AclSize}, result)) {
    return ERROR_INVALID_ACL;
  }
  // The last comes first, so that the first stands in front in the end.
  for (ULONG i = count; i > 0; --i) {
    const DWORD error = Apply(result, entries[i - 1]);
    if (error != ERROR_SUCCESS) return error;
  }
  const std::string bytes = winapi::FormAccessList(result);
  if (bytes.empty()) return ERROR_INVALID_ACL;
  auto* const block = static_cast<PACL>(std::malloc(bytes.size()));
  if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
  std::memcpy(block, bytes.data(), bytes.size());
  *list = block;
  return ERROR_SUCCESS;
}
