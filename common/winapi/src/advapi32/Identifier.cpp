#include "advapi32/Identifier.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "kernel32/PathName.h"

namespace winapi {
namespace {

constexpr BYTE kUnixAuthority = 22;
constexpr std::size_t kHead = 8;  // revision, count, six bytes of the authority
constexpr BYTE kMostNumbers = 15;

std::string IdentifierOfGroup(gid_t group) {
  return MakeIdentifier(kUnixAuthority, {2, group});
}

}  // namespace

std::string MakeIdentifier(BYTE authority, std::initializer_list<DWORD> numbers) {
  std::string bytes = {1, static_cast<char>(numbers.size()), 0, 0, 0, 0,
                       0, static_cast<char>(authority)};
  for (const DWORD number : numbers) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  return bytes;
}

std::string IdentifierOfUser(uid_t user) {
  return MakeIdentifier(kUnixAuthority, {1, user});
}

std::string IdentifierOfName(std::u16string_view name) {
  const std::u16string folded = FoldedName(name);
  if (folded == u"EVERYONE") return EveryoneIdentifier();
  if (folded == u"ADMINISTRATORS") return AdministratorsIdentifier();
  const std::string narrow = ToUtf8(name);
  std::vector<char> buffer(65536);
  passwd user;
  passwd* foundUser = nullptr;
  getpwnam_r(narrow.c_str(), &user, buffer.data(), buffer.size(), &foundUser);
  if (foundUser != nullptr) return IdentifierOfUser(user.pw_uid);
  group entry;
  group* foundGroup = nullptr;
  getgrnam_r(narrow.c_str(), &entry, buffer.data(), buffer.size(), &foundGroup);
  return foundGroup == nullptr ? std::string() : IdentifierOfGroup(entry.gr_gid);
}

std::string_view IdentifierAt(std::string_view bytes) {
  if (bytes.size() < kHead || bytes[0] != 1) return {};
  const auto count = static_cast<BYTE>(bytes[1]);
  const std::size_t size = kHead + count * sizeof(DWORD);
  if (count > kMostNumbers || bytes.size() < size) return {};
  return bytes.substr(0, size);
}

std::string_view IdentifierAt(const void* identifier) {
  const auto* const bytes = static_cast<const char*>(identifier);
  return IdentifierAt({bytes, kHead + static_cast<BYTE>(bytes[1]) * sizeof(DWORD)});
}

Account OwnAccount() {
  Account account = {geteuid(), {getegid()}};
  const int count = getgroups(0, nullptr);
  if (count > 0) {
    account.groups.resize(static_cast<std::size_t>(count) + 1, getegid());
    account.groups.resize(
        static_cast<std::size_t>(std::max(getgroups(count, account.groups.data() + 1), 0)) + 1);
  }
  return account;
}

Account AccountOf(uid_t user) {
  std::vector<char> buffer(65536);
  passwd entry;
  passwd* found = nullptr;
  getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
  if (found == nullptr) return {user, {}};
  int count = 65536;  // NGROUPS_MAX
  std::vector<gid_t> groups(static_cast<std::size_t>(count));
  getgrouplist(entry.pw_name, entry.pw_gid, groups.data(), &count);
  groups.resize(static_cast<std::size_t>(count));
  return {user, groups};
}

bool IsMember(const Account& account, std::string_view identifier) {
  if (identifier == EveryoneIdentifier() || identifier == AuthenticatedIdentifier()) return true;
  if (identifier == AdministratorsIdentifier() || identifier == MakeIdentifier(5, {18})) {
    return account.user == 0;
  }
  return identifier == IdentifierOfUser(account.user) ||
         std::any_of(account.groups.begin(), account.groups.end(),
                     [&](gid_t group) { return identifier == IdentifierOfGroup(group); });
}

}  // namespace winapi
