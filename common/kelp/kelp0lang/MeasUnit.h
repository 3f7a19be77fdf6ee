// Units of measurement and the conversions between them.
//
//   double feet = ConvertDist(metres, enumDistUnits::Metre, enumDistUnits::USSurveyFoot);
//   if (feet > kelp::kNotSetThreshold) ...   // there was no value, or the unit is unknown
//
// Stored values have one unit each: lengths, coordinates and heights metres, areas square metres,
// volumes cubic metres, speeds the metric unit, survey angles gon (from North, clockwise),
// geometric angles radians (from East, counter-clockwise), latitudes and longitudes radians.
//
// A double can say that there is no value: it is then kelp::kNotSet, and whatever lies above
// kelp::kNotSetThreshold counts as not set. Such an input passes through every function here as it
// is, without arithmetic; a result above the threshold, and the result for an unknown unit, is
// kNotSet. NaN isn't above the threshold and runs through the arithmetic.
//
// The enumerations stand in settings files by their values. A value outside its enumeration is an
// unknown unit.
//
// All functions are pure and may be called on any thread. None throws.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"

namespace kelp {

// Written where there is no value.
inline constexpr double kNotSet = 1.7e200;
// Above it a value is no number to work with.
inline constexpr double kNotSetThreshold = 8.5e199;

// Whether there is no value. NaN isn't above the threshold.
constexpr bool IsNotSet(double value) {
  return value > kNotSetThreshold;
}

}  // namespace kelp

// Units in which lengths are reckoned. A chain has 66 feet of its kind.
enum class enumDistUnits : std::int32_t {
  Metre,
  InternationalFoot,
  USSurveyFoot,
  InternationalChain,
  USSurveyChain,
};

// How a length is shown.
enum class enumDisplayDistUnits : std::int32_t {
  Metre,
  InternationalFoot,
  USSurveyFoot,
  InternationalFootInch,
  USSurveyFootInch,
  InternationalChain,
  USSurveyChain,
};

enum class enumAreaUnits : std::int32_t {
  SquareMetre,
  SquareInternationalFoot,
  SquareUSSurveyFoot,
};

// How an area is shown; the last two as feet and inches.
enum class enumDisplayAreaUnits : std::int32_t {
  SquareMetre,
  SquareInternationalFoot,
  SquareUSSurveyFoot,
  SquareInternationalFootInch,
  SquareUSSurveyFootInch,
};

enum class enumVolumeUnits : std::int32_t {
  CubicMetre,
  CubicInternationalFoot,
  CubicUSSurveyFoot,
  CubicInternationalYard,
  CubicUSSurveyYard,
};

// How a volume is shown.
enum class enumDisplayVolumeUnits : std::int32_t {
  CubicMetre,
  CubicInternationalFoot,
  CubicUSSurveyFoot,
  CubicInternationalFootInch,
  CubicUSSurveyFootInch,
  CubicInternationalYard,
  CubicUSSurveyYard,
};

// A mil is 1/6400 of the circle.
enum class enumAngleUnits : std::int32_t {
  Degree,
  Gon,
  Radian,
  Mil,
};

// How an angle is shown.
enum class enumDisplayAngleUnits : std::int32_t {
  Degree,
  Gon,
  DMSSymbols,  // 10°30'00"
  DMSBlanks,   // 10 30 00"
  DMSPacked,   // 10.3000", DD.MMSSss
  Radian,
  Mil,
};

enum class enumSpeedUnits : std::int32_t {
  Metric,
  Imperial,
};

enum class enumUnitSystem : std::int32_t {
  Metric,
  Imperial,  // international foot
  USSurvey,
};

// The denominator of a fraction of an inch.
enum class enumInchDecPrec : std::int32_t {
  Quarters,
  Eighths,
  Sixteenths,
  ThirtySeconds,
  SixtyFourths,
};

// The size of a unit within its system. A family of units has not every size, see
// kelp::detail::ConvertDistSize and its kin.
enum class enumMeasUnitSize : std::int32_t {
  Smallest,  // millimetre or inch; second of angle
  Small,     // centimetre; minute of angle
  Normal,    // the unit itself
  Large,     // kilometre or mile
};

enum class enumDistType : std::int32_t {
  Distance,
  Coordinate,
  Quote,  // height
};

enum class enumAngleDir : std::int32_t {
  Clockwise,
  CounterClockwise,
};

// Where angles count from.
enum class enumHorizStartAngle : std::int32_t {
  North,
  East,
};

// The next four are kept for the programs and not interpreted here; only the values that occur as
// defaults have names.
enum class enumVertAngle : std::int32_t {
  Default,
};

enum class enumDateFormat : std::int32_t {
  Default,
};

