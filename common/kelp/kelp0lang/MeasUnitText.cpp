#include "kelp0lang/MeasUnitText.h"

#include "kelp0lang/AngleForm.h"
#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/FeetInch.h"
#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/UnitKinds.h"

using kelp::IsNotSet;
using kelp::kNotSet;
using kelp::WString;
using kelp::detail::AngleKind;
using kelp::detail::AngleSide;
using kelp::detail::Arithmetic;
using kelp::detail::Convert;
using kelp::detail::CurrentMeasUnits;
using kelp::detail::IsFeetInch;
using kelp::detail::kGeometric;
using kelp::detail::kLatAngle;
using kelp::detail::kLenAngle;
using kelp::detail::kLenGeomAngle;
using kelp::detail::kLonAngle;
using kelp::detail::kSurvey;
using kelp::detail::PositionOrTurn;
using kelp::detail::RangeOf;
using kelp::detail::Shown;

namespace {

constexpr enumMeasUnitSize kNormal = enumMeasUnitSize::Normal;

// A plain number, or feet and inches.
WString NumberText(double v, bool feetInch, int decimals, enumInchDecPrec precision) {
  return feetInch ? FeetToFeetInch(v, precision) : StringDaDouble(v, 0, decimals);
}

double ReadNumber(const WString& s, bool feetInch, enumInchDecPrec precision) {
  const double read = feetInch ? FeetInchToFeet(s, precision) : DoubleDaString(s);
  return IsNotSet(read) ? kNotSet : read;
}

WString LengthText(double v, enumDisplayDistUnits display, int decimals, enumInchDecPrec precision,
                   enumMeasUnitSize size, bool plainDecimal) {
  if (IsNotSet(v)) return WString();
  const enumDistUnits units = Arithmetic(display);
  const double shown = kelp::detail::ConvertDistSize(ConvertDist(v, enumDistUnits::Metre, units),
                                                     units, kNormal, size);
  const bool feetInch = IsFeetInch(display) && !plainDecimal;
  if (feetInch && size == enumMeasUnitSize::Smallest) return InchToString(shown, precision);
  return NumberText(shown, feetInch, decimals, precision);
}

double ReadLength(const WString& s, enumDisplayDistUnits display, enumInchDecPrec precision,
                  enumMeasUnitSize size, bool plainDecimal) {
  if (s.empty()) return kNotSet;
  const bool feetInch = IsFeetInch(display) && !plainDecimal;
  const double read = feetInch && size == enumMeasUnitSize::Smallest
                          ? InchStringToInch(s, precision)
                          : ReadNumber(s, feetInch, precision);
  if (IsNotSet(read)) return kNotSet;
  const enumDistUnits units = Arithmetic(display);
  return ConvertDist(kelp::detail::ConvertDistSize(read, units, size, kNormal), units,
                     enumDistUnits::Metre);
}

WString VolumeText(double v, enumDisplayVolumeUnits display, int decimals,
                   enumInchDecPrec precision) {
  if (IsNotSet(v)) return WString();
  const double shown = ConvertVolume(v, enumVolumeUnits::CubicMetre, Arithmetic(display));
  return NumberText(shown, IsFeetInch(display), decimals, precision);
}

double ReadVolume(const WString& s, enumDisplayVolumeUnits display, enumInchDecPrec precision) {
  if (s.empty()) return kNotSet;
  return ConvertVolume(ReadNumber(s, IsFeetInch(display), precision), Arithmetic(display),
                       enumVolumeUnits::CubicMetre);
}

WString AngleText(double v, const AngleKind& kind, const CMeasUnitSystem& system,
                  enumDisplayAngleUnits display, int decimals, enumMeasUnitSize size) {
  if (IsNotSet(v)) return WString();
  const AngleSide shown = Shown(system, display, kind.type);
  const double angle = kelp::detail::ConvertAngleSize(
      Convert(v, kind.type, kind.stored, shown, RangeOf(kind.type, kind.hemisphere)), shown.units,
      kNormal, size);
  return IsDMSAngleUnits(display) ? DegToDMS(angle, display, kind.hemisphere, decimals)
                                  : StringDaDouble(angle, 0, decimals);
}

double ReadAngle(const WString& s, const AngleKind& kind, const CMeasUnitSystem& system,
                 enumDisplayAngleUnits display, enumMeasUnitSize size) {
  if (s.empty()) return kNotSet;
  const double read =
      IsDMSAngleUnits(display) ? DMSToDeg(s, display, kind.hemisphere) : DoubleDaString(s);
  if (IsNotSet(read)) return kNotSet;
  const AngleSide shown = Shown(system, display, kind.type);
  return Convert(kelp::detail::ConvertAngleSize(read, shown.units, size, kNormal), kind.type, shown,
                 kind.stored, RangeOf(kind.type, kind.hemisphere));
}

// Angles as numbers count by the system's start and direction in every kind.
double AngleNumber(double v, const AngleKind& kind, const CMeasUnitSystem& system,
                   enumDisplayAngleUnits display, bool toDisplay) {
  const AngleSide shown = {Arithmetic(display), system.GetHorizStartAngle(), system.GetAngleDir()};
  const AngleSide& from = toDisplay ? kind.stored : shown;
  const AngleSide& to = toDisplay ? shown : kind.stored;
  return Convert(v, kind.type, from, to, RangeOf(kind.type, kind.hemisphere));
}

void Tell(bool* target, bool value) {
  if (target != nullptr) *target = value;
}

}  // namespace

