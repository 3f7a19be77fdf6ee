#include "advapi32/ServiceTerms.h"

#include <winerror.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>

#include "advapi32/AccessList.h"
#include "advapi32/EscapedText.h"
#include "kernel32/PathName.h"

namespace winapi {
namespace {

constexpr std::string_view kHead = "winapi service 1\n";
constexpr std::string_view kDeleted = "deleted";
constexpr DWORD kStandardRead = SERVICE_QUERY_CONFIG | SERVICE_QUERY_STATUS |
                                SERVICE_ENUMERATE_DEPENDENTS | SERVICE_INTERROGATE | READ_CONTROL;

std::string Line(const char* key, std::u16string_view text) {
  return std::string(key) + '=' + Escape(ToUtf8(text)) + '\n';
}
std::string Line(const char* key, DWORD number) {
  return std::string(key) + '=' + std::to_string(number) + '\n';
}

bool ReadText(std::string_view value, std::u16string& text) {
  const std::string line = std::string(value) + '\n';
  std::string_view rest = line;
  const auto taken = TakeEscaped(rest, '\n');
  // A terminator has no place in a text of Windows.
  if (!taken || taken->find('\0') != std::string::npos) return false;
  text = FromUtf8(*taken);
  return true;
}

bool ReadNumber(std::string_view value, DWORD& number) {
  const char* const end = value.data() + value.size();
  const auto [behind, error] = std::from_chars(value.data(), end, number);
  return error == std::errc() && behind == end;
}

bool ReadAccess(std::string_view value, std::optional<std::string>& access) {
  const auto bytes = FromHex(value);
  std::vector<AccessEntry> entries;
  if (!bytes || (!bytes->empty() && !ReadAccessList(*bytes, entries))) return false;
  if (bytes->empty()) {
    access.reset();
  } else {
    access = *bytes;
  }
  return true;
}

bool ReadNeed(std::string_view value, std::vector<std::u16string>& needs) {
  return ReadText(value, needs.emplace_back()) && !needs.back().empty();
}

struct Key {
  std::string_view name;
  bool (*read)(std::string_view value, ServiceTerms& terms);
};
constexpr Key kKeys[] = {
    {"name", [](std::string_view v, ServiceTerms& t) { return ReadText(v, t.name); }},
    {"display", [](std::string_view v, ServiceTerms& t) { return ReadText(v, t.displayName); }},
    {"program", [](std::string_view v, ServiceTerms& t) { return ReadText(v, t.program); }},
    {"start", [](std::string_view v, ServiceTerms& t) { return ReadNumber(v, t.startType); }},
    {"error", [](std::string_view v, ServiceTerms& t) { return ReadNumber(v, t.errorControl); }},
    {"needs", [](std::string_view v, ServiceTerms& t) { return ReadNeed(v, t.needs); }},
    {"access", [](std::string_view v, ServiceTerms& t) { return ReadAccess(v, t.access); }},
};

bool ReadLine(std::string_view line, ServiceTerms& terms) {
  if (line == kDeleted) {
    terms.isDeleted = true;
    return true;
  }
  const std::size_t end = line.find('=');
  if (end == std::string_view::npos) return false;
  const auto key = std::find_if(std::begin(kKeys), std::end(kKeys),
                                [&](const Key& k) { return k.name == line.substr(0, end); });
  return key != std::end(kKeys) && key->read(line.substr(end + 1), terms);
}

}  // namespace

std::string FormatTerms(const ServiceTerms& terms) {
  std::string text(kHead);
  text += Line("name", terms.name);
  text += Line("display", terms.displayName);
  text += Line("program", terms.program);
  text += Line("start", terms.startType);
  text += Line("error", terms.errorControl);
  for (const std::u16string& need : terms.needs) text += Line("needs", need);
  text += "access=" + ToHex(terms.access.value_or("")) + '\n';
  if (terms.isDeleted) text += std::string(kDeleted) + '\n';
  return text;
}

std::optional<ServiceTerms> ParseTerms(std::string_view text) {
  if (!text.starts_with(kHead) || !text.ends_with('\n')) return std::nullopt;
  text.remove_prefix(kHead.size());
  ServiceTerms terms;
  // A file without the line lets nobody in.
  terms.access = FormAccessList({});
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    if (!ReadLine(text.substr(0, end), terms)) return std::nullopt;
    text.remove_prefix(end + 1);
  }
  if (terms.name.empty() || terms.program.empty()) return std::nullopt;
  return terms;
}

DWORD StartRefusal(const ServiceTerms& terms) {
  if (terms.isDeleted) return ERROR_SERVICE_MARKED_FOR_DELETE;
  return terms.startType == SERVICE_DISABLED ? ERROR_SERVICE_DISABLED : ERROR_SUCCESS;
}

std::string FirstAccess(uid_t owner) {
  return FormAccessList({{false, SERVICE_ALL_ACCESS, IdentifierOfUser(owner)},
                         {false, SERVICE_ALL_ACCESS, AdministratorsIdentifier()},
                         {false, kStandardRead, AuthenticatedIdentifier()}});
}

DWORD RightsOf(const Account& account, const ServiceTerms& terms) {
  if (!terms.access) return SERVICE_ALL_ACCESS;
  std::vector<AccessEntry> entries;
  if (!ReadAccessList(*terms.access, entries)) return 0;
  for (AccessEntry& entry : entries) entry.rights = OfServices(entry.rights);
  return AllowedRights(entries, account);
}

bool MayOthers(DWORD right, const ServiceTerms& terms, uid_t owner) {
  if (!terms.access) return true;
  std::vector<AccessEntry> entries;
  ReadAccessList(*terms.access, entries);
  return std::any_of(entries.begin(), entries.end(), [&](const AccessEntry& entry) {
    const bool isOfOwner = entry.identifier == IdentifierOfUser(owner) ||
                           entry.identifier == AdministratorsIdentifier();
    return !isOfOwner && !entry.isDenial && (OfServices(entry.rights) & right) != 0;
  });
}

DWORD OfServices(DWORD rights) {
  constexpr struct {
    DWORD any, ofService;
  } kRights[] = {{static_cast<DWORD>(GENERIC_READ), kStandardRead & ~SERVICE_INTERROGATE},
                 {GENERIC_WRITE, SERVICE_CHANGE_CONFIG | READ_CONTROL},
                 {GENERIC_EXECUTE, SERVICE_START | SERVICE_STOP | SERVICE_PAUSE_CONTINUE |
                                       SERVICE_USER_DEFINED_CONTROL | READ_CONTROL},
                 {GENERIC_ALL, SERVICE_ALL_ACCESS}};
  DWORD mapped = rights & SERVICE_ALL_ACCESS;
  for (const auto& right : kRights) {
    if ((rights & right.any) != 0) mapped |= right.ofService;
  }
  return mapped;
}

}  // namespace winapi
