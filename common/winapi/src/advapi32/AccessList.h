// Lists of rights as blocks of bytes, in the form of Windows; internal to the layer.
#pragma once

#include <windef.h>

#include <string>
#include <string_view>
#include <vector>

#include "advapi32/Identifier.h"

namespace winapi {

struct AccessEntry {
  bool isDenial;
  DWORD rights;
  std::string identifier;
};

// False for bytes that aren't a list, or have entries of other kinds.
bool ReadAccessList(std::string_view bytes, std::vector<AccessEntry>& entries);
// Empty where the list doesn't fit into 65,535 bytes.
std::string FormAccessList(const std::vector<AccessEntry>& entries);

// What an account has of rights: each entry decides about those that none before it has.
DWORD AllowedRights(const std::vector<AccessEntry>& entries, const Account& account);

}  // namespace winapi