WString CMeasUnitSystem::FromDistToString(double v, enumDistType type, enumMeasUnitSize size,
                                          int decimals, bool plainDecimal) const {
  return LengthText(v, GetDistUnits(), decimals == -1 ? GetDistNumDec(type) : decimals,
                    GetDistInchDecPrec(type), size, plainDecimal);
}

WString CMeasUnitSystem::FromTSDistToString(double v) const {
  return LengthText(v, GetTSDistUnits(), GetNumTSDistDec(), GetTSDistInchDecPrec(), kNormal, false);
}

WString CMeasUnitSystem::FromAreaToString(double v, int decimals) const {
  if (IsNotSet(v)) return WString();
  const enumDisplayAreaUnits display = GetAreaUnits();
  const double shown = ConvertArea(v, enumAreaUnits::SquareMetre, Arithmetic(display));
  return NumberText(shown, IsFeetInch(display), decimals == -1 ? GetNumAreaDec() : decimals,
                    GetAreaInchDecPrec());
}

WString CMeasUnitSystem::FromVolumeToString(double v) const {
  return VolumeText(v, GetVolumeUnits(), GetNumVolDec(), GetVolInchDecPrec());
}

WString CMeasUnitSystem::FromVolPerDistToString(double v) const {
  return FromVolumeToString(ConvertDistToCurr(v));
}

WString CMeasUnitSystem::FromSpeedToString(double v, enumMeasUnitSize size) const {
  if (IsNotSet(v)) return WString();
  const double shown =
      kelp::detail::ConvertSpeedSize(ConvertSpeedToCurr(v), GetSpeedUnits(), kNormal, size);
  return StringDaDouble(shown, 0, GetNumSpeedDec());
}

WString CMeasUnitSystem::FromAngleToString(double v, bool position, enumMeasUnitSize size) const {
  return AngleText(v, PositionOrTurn(position, kSurvey), *this, GetAngleUnits(), GetNumAngleDec(),
                   size);
}

WString CMeasUnitSystem::FromGeomAngleToString(double v, bool position,
                                               enumMeasUnitSize size) const {
  return AngleText(v, PositionOrTurn(position, kGeometric), *this, GetAngleUnits(),
                   GetNumAngleDec(), size);
}

WString CMeasUnitSystem::FromTSAngleToString(double v) const {
  return AngleText(v, PositionOrTurn(true, kSurvey), *this, GetTSAngleUnits(), GetNumTSAngleDec(),
                   kNormal);
}

WString CMeasUnitSystem::FromLenAngleToString(double v, enumMeasUnitSize size) const {
  return AngleText(v, kLenAngle, *this, GetAngleUnits(), GetNumAngleDec(), size);
}

WString CMeasUnitSystem::FromLenGeomAngleToString(double v, enumMeasUnitSize size) const {
  return AngleText(v, kLenGeomAngle, *this, GetAngleUnits(), GetNumAngleDec(), size);
}

WString CMeasUnitSystem::FromLatAngleToString(double v) const {
  return AngleText(v, kLatAngle, *this, GetLatLonAngleUnits(), GetNumLatLonAngleDec(), kNormal);
}

