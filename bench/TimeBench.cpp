// Local time beside the zones of the date library, of ICU and of the C library.
#include <date/tz.h>
#include <unicode/basictz.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <random>

#include "bench/BenchTable.h"
#include "kelp0lang/LocalTimeComputer.h"
#include "kelp0lang/UtcTime.h"

namespace bench {
namespace {

constexpr const char* kZone = "Europe/Rome";
constexpr const char* kZoneRule = "CET-1CEST,M3.5.0,M10.5.0/3";

using Ms = std::chrono::milliseconds;

// Since 1970: 60 years from 1980 on.
std::vector<std::int64_t> Moments() {
  std::mt19937_64 random(61);
  std::uniform_int_distribution<std::int64_t> moments(315'532'800'000, 2'208'988'799'999);
  std::vector<std::int64_t> result(4096);
  for (auto& moment : result) moment = moments(random);
  return result;
}

template <class Convert>
auto Each(const std::vector<std::int64_t>& moments, Convert convert) {
  std::vector<decltype(convert(0))> result;
  for (const std::int64_t moment : moments) result.push_back(convert(moment));
  return result;
}

_TIME_ZONE_INFORMATION Rome() {
  _TIME_ZONE_INFORMATION zone = {};
  zone.Bias = -60;
  zone.DaylightBias = -60;
  zone.DaylightDate = {0, 3, 0, 5, 2, 0, 0, 0};
  zone.StandardDate = {0, 10, 0, 5, 3, 0, 0, 0};
  return zone;
}

std::uint64_t ToUtcMs(std::int64_t moment) {
  return kelp::CTimeToUtcMs(0) + static_cast<std::uint64_t>(moment);
}

// Fields of the local clock, as mktime takes them.
tm ToFields(std::int64_t moment) {
  const auto seconds = static_cast<std::time_t>(moment / 1000);
  tm fields;
  gmtime_r(&seconds, &fields);
  fields.tm_isdst = -1;
  return fields;
}

UDate LocalOfIcu(const icu::TimeZone& zone, UDate utc) {
  int32_t raw, daylight;
  UErrorCode status = U_ZERO_ERROR;
  zone.getOffset(utc, false, raw, daylight, status);
  return utc + raw + daylight;
}

UDate UtcOfIcu(const icu::BasicTimeZone& zone, UDate local) {
  int32_t raw, daylight;
  UErrorCode status = U_ZERO_ERROR;
  zone.getOffsetFromLocal(local, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, raw, daylight, status);
  return local - raw - daylight;
}

}  // namespace

void AddTimeWorks() {
  const auto computer = std::make_shared<kelp::CLocalTimeComputer>();
  computer->SetTimeZoneInformation(Rome());
  const date::time_zone* const dateZone = date::locate_zone(kZone);
  const std::shared_ptr<icu::BasicTimeZone> icuZone(
      dynamic_cast<icu::BasicTimeZone*>(icu::TimeZone::createTimeZone(kZone)));
  setenv("TZ", kZoneRule, 1);
  tzset();

  const auto moments = Moments();
  const auto ours = Each(moments, ToUtcMs);
  const auto forIcu = Each(moments, [](std::int64_t ms) { return static_cast<UDate>(ms); });
  Compare("Utc_to_Local",
          Over(ours, [computer](std::uint64_t utc) { return computer->Utc_to_Local(utc); }),
          {{"date::time_zone", 0.5,
            Over(Each(moments, [](std::int64_t ms) { return date::sys_time<Ms>(Ms(ms)); }),
                 [dateZone](date::sys_time<Ms> utc) { return dateZone->to_local(utc); })},
           {"icu::TimeZone", 0.5,
            Over(forIcu, [icuZone](UDate utc) { return LocalOfIcu(*icuZone, utc); })},
           {"localtime_r", 0.5,
            Over(Each(moments, [](std::int64_t ms) { return static_cast<std::time_t>(ms / 1000); }),
                 [](std::time_t utc) {
                   tm fields;
                   localtime_r(&utc, &fields);
                   return fields;
                 })}});
  Compare("Local_to_Utc",
          Over(ours, [computer](std::uint64_t local) { return computer->Local_to_Utc(local); }),
          {{"date::time_zone", 0.5,
            Over(Each(moments, [](std::int64_t ms) { return date::local_time<Ms>(Ms(ms)); }),
                 [dateZone](date::local_time<Ms> local) {
                   return dateZone->to_sys(local, date::choose::earliest);
                 })},
           {"icu::TimeZone", 0.5,
            Over(forIcu, [icuZone](UDate local) { return UtcOfIcu(*icuZone, local); })},
           {"mktime", 0.5,
            Over(Each(moments, ToFields), [](tm fields) { return std::mktime(&fields); })}});
}

}  // namespace bench
