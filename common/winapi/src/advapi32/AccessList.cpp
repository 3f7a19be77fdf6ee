#include "advapi32/AccessList.h"

#include <winnt.h>

#include <cstddef>
#include <cstring>

namespace winapi {
namespace {

constexpr std::size_t kEntryHead = offsetof(ACCESS_ALLOWED_ACE, SidStart);

template <class Record>
std::string_view BytesOf(const Record& record, std::size_t size = sizeof(Record)) {
  return {reinterpret_cast<const char*>(&record), size};
}

// Takes an entry off the rest of a list.
bool TakeEntry(std::string_view& rest, AccessEntry& entry) {
  ACCESS_ALLOWED_ACE head = {};
  if (rest.size() < kEntryHead) return false;
  std::memcpy(&head, rest.data(), kEntryHead);
  const std::size_t size = head.Header.AceSize;
  if (size < kEntryHead || size > rest.size()) return false;
  if (head.Header.AceType > ACCESS_DENIED_ACE_TYPE) return false;
  const std::string_view identifier = IdentifierAt(rest.substr(kEntryHead, size - kEntryHead));
  if (identifier.empty()) return false;
  entry = {head.Header.AceType == ACCESS_DENIED_ACE_TYPE, head.Mask, std::string(identifier)};
  rest.remove_prefix(size);
  return true;
}

}  // namespace

bool ReadAccessList(std::string_view bytes, std::vector<AccessEntry>& entries) {
  ACL head;
  if (bytes.size() < sizeof head) return false;
  std::memcpy(&head, bytes.data(), sizeof head);
  if (head.AclSize < sizeof head || head.AclSize > bytes.size()) return false;
  std::string_view rest = bytes.substr(sizeof head, head.AclSize - sizeof head);
  for (WORD i = 0; i < head.AceCount; ++i) {
    AccessEntry entry;
    if (!TakeEntry(rest, entry)) return false;
    entries.push_back(entry);
  }
  return true;
}

std::string FormAccessList(const std::vector<AccessEntry>& entries) {
  std::string bytes;
  for (const AccessEntry& entry : entries) {
    ACCESS_ALLOWED_ACE head = {};
    head.Header.AceType = entry.isDenial ? ACCESS_DENIED_ACE_TYPE : ACCESS_ALLOWED_ACE_TYPE;
    head.Header.AceSize = static_cast<WORD>(kEntryHead + entry.identifier.size());
    head.Mask = entry.rights;
    bytes += BytesOf(head, kEntryHead);
    bytes += entry.identifier;
  }
  ACL head = {ACL_REVISION, 0, 0, static_cast<WORD>(entries.size()), 0};
  if (bytes.size() + sizeof head > 0xFFFF) return {};
  head.AclSize = static_cast<WORD>(bytes.size() + sizeof head);
  return std::string(BytesOf(head)) + bytes;
}

DWORD AllowedRights(const std::vector<AccessEntry>& entries, const Account& account) {
  DWORD allowed = 0;
  DWORD denied = 0;
  for (const AccessEntry& entry : entries) {
    if (!IsMember(account, entry.identifier)) continue;
    if (entry.isDenial) {
      denied |= entry.rights & ~allowed;
    } else {
      allowed |= entry.rights & ~denied;
    }
  }
  return allowed;
}

}  // namespace winapi