WString CMeasUnitSystem::FromLonAngleToString(double v) const {
  return AngleText(v, kLonAngle, *this, GetLatLonAngleUnits(), GetNumLatLonAngleDec(), kNormal);
}

WString CMeasUnitSystem::FromValueToString(double v, enumMeasUnitValue kind, int decimals,
                                           enumMeasUnitSize size, enumMeasUnitSize valueSize,
                                           bool plainDecimal) const {
  using kelp::detail::ConvertDistSize;
  using kelp::detail::ConvertSpeedSize;
  if (IsNotSet(v)) return WString();
  switch (kind) {
    case enumMeasUnitValue::Dist:
      return FromDistToString(ConvertDistSize(v, enumDistUnits::Metre, valueSize, kNormal),
                              enumDistType::Distance, size, decimals, plainDecimal);
    case enumMeasUnitValue::TSDist:
      return FromTSDistToString(v);
    case enumMeasUnitValue::Area:
      return FromAreaToString(v);
    case enumMeasUnitValue::Volume:
      return FromVolumeToString(v);
    case enumMeasUnitValue::VolPerDist:
      return FromVolPerDistToString(v);
    case enumMeasUnitValue::Speed:
      return FromSpeedToString(ConvertSpeedSize(v, enumSpeedUnits::Metric, valueSize, kNormal),
                               size);
    case enumMeasUnitValue::Quote:
      return FromDistToString(ConvertDistSize(v, enumDistUnits::Metre, valueSize, kNormal),
                              enumDistType::Quote, size, decimals, false);
    case enumMeasUnitValue::TSAngle:
      return FromTSAngleToString(v);
    case enumMeasUnitValue::PosAngle:
      return FromAngleToString(v, true, size);
    case enumMeasUnitValue::RotAngle:
      return FromAngleToString(v, false, size);
    case enumMeasUnitValue::LenAngle:
      return FromLenAngleToString(v, size);
    case enumMeasUnitValue::LatAngle:
      return FromLatAngleToString(v);
    case enumMeasUnitValue::LonAngle:
      return FromLonAngleToString(v);
    case enumMeasUnitValue::PosGeomAngle:
      return FromGeomAngleToString(v, true);
    case enumMeasUnitValue::RotGeomAngle:
      return FromGeomAngleToString(v, false);
    case enumMeasUnitValue::LenGeomAngle:
      return FromLenGeomAngleToString(v);
    case enumMeasUnitValue::Coord:
    case enumMeasUnitValue::Coord1:
    case enumMeasUnitValue::Coord2:
      return FromDistToString(v, enumDistType::Coordinate, kNormal, decimals, false);
    case enumMeasUnitValue::Temperature:
    case enumMeasUnitValue::Pressure:
    case enumMeasUnitValue::Slope:
    case enumMeasUnitValue::NumberThreeDec:
      return StringDaDouble(v, 0, decimals == -1 ? 3 : decimals);
    case enumMeasUnitValue::Number:
      return StringDaDouble(v, 0, decimals == -1 ? 6 : decimals);
    case enumMeasUnitValue::Integer:
      return StringDaDouble(v, 0, 0);
  }
  return WString();
}

void CMeasUnitSystem::FromEastToString(double v, WString& out, bool* first) const {
  out = FromDistToString(v, enumDistType::Coordinate);
  Tell(first, GetCoordDisplayMode() == enumCoordDisplayMode::EastNorth);
}

void CMeasUnitSystem::FromNorthToString(double v, WString& out, bool* first) const {
  out = FromDistToString(v, enumDistType::Coordinate);
  Tell(first, GetCoordDisplayMode() == enumCoordDisplayMode::NorthEast);
}

void CMeasUnitSystem::FromCoordsToStrings(double east, double north, WString& s1, WString& s2,
                                          bool* eastFirst) const {
  double c1 = kNotSet;
  double c2 = kNotSet;
  EastNorthToCoords(east, north, c1, c2, eastFirst);
  s1 = FromDistToString(c1, enumDistType::Coordinate);
  s2 = FromDistToString(c2, enumDistType::Coordinate);
}

double CMeasUnitSystem::FromStringToDist(const WString& s, enumDistType type, enumMeasUnitSize size,
                                         bool plainDecimal) const {
  return ReadLength(s, GetDistUnits(), GetDistInchDecPrec(type), size, plainDecimal);
}

