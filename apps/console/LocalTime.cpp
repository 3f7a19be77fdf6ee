#include "console/LocalTime.h"

#include "kelp0lang/UtcTime.h"

namespace console {
namespace {

WString TwoDigits(int value) {
  const WString digits = WString::ValueOf(value);
  return value < 10 ? KTEXT('0') + digits : digits;
}

}  // namespace

WString LocalTimeText(std::uint64_t utcMs) {
  _SYSTEMTIME time = {};
  kelp::FUtcMsToUserTime(kelp::tsLocal, utcMs, &time);
  WString text = WString::ValueOf(static_cast<int>(time.wYear));
  text += KTEXT('-') + TwoDigits(time.wMonth);
  text += KTEXT('-') + TwoDigits(time.wDay);
  text += KTEXT(' ') + TwoDigits(time.wHour);
  text += KTEXT(':') + TwoDigits(time.wMinute);
  text += KTEXT(':') + TwoDigits(time.wSecond);
  return text;
}

}  // namespace console
