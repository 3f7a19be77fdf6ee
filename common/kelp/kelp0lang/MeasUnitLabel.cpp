#include "kelp0lang/MeasUnitLabel.h"

#include <cstddef>

#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/Translate.h"

using kelp::WString;
using kelp::detail::CurrentMeasUnits;

namespace {

constexpr std::size_t kSizes = 4;

// The texts of one unit by size.
using UnitTexts = const WChar* [kSizes];

constexpr UnitTexts kMetre = {KTEXT("mm"), KTEXT("cm"), KTEXT("m"), KTEXT("km")};
constexpr UnitTexts kFoot = {KTEXT("in"), KTEXT("in"), KTEXT("ft"), KTEXT("mi")};
constexpr UnitTexts kChain = {KTEXT("in"), KTEXT("in"), KTEXT("ch"), KTEXT("mi")};
constexpr UnitTexts kUnknownLength = {KTEXT("in"), KTEXT("in"), KTEXT(""), KTEXT("mi")};

constexpr UnitTexts kSquareMetre = {KTEXT("mm\x00B2"), KTEXT("cm\x00B2"), KTEXT("m\x00B2"),
                                    KTEXT("km\x00B2")};
constexpr UnitTexts kSquareFoot = {KTEXT("in\x00B2"), KTEXT("in\x00B2"), KTEXT("ft\x00B2"),
                                   KTEXT("mi\x00B2")};

constexpr UnitTexts kCubicMetre = {KTEXT("mm\x00B3"), KTEXT("cm\x00B3"), KTEXT("m\x00B3"),
                                   KTEXT("km\x00B3")};
constexpr UnitTexts kCubicFoot = {KTEXT("in\x00B3"), KTEXT("in\x00B3"), KTEXT("ft\x00B3"),
                                  KTEXT("mi\x00B3")};
constexpr UnitTexts kCubicYard = {KTEXT("in\x00B3"), KTEXT("in\x00B3"), KTEXT("yd\x00B3"),
                                  KTEXT("mi\x00B3")};
constexpr UnitTexts kUnknownVolume = {KTEXT("in\x00B3"), KTEXT("in\x00B3"), KTEXT(""),
                                      KTEXT("mi\x00B3")};

constexpr UnitTexts kMetricSpeed = {KTEXT(""), KTEXT(""), KTEXT("m/s"), KTEXT("kmh")};
constexpr UnitTexts kImperialSpeed = {KTEXT(""), KTEXT(""), KTEXT("ft/s"), KTEXT("mph")};

constexpr const WChar* kSlope = KTEXT("%");
constexpr const WChar* kTemperature = KTEXT(
    "\x00B0"
    "C");
constexpr const WChar* kPressure = KTEXT("mmHg");

const WChar* TextOf(const UnitTexts& texts, enumMeasUnitSize size) {
  const auto index = static_cast<std::size_t>(size);
  return index < kSizes ? texts[index] : KTEXT("");
}

const WChar* DistText(enumDisplayDistUnits units, enumMeasUnitSize size) {
  switch (units) {
    case enumDisplayDistUnits::Metre:
      return TextOf(kMetre, size);
    case enumDisplayDistUnits::InternationalFoot:
    case enumDisplayDistUnits::USSurveyFoot:
    case enumDisplayDistUnits::InternationalFootInch:
    case enumDisplayDistUnits::USSurveyFootInch:
      return TextOf(kFoot, size);
    case enumDisplayDistUnits::InternationalChain:
    case enumDisplayDistUnits::USSurveyChain:
      return TextOf(kChain, size);
  }
  return TextOf(kUnknownLength, size);
}

const WChar* AreaText(enumDisplayAreaUnits units, enumMeasUnitSize size) {
  return TextOf(units == enumDisplayAreaUnits::SquareMetre ? kSquareMetre : kSquareFoot, size);
}

const WChar* VolumeText(enumDisplayVolumeUnits units, enumMeasUnitSize size) {
  switch (units) {
    case enumDisplayVolumeUnits::CubicMetre:
      return TextOf(kCubicMetre, size);
    case enumDisplayVolumeUnits::CubicInternationalFoot:
    case enumDisplayVolumeUnits::CubicUSSurveyFoot:
    case enumDisplayVolumeUnits::CubicInternationalFootInch:
    case enumDisplayVolumeUnits::CubicUSSurveyFootInch:
      return TextOf(kCubicFoot, size);
    case enumDisplayVolumeUnits::CubicInternationalYard:
    case enumDisplayVolumeUnits::CubicUSSurveyYard:
      return TextOf(kCubicYard, size);
  }
  return TextOf(kUnknownVolume, size);
}

// The parts of an angle are centesimal whatever its unit.
const WChar* AngleText(enumDisplayAngleUnits units, enumMeasUnitSize size) {
  if (size == enumMeasUnitSize::Smallest) return KTEXT("cc");
  if (size == enumMeasUnitSize::Small) return KTEXT("c");
  if (size != enumMeasUnitSize::Normal) return KTEXT("");
  switch (units) {
    case enumDisplayAngleUnits::Degree:
      return KTEXT("\x00B0");
    case enumDisplayAngleUnits::Gon:
      return KTEXT("g");
    case enumDisplayAngleUnits::Radian:
      return KTEXT("rad");
    case enumDisplayAngleUnits::Mil:
      return KTEXT("mil");
    default:
      return KTEXT("");
  }
}

const WChar* SpeedText(enumSpeedUnits units, enumMeasUnitSize size) {
  switch (units) {
    case enumSpeedUnits::Metric:
      return TextOf(kMetricSpeed, size);
    case enumSpeedUnits::Imperial:
      return TextOf(kImperialSpeed, size);
  }
  return KTEXT("");
}

WString Bracketed(const WString& unit) {
  return unit.empty() ? unit : KTEXT('[') + unit + KTEXT(']');
}

WString Prefixed(const WString& prefix, const WString& unit) {
  return prefix.empty() ? unit : (prefix + KTEXT(' ')).Concat(unit);
}

WString Label(const WString& prefix, const WString& unit, bool bracket) {
  return Prefixed(prefix, bracket ? Bracketed(unit) : unit);
}

WString CoordLabel(const WString& prefix, enumCoordLabelMode mode, bool first) {
  // By mode and by which coordinate it is.
  static constexpr const WChar* kNames[2][2] = {
      {KXLATE("East"), KXLATE("North")}, {KXLATE("E@@East (1 char)"), KXLATE("N@@North (1 char)")}};
  const enumCoordDisplayMode display = CurrentMeasUnits().GetCoordDisplayMode();
  const bool known =
      (mode == enumCoordLabelMode::Word || mode == enumCoordLabelMode::Letter) &&
      (display == enumCoordDisplayMode::EastNorth || display == enumCoordDisplayMode::NorthEast);
  if (!known) return Prefixed(prefix, WString());
  const bool east = first == (display == enumCoordDisplayMode::EastNorth);
  return Prefixed(prefix, kelp::Xlate(kNames[static_cast<int>(mode)][east ? 0 : 1]));
}

}  // namespace

