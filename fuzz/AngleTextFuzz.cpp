// What users type as angles, lengths and numbers. By the lenient readers any text gives a value, by
// the strict ones a value or a reason: what this looks for is a fault in the reading, and values
// out of the range that the headers name.
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kelp0lang/AngleForm.h"
#include "kelp0lang/FeetInch.h"
#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/ValueCheck.h"

using kelp::WString;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// Half of the bytes stand for themselves, the others for what such texts are made of, so that most
// of the inputs are nearly texts.
WString TextOf(const std::uint8_t* bytes, std::size_t size) {
  constexpr WChar kUsual[] = KTEXT("0123456789.,-+eE'\" \x00B0NSEWd/mfting:\u00BD");
  constexpr std::size_t kUsualCount = sizeof(kUsual) / sizeof(kUsual[0]) - 1;
  WString text;
  WChar* units = text.GetBufferSetLength(static_cast<int>(size));
  for (std::size_t i = 0; i < size; ++i) {
    units[i] = bytes[i] < 0x80 ? static_cast<WChar>(bytes[i]) : kUsual[bytes[i] % kUsualCount];
  }
  return text;
}

void ReadNumbers(const WString& text) {
  const double number = kelp_wtof(text.c_str());
  Require(!std::isnan(number));
  // What is printed with all its digits reads back as the same number.
  if (std::isfinite(number)) {
    WChar printed[64];
    Require(kelp_snwprintf(printed, 64, KTEXT("%.17g"), number) > 0);
    Require(kelp_wtof(printed) == number);
  }
  const double strtod = std::strtod(text.ToUtf8().c_str(), nullptr);
  const bool onlyOurs = text.empty() || std::isnan(strtod) || std::isinf(strtod);
  const bool hex = text.IndexOf(KTEXT('x')) >= 0 || text.IndexOf(KTEXT('X')) >= 0;
  Require(onlyOurs || hex || number == strtod);

  Require(!std::isnan(DoubleDaString(text)));
  Require(!std::isnan(DoubleDaStringSoloNum(text)));
  Require(std::abs(ShortDaString32000(text)) <= 32750);
  Require(std::abs(IntDaString(text)) <= 2100000000);
}

void ReadAngles(const WString& text) {
  for (int form = 1; form <= 5; ++form) {
    for (int type = 0; type <= 2; ++type) {
      const auto shape = static_cast<enumDisplayAngleUnits>(form);
      const auto hemisphere = static_cast<enumLatLonType>(type);
      const TDMS angle = DMSToTDMS(text, shape, hemisphere);
      Require(angle.degrees >= 0 && angle.minutes >= 0 && angle.seconds >= 0);
      const double degrees = DMSToDeg(text, shape, hemisphere);
      Require(std::isfinite(degrees));
      // Within a full circle the text of the angle reads back as the angle, to its last decimal.
      if (!IsDMSAngleUnits(shape) || std::fabs(degrees) > 360) continue;
      const WString shown = DegToDMS(degrees, shape, hemisphere, 4);
      Require(std::fabs(DMSToDeg(shown, shape, hemisphere) - degrees) < 0.00005001 / 3600 + 1e-12);
    }
  }
}

void ReadLengths(const WString& text) {
  for (int precision = -1; precision <= 5; ++precision) {
    const auto prec = static_cast<enumInchDecPrec>(precision);
    for (const TFeetInch& length :
         {StringToFeetInch(text, prec), InchStringToFeetInch(text, prec)}) {
      Require(length.feet >= 0 && length.inches >= 0 && length.numerator >= 0);
      Require(std::isfinite(TFeetInchToFeet(length)));
    }
    Require(std::isfinite(FeetInchToFeet(text, prec)));
    Require(std::isfinite(InchStringToInch(text, prec)));
  }
}

void RequireSound(const TValueCheck& check, const WString& text) {
  Require(check.IsValue() == check.Reason().empty());
  Require(check.position >= 0 && check.position <= text.Length());
  Require(check.IsValue() ? std::fabs(check.value) <= kelp::kNotSetThreshold
                          : check.value == kelp::kNotSet);
}

void CheckStrictly(const WString& text) {
  RequireSound(CheckNumber(text), text);
  for (int units = 0; units <= 6; ++units) {
    RequireSound(CheckLength(text, static_cast<enumDisplayDistUnits>(units)), text);
    const auto form = static_cast<enumDisplayAngleUnits>(units);
    for (int type = 0; type <= 2; ++type) {
      RequireSound(CheckAngle(text, form, static_cast<enumLatLonType>(type)), text);
    }
  }
  CMeasUnitSystem system;
  system.SetVolumeUnits(enumDisplayVolumeUnits::CubicUSSurveyFootInch);
  for (int kind = 0; kind <= 22; ++kind) {
    RequireSound(CheckValue(text, static_cast<enumMeasUnitValue>(kind), system), text);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const WString text = TextOf(data, size);
  ReadNumbers(text);
  ReadAngles(text);
  ReadLengths(text);
  CheckStrictly(text);
  return 0;
}