double CMeasUnitSystem::FromStringToTSDist(const WString& s) const {
  return ReadLength(s, GetTSDistUnits(), GetTSDistInchDecPrec(), kNormal, false);
}

double CMeasUnitSystem::FromStringToArea(const WString& s) const {
  if (s.empty()) return kNotSet;
  const enumDisplayAreaUnits display = GetAreaUnits();
  return ConvertArea(ReadNumber(s, IsFeetInch(display), GetAreaInchDecPrec()), Arithmetic(display),
                     enumAreaUnits::SquareMetre);
}

double CMeasUnitSystem::FromStringToVolume(const WString& s) const {
  return ReadVolume(s, GetVolumeUnits(), GetVolInchDecPrec());
}

double CMeasUnitSystem::FromStringToVolPerDist(const WString& s) const {
  return ConvertDistFromCurr(FromStringToVolume(s));
}

double CMeasUnitSystem::FromStringToSpeed(const WString& s, enumMeasUnitSize size) const {
  if (s.empty()) return kNotSet;
  const double read = DoubleDaString(s);
  if (IsNotSet(read)) return kNotSet;
  return ConvertSpeedFromCurr(kelp::detail::ConvertSpeedSize(read, GetSpeedUnits(), size, kNormal));
}

double CMeasUnitSystem::FromStringToAngle(const WString& s, bool position,
                                          enumMeasUnitSize size) const {
  return ReadAngle(s, PositionOrTurn(position, kSurvey), *this, GetAngleUnits(), size);
}

double CMeasUnitSystem::FromStringToGeomAngle(const WString& s, bool position,
                                              enumMeasUnitSize size) const {
  return ReadAngle(s, PositionOrTurn(position, kGeometric), *this, GetAngleUnits(), size);
}

double CMeasUnitSystem::FromStringToTSAngle(const WString& s) const {
  return ReadAngle(s, PositionOrTurn(true, kSurvey), *this, GetTSAngleUnits(), kNormal);
}

double CMeasUnitSystem::FromStringToLenAngle(const WString& s, enumMeasUnitSize size) const {
  return ReadAngle(s, kLenAngle, *this, GetAngleUnits(), size);
}

double CMeasUnitSystem::FromStringToLenGeomAngle(const WString& s, enumMeasUnitSize size) const {
  return ReadAngle(s, kLenGeomAngle, *this, GetAngleUnits(), size);
}

double CMeasUnitSystem::FromStringToLatAngle(const WString& s) const {
  return ReadAngle(s, kLatAngle, *this, GetLatLonAngleUnits(), kNormal);
}

double CMeasUnitSystem::FromStringToLonAngle(const WString& s) const {
  return ReadAngle(s, kLonAngle, *this, GetLatLonAngleUnits(), kNormal);
}

double CMeasUnitSystem::FromStringToValue(const WString& s, enumMeasUnitValue kind,
                                          enumMeasUnitSize size, enumMeasUnitSize valueSize,
                                          bool plainDecimal) const {
  using kelp::detail::ConvertDistSize;
  using kelp::detail::ConvertSpeedSize;
  if (s.empty()) return kNotSet;
  switch (kind) {
    case enumMeasUnitValue::Dist:
      return ConvertDistSize(FromStringToDist(s, enumDistType::Distance, size, plainDecimal),
                             enumDistUnits::Metre, kNormal, valueSize);
    case enumMeasUnitValue::TSDist:
      return FromStringToTSDist(s);
    case enumMeasUnitValue::Area:
      return FromStringToArea(s);
    case enumMeasUnitValue::Volume:
      return FromStringToVolume(s);
    case enumMeasUnitValue::VolPerDist:
      return FromStringToVolPerDist(s);
    case enumMeasUnitValue::Speed:
      return ConvertSpeedSize(FromStringToSpeed(s, size), enumSpeedUnits::Metric, kNormal,
                              valueSize);
    case enumMeasUnitValue::Quote:
      return ConvertDistSize(FromStringToDist(s, enumDistType::Quote, size, false),
                             enumDistUnits::Metre, kNormal, valueSize);
    case enumMeasUnitValue::TSAngle:
      return FromStringToTSAngle(s);
    case enumMeasUnitValue::PosAngle:
      return FromStringToAngle(s, true, size);
    case enumMeasUnitValue::RotAngle:
      return FromStringToAngle(s, false, size);
    case enumMeasUnitValue::LenAngle:
      return FromStringToLenAngle(s, size);
    case enumMeasUnitValue::LatAngle:
      return FromStringToLatAngle(s);
    case enumMeasUnitValue::LonAngle:
      return FromStringToLonAngle(s);
    case enumMeasUnitValue::PosGeomAngle:
      return FromStringToGeomAngle(s, true);
    case enumMeasUnitValue::RotGeomAngle:
      return FromStringToGeomAngle(s, false);
    case enumMeasUnitValue::LenGeomAngle:
      return FromStringToLenGeomAngle(s);
    case enumMeasUnitValue::Coord:
    case enumMeasUnitValue::Coord1:
    case enumMeasUnitValue::Coord2:
      return FromStringToDist(s, enumDistType::Coordinate);
    case enumMeasUnitValue::Temperature:
    case enumMeasUnitValue::Pressure:
    case enumMeasUnitValue::Slope:
    case enumMeasUnitValue::Number:
    case enumMeasUnitValue::Integer:
    case enumMeasUnitValue::NumberThreeDec:
      return DoubleDaString(s);
  }
  return kNotSet;
}

