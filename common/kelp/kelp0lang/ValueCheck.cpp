#include "kelp0lang/ValueCheck.h"

#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/Translate.h"
#include "kelp0lang/UnitKinds.h"
#include "kelp0lang/ValueScan.h"

using kelp::WString;
using namespace kelp::detail;

namespace {

constexpr const WChar* kWholeFault = KTEXT("a whole number is expected");
constexpr const WChar* kKindFault = KTEXT("there are no values of this kind");

// A number with what may stand behind it.
bool ScanNumber(ValueScan& scan, WideView unit, double& value, bool& isWhole) {
  bool negative = false;
  bool hasSign = false;
  if (!scan.TakeSign(negative, hasSign)) return false;
  Amount amount;
  if (!scan.TakeAmount(amount, true)) return false;
  value = negative ? -amount.value : amount.value;
  isWhole = amount.isWhole;
  scan.TakeBlanks();
  if (!unit.empty()) scan.TakeWord(unit);
  return scan.Ends();
}

TValueCheck CheckPlain(const WString& text, WideView unit) {
  ValueScan scan(text);
  double value = kelp::kNotSet;
  bool isWhole = false;
  ScanNumber(scan, unit, value, isWhole);
  return scan.Finish(value);
}

TValueCheck CheckInteger(const WString& text) {
  ValueScan scan(text);
  double value = kelp::kNotSet;
  bool isWhole = false;
  if (ScanNumber(scan, {}, value, isWhole) && !isWhole) scan.Fail(kWholeFault, scan.Start());
  return scan.Finish(value);
}

TValueCheck CheckMetres(const WString& text, enumDisplayDistUnits units) {
  TValueCheck check = CheckLength(text, units);
  if (!check.IsValue()) return check;
  check.value = ConvertDist(check.value, Arithmetic(units), enumDistUnits::Metre);
  return check;
}

TValueCheck CheckArea(const WString& text, enumDisplayAreaUnits units) {
  ValueScan scan(text);
  double value = kelp::kNotSet;
  ScanArea(scan, units, value);
  return scan.Finish(value);
}

TValueCheck CheckVolume(const WString& text, enumDisplayVolumeUnits units) {
  ValueScan scan(text);
  double value = kelp::kNotSet;
  ScanVolume(scan, units, value);
  return scan.Finish(value);
}

// The units of speed are those of the labels.
struct SpeedUnit {
  WideView word;
  enumSpeedUnits units;
  enumMeasUnitSize size;
};

constexpr SpeedUnit kSpeedUnits[] = {
    {KTEXT("m/s"), enumSpeedUnits::Metric, enumMeasUnitSize::Normal},
    {KTEXT("kmh"), enumSpeedUnits::Metric, enumMeasUnitSize::Large},
    {KTEXT("km/h"), enumSpeedUnits::Metric, enumMeasUnitSize::Large},
    {KTEXT("ft/s"), enumSpeedUnits::Imperial, enumMeasUnitSize::Normal},
    {KTEXT("mph"), enumSpeedUnits::Imperial, enumMeasUnitSize::Large},
};

TValueCheck CheckSpeed(const WString& text, enumSpeedUnits units) {
  ValueScan scan(text);
  bool negative = false;
  bool hasSign = false;
  Amount amount;
  if (!scan.TakeSign(negative, hasSign) || !scan.TakeAmount(amount, true)) {
    return scan.Finish(kelp::kNotSet);
  }
  scan.TakeBlanks();
  enumMeasUnitSize size = enumMeasUnitSize::Normal;
  for (const SpeedUnit& unit : kSpeedUnits) {
    if (!scan.TakeWord(unit.word)) continue;
    units = unit.units;
    size = unit.size;
  }
  scan.Ends();
  const double read = negative ? -amount.value : amount.value;
  return scan.Finish(ConvertSpeed(ConvertSpeedSize(read, units, size, enumMeasUnitSize::Normal),
                                  units, enumSpeedUnits::Metric));
}

// A latitude counts by itself, every other angle by the system; a bearing from north, clockwise.
TValueCheck CheckKind(const WString& text, const AngleKind& kind, const CMeasUnitSystem& system,
                      enumDisplayAngleUnits units) {
  ValueScan scan(text);
  ScannedAngle angle;
  const bool geographic = kind.hemisphere != enumLatLonType::None;
  const AngleLetters letters = kind.hemisphere == enumLatLonType::Latitude ? AngleLetters::Latitude
                               : kind.hemisphere == enumLatLonType::Longitude
                                   ? AngleLetters::Longitude
                               : kind.type == eConvertAngleType::Position ? AngleLetters::Bearing
                                                                          : AngleLetters::None;
  if (!ScanAngle(scan, units, letters, angle)) return scan.Finish(kelp::kNotSet);
  AngleSide from = Shown(system, units, kind.type);
  if (geographic || angle.isBearing) from = kGeographic;
  from.units = angle.unit;
  // A longitude of 180 degrees is in range, and stays east.
  const enumNormalizeAngle range =
      geographic ? enumNormalizeAngle::None : RangeOf(kind.type, kind.hemisphere);
  return scan.Finish(Convert(angle.value, kind.type, from, kind.stored, range));
}

}  // namespace