WString GetDistLabel(const WString& prefix, enumMeasUnitSize size, bool bracket) {
  return DoGetDistLabel(prefix, size, CurrentMeasUnits().GetDistUnits(), bracket);
}

WString GetAreaLabel(const WString& prefix, enumMeasUnitSize size, bool bracket) {
  return Label(prefix, AreaText(CurrentMeasUnits().GetAreaUnits(), size), bracket);
}

WString GetVolumeLabel(const WString& prefix, enumMeasUnitSize size, bool bracket) {
  return Label(prefix, VolumeText(CurrentMeasUnits().GetVolumeUnits(), size), bracket);
}

WString GetAngleLabel(const WString& prefix, enumMeasUnitSize size, bool bracket) {
  return DoGetAngleLabel(prefix, size, CurrentMeasUnits().GetAngleUnits(), bracket);
}

WString GetSlopeLabel(const WString& prefix, enumMeasUnitSize, bool bracket) {
  return Label(prefix, kSlope, bracket);
}

WString GetTSDistLabel(const WString& prefix, enumMeasUnitSize size) {
  return DoGetDistLabel(prefix, size, CurrentMeasUnits().GetTSDistUnits(), true);
}

WString GetSpeedLabel(const WString& prefix, enumMeasUnitSize size) {
  return Label(prefix, SpeedText(CurrentMeasUnits().GetSpeedUnits(), size), true);
}