void CMeasUnitSystem::FromString1ToCoord(const WString& s, double& c, bool* isEast) const {
  c = FromStringToDist(s, enumDistType::Coordinate);
  Tell(isEast, GetCoordDisplayMode() != enumCoordDisplayMode::NorthEast);
}

void CMeasUnitSystem::FromString2ToCoord(const WString& s, double& c, bool* isEast) const {
  c = FromStringToDist(s, enumDistType::Coordinate);
  Tell(isEast, GetCoordDisplayMode() == enumCoordDisplayMode::NorthEast);
}

void CMeasUnitSystem::FromStringsToCoords(const WString& s1, const WString& s2, double& east,
                                          double& north, bool* eastFirst) const {
  CoordsToEastNorth(FromStringToDist(s1, enumDistType::Coordinate),
                    FromStringToDist(s2, enumDistType::Coordinate), east, north, eastFirst);
}

void CMeasUnitSystem::CoordsToEastNorth(double c1, double c2, double& east, double& north,
                                        bool* eastFirst) const {
  const enumCoordDisplayMode mode = GetCoordDisplayMode();
  Tell(eastFirst, mode != enumCoordDisplayMode::NorthEast);
  if (mode == enumCoordDisplayMode::EastNorth) {
    east = c1;
    north = c2;
  } else if (mode == enumCoordDisplayMode::NorthEast) {
    north = c1;
    east = c2;
  }
}

void CMeasUnitSystem::EastNorthToCoords(double east, double north, double& c1, double& c2,
                                        bool* eastFirst) const {
  const enumCoordDisplayMode mode = GetCoordDisplayMode();
  Tell(eastFirst, mode != enumCoordDisplayMode::NorthEast);
  if (mode == enumCoordDisplayMode::EastNorth) {
    c1 = east;
    c2 = north;
  } else if (mode == enumCoordDisplayMode::NorthEast) {
    c1 = north;
    c2 = east;
  }
}

double CMeasUnitSystem::ConvertDistToCurr(double v) const {
  return ConvertDist(v, enumDistUnits::Metre, Arithmetic(GetDistUnits()));
}

double CMeasUnitSystem::ConvertDistFromCurr(double v) const {
  return ConvertDist(v, Arithmetic(GetDistUnits()), enumDistUnits::Metre);
}

double CMeasUnitSystem::ConvertAreaToCurr(double v) const {
  return ConvertArea(v, enumAreaUnits::SquareMetre, Arithmetic(GetAreaUnits()));
}

double CMeasUnitSystem::ConvertAreaFromCurr(double v) const {
  return ConvertArea(v, Arithmetic(GetAreaUnits()), enumAreaUnits::SquareMetre);
}

double CMeasUnitSystem::ConvertVolumeToCurr(double v) const {
  return ConvertVolume(v, enumVolumeUnits::CubicMetre, Arithmetic(GetVolumeUnits()));
}

