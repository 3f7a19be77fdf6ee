// The machine's time zone as a record.
#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include "kernel32/ZoneFile.h"
#include "kernel32/ZoneRecord.h"

namespace {

constexpr const char* kZoneOfMachine = "/etc/localtime";

// What TZ says: a file, by its path or its name in the folder of zones, or a rule.
ZoneRule RuleOfText(std::string_view text, const ZoneNow& now) {
  ZoneRule utc{{"UTC", std::chrono::seconds(0)}, {}};
  if (text.starts_with(':')) text.remove_prefix(1);
  if (text.empty()) return utc;
  std::string path(text);
  if (path[0] != '/') path = ZoneFolder() + '/' + path;
  // Its changes are as the C library reads them.
  const std::optional<std::string> lastLine = LastLineOfZoneFile(path);
  return lastLine ? RuleOfFile(*lastLine, now) : ParseZoneRule(text).value_or(utc);
}

ZoneRule RuleOfMachine(const ZoneNow& now) {
  const char* const text = std::getenv("TZ");
  return RuleOfText(text != nullptr ? text : kZoneOfMachine, now);
}

}  // namespace

DWORD WINAPI GetTimeZoneInformation(LPTIME_ZONE_INFORMATION zone) {
  tzset();
  const ZoneNow now(&LocalPeriodAt);
  return ToRecord(RuleOfMachine(now), now, *zone);
}