WString GetTSAngleLabel(const WString& prefix, enumMeasUnitSize size) {
  return DoGetAngleLabel(prefix, size, CurrentMeasUnits().GetTSAngleUnits(), true);
}

WString GetLatLonLabel(const WString& prefix, enumMeasUnitSize size) {
  return DoGetAngleLabel(prefix, size, CurrentMeasUnits().GetLatLonAngleUnits(), true);
}

WString GetVolPerDistLabel(const WString& prefix, enumMeasUnitSize size) {
  const WString volume = Bracketed(VolumeText(CurrentMeasUnits().GetVolumeUnits(), size));
  const WString dist = Bracketed(DistText(CurrentMeasUnits().GetDistUnits(), size));
  return Prefixed(prefix, (volume + KTEXT('*')).Concat(dist));
}

WString DoGetDistLabel(const WString& prefix, enumMeasUnitSize size, enumDisplayDistUnits units,
                       bool bracket) {
  return Label(prefix, DistText(units, size), bracket);
}

WString DoGetAngleLabel(const WString& prefix, enumMeasUnitSize size, enumDisplayAngleUnits units,
                        bool bracket) {
  return Label(prefix, AngleText(units, size), bracket);
}

WString GetCoord1Label(const WString& prefix, enumCoordLabelMode mode) {
  return CoordLabel(prefix, mode, true);
}

WString GetCoord2Label(const WString& prefix, enumCoordLabelMode mode) {
  return CoordLabel(prefix, mode, false);
}

WString GetUnitMeasureLabel(const CMeasUnitSystem& system, const WString& prefix,
                            enumMeasUnitValue kind, enumMeasUnitSize size, bool bracket) {
  const WChar* dist = DistText(system.GetDistUnits(), size);
  switch (kind) {
    case enumMeasUnitValue::Dist:
    case enumMeasUnitValue::Quote:
    case enumMeasUnitValue::Coord:
    case enumMeasUnitValue::Coord1:
    case enumMeasUnitValue::Coord2:
      return Label(prefix, dist, bracket);
    case enumMeasUnitValue::TSDist:
      return Label(prefix, DistText(system.GetTSDistUnits(), size), bracket);
    case enumMeasUnitValue::Area:
      return Label(prefix, AreaText(system.GetAreaUnits(), size), bracket);
    case enumMeasUnitValue::Volume:
      return Label(prefix, VolumeText(system.GetVolumeUnits(), size), bracket);
    case enumMeasUnitValue::VolPerDist:
      return Label(prefix, WString(VolumeText(system.GetVolumeUnits(), size)) + KTEXT('*') + dist,
                   bracket);
    case enumMeasUnitValue::Speed:
      return Label(prefix, SpeedText(system.GetSpeedUnits(), size), bracket);
    case enumMeasUnitValue::TSAngle:
      return Label(prefix, AngleText(system.GetTSAngleUnits(), size), bracket);
    case enumMeasUnitValue::PosAngle:
    case enumMeasUnitValue::RotAngle:
    case enumMeasUnitValue::LenAngle:
    case enumMeasUnitValue::PosGeomAngle:
    case enumMeasUnitValue::RotGeomAngle:
    case enumMeasUnitValue::LenGeomAngle:
      return Label(prefix, AngleText(system.GetAngleUnits(), size), bracket);
    case enumMeasUnitValue::LatAngle:
    case enumMeasUnitValue::LonAngle:
      return Label(prefix, AngleText(system.GetLatLonAngleUnits(), size), bracket);
    case enumMeasUnitValue::Temperature:
      return kTemperature;
    case enumMeasUnitValue::Pressure:
      return kPressure;
    case enumMeasUnitValue::Slope:
      return Label(prefix, kSlope, bracket);
    default:
      return WString();
  }
}