double CMeasUnitSystem::ConvertVolumeFromCurr(double v) const {
  return ConvertVolume(v, Arithmetic(GetVolumeUnits()), enumVolumeUnits::CubicMetre);
}

double CMeasUnitSystem::ConvertSpeedToCurr(double v) const {
  return ConvertSpeed(v, enumSpeedUnits::Metric, GetSpeedUnits());
}

double CMeasUnitSystem::ConvertSpeedFromCurr(double v) const {
  return ConvertSpeed(v, GetSpeedUnits(), enumSpeedUnits::Metric);
}

double CMeasUnitSystem::ConvertPosAngleToCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(true, kSurvey), *this, GetAngleUnits(), true);
}

double CMeasUnitSystem::ConvertPosAngleFromCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(true, kSurvey), *this, GetAngleUnits(), false);
}

double CMeasUnitSystem::ConvertRotAngleToCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(false, kSurvey), *this, GetAngleUnits(), true);
}

double CMeasUnitSystem::ConvertRotAngleFromCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(false, kSurvey), *this, GetAngleUnits(), false);
}

double CMeasUnitSystem::ConvertLenAngleToCurr(double v) const {
  return AngleNumber(v, kLenAngle, *this, GetAngleUnits(), true);
}

double CMeasUnitSystem::ConvertLenAngleFromCurr(double v) const {
  return AngleNumber(v, kLenAngle, *this, GetAngleUnits(), false);
}

double CMeasUnitSystem::ConvertPosGeomAngleToCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(true, kGeometric), *this, GetAngleUnits(), true);
}

double CMeasUnitSystem::ConvertPosGeomAngleFromCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(true, kGeometric), *this, GetAngleUnits(), false);
}

double CMeasUnitSystem::ConvertRotGeomAngleToCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(false, kGeometric), *this, GetAngleUnits(), true);
}

double CMeasUnitSystem::ConvertRotGeomAngleFromCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(false, kGeometric), *this, GetAngleUnits(), false);
}

double CMeasUnitSystem::ConvertLenGeomAngleToCurr(double v) const {
  return AngleNumber(v, kLenGeomAngle, *this, GetAngleUnits(), true);
}

double CMeasUnitSystem::ConvertLenGeomAngleFromCurr(double v) const {
  return AngleNumber(v, kLenGeomAngle, *this, GetAngleUnits(), false);
}

double CMeasUnitSystem::ConvertTSAngleToCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(true, kSurvey), *this, GetTSAngleUnits(), true);
}

double CMeasUnitSystem::ConvertTSAngleFromCurr(double v) const {
  return AngleNumber(v, PositionOrTurn(true, kSurvey), *this, GetTSAngleUnits(), false);
}

double CMeasUnitSystem::ConvertLatLonAngleToCurr(double v) const {
  return AngleNumber(v, kLatAngle, *this, GetLatLonAngleUnits(), true);
}

double CMeasUnitSystem::ConvertLatLonAngleFromCurr(double v) const {
  return AngleNumber(v, kLatAngle, *this, GetLatLonAngleUnits(), false);
}

WString DistToString(double v, enumDistType type, enumMeasUnitSize size, int decimals,
                     bool plainDecimal) {
  return CurrentMeasUnits().FromDistToString(v, type, size, decimals, plainDecimal);
}

WString TSDistToString(double v) {
  return CurrentMeasUnits().FromTSDistToString(v);
}

WString AreaToString(double v, int decimals) {
  return CurrentMeasUnits().FromAreaToString(v, decimals);
}

WString VolumeToString(double v) {
  return CurrentMeasUnits().FromVolumeToString(v);
}

WString VolPerDistToString(double v) {
  return CurrentMeasUnits().FromVolPerDistToString(v);
}

WString SpeedToString(double v, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromSpeedToString(v, size);
}

WString PosAngleToString(double v, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromAngleToString(v, true, size);
}

WString RotAngleToString(double v, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromAngleToString(v, false, size);
}

WString PosGeomAngleToString(double v, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromGeomAngleToString(v, true, size);
}

WString RotGeomAngleToString(double v, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromGeomAngleToString(v, false, size);
}

WString TSAngleToString(double v) {
  return CurrentMeasUnits().FromTSAngleToString(v);
}

WString LenAngleToString(double v, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromLenAngleToString(v, size);
}

