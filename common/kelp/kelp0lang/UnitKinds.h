// What units of display stand for, and how angles of each kind are stored; internal to the library.
#pragma once

#include "kelp0lang/AngleForm.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace kelp::detail {

// The unit of arithmetic behind each unit of display; an unknown one stays unknown.
inline constexpr enumDistUnits kDistUnits[] = {
    enumDistUnits::Metre,        enumDistUnits::InternationalFoot,
    enumDistUnits::USSurveyFoot, enumDistUnits::InternationalFoot,
    enumDistUnits::USSurveyFoot, enumDistUnits::InternationalChain,
    enumDistUnits::USSurveyChain};
inline constexpr enumAreaUnits kAreaUnits[] = {
    enumAreaUnits::SquareMetre, enumAreaUnits::SquareInternationalFoot,
    enumAreaUnits::SquareUSSurveyFoot, enumAreaUnits::SquareInternationalFoot,
    enumAreaUnits::SquareUSSurveyFoot};
inline constexpr enumVolumeUnits kVolumeUnits[] = {
    enumVolumeUnits::CubicMetre,        enumVolumeUnits::CubicInternationalFoot,
    enumVolumeUnits::CubicUSSurveyFoot, enumVolumeUnits::CubicInternationalFoot,
    enumVolumeUnits::CubicUSSurveyFoot, enumVolumeUnits::CubicInternationalYard,
    enumVolumeUnits::CubicUSSurveyYard};
inline constexpr enumAngleUnits kAngleUnits[] = {
    enumAngleUnits::Degree, enumAngleUnits::Gon,    enumAngleUnits::Degree, enumAngleUnits::Degree,
    enumAngleUnits::Degree, enumAngleUnits::Radian, enumAngleUnits::Mil};

template <class Units, std::size_t N, class Display>
constexpr Units UnitsOf(const Units (&table)[N], Display display, Units unknown) {
  const auto index = static_cast<std::size_t>(display);
  return index < N ? table[index] : unknown;
}

inline enumDistUnits Arithmetic(enumDisplayDistUnits display) {
  return UnitsOf(kDistUnits, display, static_cast<enumDistUnits>(-1));
}
inline enumAreaUnits Arithmetic(enumDisplayAreaUnits display) {
  return UnitsOf(kAreaUnits, display, static_cast<enumAreaUnits>(-1));
}
inline enumVolumeUnits Arithmetic(enumDisplayVolumeUnits display) {
  return UnitsOf(kVolumeUnits, display, static_cast<enumVolumeUnits>(-1));
}
// For an unknown unit of display angles are reckoned in gon.
inline enumAngleUnits Arithmetic(enumDisplayAngleUnits display) {
  return UnitsOf(kAngleUnits, display, enumAngleUnits::Gon);
}

// The forms in feet and inches have the values 3 and 4 in every kind.
template <class Display>
bool IsFeetInch(Display display) {
  return static_cast<int>(display) == 3 || static_cast<int>(display) == 4;
}

// One side of an angle: the unit, and where and in which direction it counts.
struct AngleSide {
  enumAngleUnits units;
  enumHorizStartAngle start;
  enumAngleDir direction;
};

inline constexpr AngleSide kSurvey = {enumAngleUnits::Gon, enumHorizStartAngle::North,
                                      enumAngleDir::Clockwise};
inline constexpr AngleSide kGeometric = {enumAngleUnits::Radian, enumHorizStartAngle::East,
                                         enumAngleDir::CounterClockwise};
inline constexpr AngleSide kGeographic = {enumAngleUnits::Radian, enumHorizStartAngle::North,
                                          enumAngleDir::Clockwise};

inline double Convert(double v, eConvertAngleType type, const AngleSide& from, const AngleSide& to,
                      enumNormalizeAngle normalize) {
  return ConvertAngle(v, type, from.units, from.start, from.direction, to.units, to.start,
                      to.direction, normalize);
}

// Turns, and angles with a hemisphere, lie on both sides of zero.
inline enumNormalizeAngle RangeOf(eConvertAngleType type, enumLatLonType hemisphere) {
  const bool symmetric = type == eConvertAngleType::Rotation || hemisphere != enumLatLonType::None;
  return symmetric ? enumNormalizeAngle::Symmetric : enumNormalizeAngle::Positive;
}

// How the system shows angles of a kind. An extent has neither start nor direction.
inline AngleSide Shown(const CMeasUnitSystem& system, enumDisplayAngleUnits display,
                       eConvertAngleType type) {
  const enumAngleUnits units = Arithmetic(display);
  if (type == eConvertAngleType::Length) {
    return {units, enumHorizStartAngle::North, enumAngleDir::Clockwise};
  }
  return {units, system.GetHorizStartAngle(), system.GetAngleDir()};
}

struct AngleKind {
  eConvertAngleType type;
  AngleSide stored;
  enumLatLonType hemisphere = enumLatLonType::None;
};

constexpr AngleKind PositionOrTurn(bool position, const AngleSide& stored) {
  return {position ? eConvertAngleType::Position : eConvertAngleType::Rotation, stored};
}

inline constexpr AngleKind kLenAngle = {eConvertAngleType::Length, kSurvey};
inline constexpr AngleKind kLenGeomAngle = {eConvertAngleType::Length, kGeometric};
inline constexpr AngleKind kLatAngle = {eConvertAngleType::Position, kGeographic,
                                        enumLatLonType::Latitude};
inline constexpr AngleKind kLonAngle = {eConvertAngleType::Position, kGeographic,
                                        enumLatLonType::Longitude};

}  // namespace kelp::detail