TValueCheck CheckNumber(const WString& text) {
  return CheckPlain(text, {});
}

TValueCheck CheckLength(const WString& text, enumDisplayDistUnits units) {
  ValueScan scan(text);
  double value = kelp::kNotSet;
  ScanLength(scan, units, false, value);
  return scan.Finish(value);
}

TValueCheck CheckAngle(const WString& text, enumDisplayAngleUnits units, enumLatLonType type) {
  ValueScan scan(text);
  ScannedAngle angle;
  const AngleLetters letters = type == enumLatLonType::Latitude ? AngleLetters::Latitude
                               : type == enumLatLonType::Longitude
                                   ? AngleLetters::Longitude
                                   : AngleLetters::BearingOrHemisphere;
  if (!ScanAngle(scan, units, letters, angle)) return scan.Finish(kelp::kNotSet);
  const AngleSide from = {angle.unit, enumHorizStartAngle::North, enumAngleDir::Clockwise};
  const AngleSide to = {enumAngleUnits::Degree, enumHorizStartAngle::North,
                        enumAngleDir::Clockwise};
  return scan.Finish(
      Convert(angle.value, eConvertAngleType::Length, from, to, enumNormalizeAngle::None));
}

TValueCheck CheckValue(const WString& text, enumMeasUnitValue kind, const CMeasUnitSystem& system) {
  using Kind = enumMeasUnitValue;
  switch (kind) {
    case Kind::Dist:
    case Kind::Quote:
    case Kind::Coord:
    case Kind::Coord1:
    case Kind::Coord2:
      return CheckMetres(text, system.GetDistUnits());
    case Kind::TSDist:
      return CheckMetres(text, system.GetTSDistUnits());
    case Kind::Area:
      return CheckArea(text, system.GetAreaUnits());
    case Kind::Volume:
      return CheckVolume(text, system.GetVolumeUnits());
    case Kind::VolPerDist: {
      TValueCheck check = CheckVolume(text, system.GetVolumeUnits());
      if (check.IsValue()) check.value = system.ConvertDistFromCurr(check.value);
      return check;
    }
    case Kind::Speed:
      return CheckSpeed(text, system.GetSpeedUnits());
    case Kind::TSAngle:
      return CheckKind(text, PositionOrTurn(true, kSurvey), system, system.GetTSAngleUnits());
    case Kind::PosAngle:
      return CheckKind(text, PositionOrTurn(true, kSurvey), system, system.GetAngleUnits());
    case Kind::RotAngle:
      return CheckKind(text, PositionOrTurn(false, kSurvey), system, system.GetAngleUnits());
    case Kind::LenAngle:
      return CheckKind(text, kLenAngle, system, system.GetAngleUnits());
    case Kind::LatAngle:
      return CheckKind(text, kLatAngle, system, system.GetLatLonAngleUnits());
    case Kind::LonAngle:
      return CheckKind(text, kLonAngle, system, system.GetLatLonAngleUnits());
    case Kind::PosGeomAngle:
      return CheckKind(text, PositionOrTurn(true, kGeometric), system, system.GetAngleUnits());
    case Kind::RotGeomAngle:
      return CheckKind(text, PositionOrTurn(false, kGeometric), system, system.GetAngleUnits());
    case Kind::LenGeomAngle:
      return CheckKind(text, kLenGeomAngle, system, system.GetAngleUnits());
    case Kind::Temperature:
      return CheckPlain(text, KTEXT("\u00B0c"));
    case Kind::Pressure:
      return CheckPlain(text, KTEXT("mmhg"));
    case Kind::Slope:
      return CheckPlain(text, KTEXT("%"));
    case Kind::Number:
    case Kind::NumberThreeDec:
      return CheckNumber(text);
    case Kind::Integer:
      return CheckInteger(text);
  }
  ValueScan scan(text);
  scan.Fail(kKindFault, scan.Start());
  return scan.Finish(kelp::kNotSet);
}

TValueCheck CheckValue(const WString& text, enumMeasUnitValue kind) {
  return CheckValue(text, kind, CurrentMeasUnits());
}