WString LenGeomAngleToString(double v, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromLenGeomAngleToString(v, size);
}

WString LatAngleToString(double v) {
  return CurrentMeasUnits().FromLatAngleToString(v);
}

WString LonAngleToString(double v) {
  return CurrentMeasUnits().FromLonAngleToString(v);
}

WString ValueToString(double v, enumMeasUnitValue kind, int decimals, enumMeasUnitSize size,
                      enumMeasUnitSize valueSize, bool plainDecimal) {
  return CurrentMeasUnits().FromValueToString(v, kind, decimals, size, valueSize, plainDecimal);
}

void EastToString(double v, WString& out, bool* first) {
  CurrentMeasUnits().FromEastToString(v, out, first);
}

void NorthToString(double v, WString& out, bool* first) {
  CurrentMeasUnits().FromNorthToString(v, out, first);
}

void CoordsToStrings(double east, double north, WString& s1, WString& s2, bool* eastFirst) {
  CurrentMeasUnits().FromCoordsToStrings(east, north, s1, s2, eastFirst);
}

WString ScaleToString(double v) {
  return StringDaDouble(v, 0, CurrentMeasUnits().GetNumScaleDec());
}

WString DistToStringMaxChar(double v, enumDistType type, enumMeasUnitSize size, int,
                            bool plainDecimal, int maxChars) {
  if (v == kNotSet) return WString();
  for (int decimals = 3; decimals >= 0; --decimals) {
    const WString text = DistToString(v, type, size, decimals, plainDecimal);
    if (maxChars < 0 || text.Length() <= maxChars) return text;
  }
  switch (maxChars) {
    case 4:
      return KTEXT(">999");
    case 5:
      return KTEXT(">9999");
    case 6:
      return KTEXT(">99999");
    default:
      return KTEXT(">999999");
  }
}

double StringToDist(const WString& s, enumDistType type, enumMeasUnitSize size, bool plainDecimal) {
  return CurrentMeasUnits().FromStringToDist(s, type, size, plainDecimal);
}

double StringToTSDist(const WString& s) {
  return CurrentMeasUnits().FromStringToTSDist(s);
}

double StringToArea(const WString& s) {
  return CurrentMeasUnits().FromStringToArea(s);
}

double StringToVolume(const WString& s) {
  return CurrentMeasUnits().FromStringToVolume(s);
}

double StringToVolPerDist(const WString& s) {
  return CurrentMeasUnits().FromStringToVolPerDist(s);
}

double StringToSpeed(const WString& s, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromStringToSpeed(s, size);
}

double StringToPosAngle(const WString& s, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromStringToAngle(s, true, size);
}

double StringToRotAngle(const WString& s, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromStringToAngle(s, false, size);
}

double StringToPosGeomAngle(const WString& s, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromStringToGeomAngle(s, true, size);
}

double StringToRotGeomAngle(const WString& s, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromStringToGeomAngle(s, false, size);
}

double StringToTSAngle(const WString& s) {
  return CurrentMeasUnits().FromStringToTSAngle(s);
}

double StringToLenAngle(const WString& s, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromStringToLenAngle(s, size);
}

double StringToLenGeomAngle(const WString& s, enumMeasUnitSize size) {
  return CurrentMeasUnits().FromStringToLenGeomAngle(s, size);
}

double StringToLatAngle(const WString& s) {
  return CurrentMeasUnits().FromStringToLatAngle(s);
}

double StringToLonAngle(const WString& s) {
  return CurrentMeasUnits().FromStringToLonAngle(s);
}

double StringToValue(const WString& s, enumMeasUnitValue kind, enumMeasUnitSize size,
                     enumMeasUnitSize valueSize, bool plainDecimal) {
  return CurrentMeasUnits().FromStringToValue(s, kind, size, valueSize, plainDecimal);
}

void String1ToCoord(const WString& s, double& c, bool* isEast) {
  CurrentMeasUnits().FromString1ToCoord(s, c, isEast);
}

void String2ToCoord(const WString& s, double& c, bool* isEast) {
  CurrentMeasUnits().FromString2ToCoord(s, c, isEast);
}

void StringsToCoords(const WString& s1, const WString& s2, double& east, double& north,
                     bool* eastFirst) {
  CurrentMeasUnits().FromStringsToCoords(s1, s2, east, north, eastFirst);
}
