// Identifiers of users and groups in the form of Windows, and who is meant by them; internal to the
// layer.
//
// The users and groups of this system have those that network file systems give them too: (22, 1,
// number) and (22, 2, number).
#pragma once

#include <sys/types.h>
#include <windef.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace winapi {

// The numbers behind an authority.
std::string MakeIdentifier(BYTE authority, std::initializer_list<DWORD> numbers);
std::string IdentifierOfUser(uid_t user);
inline std::string EveryoneIdentifier() {
  return MakeIdentifier(1, {0});
}
inline std::string AuthenticatedIdentifier() {
  return MakeIdentifier(5, {11});
}
inline std::string AdministratorsIdentifier() {
  return MakeIdentifier(5, {32, 544});
}
// Of everyone, the administrators, or a user or group of this system; empty where nobody has the
// name.
std::string IdentifierOfName(std::u16string_view name);
// The identifier that bytes begin with; empty where they aren't one.
std::string_view IdentifierAt(std::string_view bytes);
// One that a caller has handed over, which has the room that it says.
std::string_view IdentifierAt(const void* identifier);

// A user of this system.
struct Account {
  uid_t user;
  std::vector<gid_t> groups;
};
Account OwnAccount();
Account AccountOf(uid_t user);
bool IsMember(const Account& account, std::string_view identifier);

}  // namespace winapi
