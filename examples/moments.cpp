// A moment on the clocks of Rome, through the night in which the hour is shown twice.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

namespace {

// The zone as the system tells it: one hour east of UTC, a second one from the last Sunday of March
// to the last of October.
_TIME_ZONE_INFORMATION Rome() {
  _TIME_ZONE_INFORMATION zone{};
  zone.Bias = -60;
  zone.DaylightBias = -60;
  zone.StandardDate = {0, 10, 0, 5, 3, 0, 0, 0};
  zone.DaylightDate = {0, 3, 0, 5, 2, 0, 0, 0};
  return zone;
}

void Show(kelp::CLocalTimeComputer& rome, std::uint64_t moment) {
  _SYSTEMTIME utc{};
  _SYSTEMTIME local{};
  kelp::FMsToSystemTime(moment, &utc);
  kelp::FMsToSystemTime(rome.Utc_to_Local(moment), &local);
  std::printf("%02d:%02d UTC is %02d:%02d in Rome%s\n", utc.wHour, utc.wMinute, local.wHour,
              local.wMinute, rome.IsUtcTimeInDaylight(moment) ? ", daylight saving" : "");
}

}  // namespace

int main() {
  kelp::CLocalTimeComputer rome;
  rome.SetTimeZoneInformation(Rome());

  _SYSTEMTIME night{2024, 10, 0, 27, 0, 30, 0, 0};
  const std::uint64_t moment = kelp::FSystemTimeToMs(&night);
  constexpr std::uint64_t kHour = 60 * 60 * 1000;
  Show(rome, moment);
  Show(rome, moment + kHour);

  std::printf("day %d of the year, %d days to the end of it\n", kelp::GetJulianDay(27, 10, 2024),
              kelp::ComputeDays({27, 10, 2024}, {31, 12, 2024}));
  std::printf("C time %llu\n", static_cast<unsigned long long>(kelp::UtcMsToCTime(moment)));
}