enum class enumTemperatureUnits : std::int32_t {
  Celsius,
};

enum class enumPressureUnits : std::int32_t {
  MillimetreOfMercury = 2,
};

// What kind of angle ConvertAngle converts.
enum class eConvertAngleType : std::int32_t {
  Position,  // an absolute direction
  Rotation,  // a signed turn
  Length,    // an extent, such as that of an arc
};

enum class enumNormalizeAngle : std::int32_t {
  None,
  Positive,   // [0, 360) degrees
  Symmetric,  // [-180, 180) degrees
};

// Lengths, areas, volumes and speeds, by way of the stored unit. Where from equals to the value
// comes back unchanged. A US survey foot is 1200/3937 m, an international foot 0.3048 m.
KELP0LANG_API double ConvertDist(double value, enumDistUnits from, enumDistUnits to);
KELP0LANG_API double ConvertArea(double value, enumAreaUnits from, enumAreaUnits to);
KELP0LANG_API double ConvertVolume(double value, enumVolumeUnits from, enumVolumeUnits to);
KELP0LANG_API double ConvertSpeed(double value, enumSpeedUnits from, enumSpeedUnits to);

// Angles, by way of degrees. A position also changes its start and its direction, a rotation its
// direction, a length neither. Then the angle is brought into the range of normalize, in a time
// that doesn't depend on its size; an infinite one becomes NaN there. An angle a rounding error
// below the full circle stays there, and shows as the full circle where it is rounded later. Where
// nothing differs and normalize is None the value comes back unchanged; otherwise zero is positive.
KELP0LANG_API double ConvertAngle(double value, eConvertAngleType type, enumAngleUnits fromUnits,
                                  enumHorizStartAngle fromStart, enumAngleDir fromDir,
                                  enumAngleUnits toUnits, enumHorizStartAngle toStart,
                                  enumAngleDir toDir, enumNormalizeAngle normalize);

// One angle unit into another. Deg2Rad and Grad2Rad work with the 13 and 14 digits of their factors
// that stored projects were made with, not with the nearest double; AngRadiFromSesd and its kin
// (AngleForm.h) take the full value of pi.
KELP0LANG_API double Deg2Grad(double value);
KELP0LANG_API double Deg2Mils(double value);
KELP0LANG_API double Deg2Rad(double value);
KELP0LANG_API double Grad2Deg(double value);
KELP0LANG_API double Grad2Rad(double value);
KELP0LANG_API double Mils2Deg(double value);
KELP0LANG_API double Rad2Deg(double value);
KELP0LANG_API double Rad2Grad(double value);

// The denominator; every unknown precision counts as the finest, 64.
KELP0LANG_API int ConvertInchDecPrec(enumInchDecPrec precision);
// The precision with this denominator. False, and out stays, if there is none.
KELP0LANG_API bool ConvertInchDecPrec(int denominator, enumInchDecPrec& out);

// Whether values are shown as degrees, minutes and seconds.
KELP0LANG_API bool IsDMSAngleUnits(enumDisplayAngleUnits units);
// Whether a value is shown as one plain number. The packed form of an angle counts as one, though
// it is DMS too; the forms in feet and inches don't.
KELP0LANG_API bool IsDoubleAngleUnits(enumDisplayAngleUnits units);
KELP0LANG_API bool IsDoubleDistUnits(enumDisplayDistUnits units);
KELP0LANG_API bool IsDoubleAreaUnits(enumDisplayAreaUnits units);
KELP0LANG_API bool IsDoubleVolumeUnits(enumDisplayVolumeUnits units);

namespace kelp::detail {

// Between the sizes of one unit, by way of its normal size. A size that the family doesn't have
// gives kNotSet:
//
//   metres           Smallest 1/1000, Large 1000    (no Small)
//   feet and chains  Smallest 1/12, Large 5280      (no Small; a chain counts as a foot)
//   degrees          Smallest 1/3600, Small 1/60    (no Large)
//   gon              Smallest 1/10000, Small 1/100  (no Large)
//   speed            Large: per hour, and km for m, miles for feet  (no Smallest, no Small)
//
// Radians and mils pass through at any size, and so does any angle between equal sizes.
KELP0LANG_API double ConvertDistSize(double value, enumDistUnits units, enumMeasUnitSize from,
                                     enumMeasUnitSize to);
KELP0LANG_API double ConvertAngleSize(double value, enumAngleUnits units, enumMeasUnitSize from,
                                      enumMeasUnitSize to);
KELP0LANG_API double ConvertSpeedSize(double value, enumSpeedUnits units, enumMeasUnitSize from,
                                      enumMeasUnitSize to);

}  // namespace kelp::detail
