#include "fieldbook/values/ByteText.h"

#include <iterator>

#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

WString ByteText(std::uint64_t bytes) {
  static constexpr const WChar* kUnits[] = {KTEXT("kB"), KTEXT("MB"), KTEXT("GB"), KTEXT("TB")};
  constexpr double kStep = 1000;
  constexpr double kRoundsUp = 999.95;  // what one decimal shows as the next unit
  if (bytes < static_cast<std::uint64_t>(kStep)) {
    return Message{KTEXT("{1} bytes"), {WString::ValueOf(static_cast<int>(bytes))}}.Text();
  }
  double amount = static_cast<double>(bytes) / kStep;
  const WChar* const* unit = kUnits;
  while (amount >= kRoundsUp && unit + 1 != std::end(kUnits)) {
    amount /= kStep;
    ++unit;
  }
  return (StringDaDouble(amount, 0, 1) + KTEXT(' ')).Concat(*unit);
}

WString RateText(std::uint64_t bytes, double seconds) {
  if (seconds <= 0) return WString();
  const double rate = static_cast<double>(bytes) / seconds;
  return ByteText(static_cast<std::uint64_t>(rate)).Concat(KTEXT("/s"));
}

}  // namespace fieldbook
