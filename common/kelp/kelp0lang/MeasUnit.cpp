#include "kelp0lang/MeasUnit.h"

#include <cmath>
#include <cstddef>
#include <iterator>

using kelp::kNotSet;
using kelp::kNotSetThreshold;

namespace {

// A value in a table of units; null where the table ends before it or it is negative.
template <class Entry, std::size_t N, class Unit>
const Entry* Find(const Entry (&table)[N], Unit unit) {
  const auto index = static_cast<std::uint32_t>(unit);
  return index < N ? &table[index] : nullptr;
}

double Result(double value) {
  return value > kNotSetThreshold ? kNotSet : value;
}

// One step to or from the base unit. Which operation it is counts, not only its factor: a division
// and the product with the reciprocal differ in the last digit.
struct Step {
  enum Operation { Multiply, MultiplyThrice, Divide };

  double Apply(double value) const {
    if (operation == Divide) return value / factor;
    const double product = value * factor;
    return operation == Multiply ? product : product * factor * factor;
  }

  double factor;
  Operation operation = Multiply;
};

struct UnitSteps {
  Step toBase;
  Step fromBase;
};

// The two directions aren't reciprocals of each other in every case; both are as stored projects
// were computed with.
constexpr UnitSteps kDist[] = {
    {{1.0}, {1.0}},
    {{0.3048}, {0.3048, Step::Divide}},
    {{0.3048006096012192}, {3.2808333333333333}},
    {{20.1168}, {0.049709695378986715}},
    {{20.116840233680467}, {0.04970959595959596}},
};

constexpr UnitSteps kArea[] = {
    {{1.0}, {1.0}},
    {{0.09290304}, {10.76391041670972}},
    {{0.09290341161327482}, {10.76386736111111}},
};

constexpr UnitSteps kVolume[] = {
    {{1.0}, {1.0}},
    {{0.028316846592000004}, {3.280839895013123, Step::MultiplyThrice}},
    {{0.028317016493759152}, {3.2808333333333333, Step::MultiplyThrice}},
    {{0.7645548579840002}, {1.3079506193143915}},
    {{0.764559445331497}, {1.3079427716263718}},
};

constexpr UnitSteps kSpeed[] = {
    {{1.0}, {1.0}},
    {{0.621371, Step::Divide}, {0.621371}},
};

template <std::size_t N, class Unit>
double Convert(const UnitSteps (&table)[N], double value, Unit from, Unit to) {
  if (value > kNotSetThreshold || from == to) return value;
  const UnitSteps* source = Find(table, from);
  const UnitSteps* target = Find(table, to);
  if (source == nullptr || target == nullptr) return kNotSet;
  const double base = source->toBase.Apply(value);
  if (base > kNotSetThreshold) return kNotSet;
  return Result(target->fromBase.Apply(base));
}

constexpr double kDeg2Grad = 1.1111111111111112;
constexpr double kDeg2Mils = 17.77777777777778;
constexpr double kDeg2Rad = 0.01745329251994;
constexpr double kGrad2Deg = 0.9;
constexpr double kGrad2Rad = 0.015707963267948;
constexpr double kMils2Deg = 0.05625;
constexpr double kRad2Deg = 57.29577951308233;
constexpr double kRad2Grad = 63.66197723675813;

struct AngleFactors {
  double toDegrees;
  double fromDegrees;
};

constexpr AngleFactors kAngle[] = {
    {1.0, 1.0},
    {kGrad2Deg, kDeg2Grad},
    {kRad2Deg, kDeg2Rad},
    {kMils2Deg, kDeg2Mils},
};

double Scale(double value, double factor) {
  return value > kNotSetThreshold ? value : Result(value * factor);
}

// Into [low, low + 360), as whole turns added or taken away one by one would do it.
double IntoTurn(double degrees, double low) {
  const double high = low + 360.0;
  if (degrees >= low && degrees < high) return degrees;
  // The remainder is exact, and so was every turn but the last. Adding zero makes -0 positive.
  degrees = std::fmod(degrees, 360.0) + 0.0;
  if (degrees < low) degrees += 360.0;
  // Also where the turn added to a tiny negative angle rounded up to high.
  if (degrees >= high) degrees -= 360.0;
  return degrees;
}

double Normalize(double degrees, enumNormalizeAngle normalize) {
  if (normalize == enumNormalizeAngle::Positive) return IntoTurn(degrees, 0.0);
  if (normalize == enumNormalizeAngle::Symmetric) return IntoTurn(degrees, -180.0);
  return degrees;
}

}  // namespace

double ConvertDist(double value, enumDistUnits from, enumDistUnits to) {
  return Convert(kDist, value, from, to);
}

double ConvertArea(double value, enumAreaUnits from, enumAreaUnits to) {
  return Convert(kArea, value, from, to);
}

double ConvertVolume(double value, enumVolumeUnits from, enumVolumeUnits to) {
  return Convert(kVolume, value, from, to);
}

double ConvertSpeed(double value, enumSpeedUnits from, enumSpeedUnits to) {
  return Convert(kSpeed, value, from, to);
}

double ConvertAngle(double value, eConvertAngleType type, enumAngleUnits fromUnits,
                    enumHorizStartAngle fromStart, enumAngleDir fromDir, enumAngleUnits toUnits,
                    enumHorizStartAngle toStart, enumAngleDir toDir, enumNormalizeAngle normalize) {
  if (value > kNotSetThreshold) return value;
  if (fromUnits == toUnits && fromStart == toStart && fromDir == toDir &&
      normalize == enumNormalizeAngle::None) {
    return value;
  }
  const AngleFactors* source = Find(kAngle, fromUnits);
  const AngleFactors* target = Find(kAngle, toUnits);
  if (source == nullptr || target == nullptr) return kNotSet;

  double degrees = value * source->toDegrees;
  if (type != eConvertAngleType::Length) {
    const bool turnsStart = type != eConvertAngleType::Rotation;
    if (turnsStart && fromStart == enumHorizStartAngle::East) degrees -= 90.0;
    if (fromDir == enumAngleDir::CounterClockwise) degrees = -degrees;
    if (toDir == enumAngleDir::CounterClockwise) degrees = -degrees;
    if (turnsStart && toStart == enumHorizStartAngle::East) degrees += 90.0;
  }
  degrees = Normalize(degrees + 0.0, normalize);
  return Result(degrees * target->fromDegrees);
}

double Deg2Grad(double value) {
  return Scale(value, kDeg2Grad);
}
double Deg2Mils(double value) {
  return Scale(value, kDeg2Mils);
}
double Deg2Rad(double value) {
  return Scale(value, kDeg2Rad);
}
double Grad2Deg(double value) {
  return Scale(value, kGrad2Deg);
}
double Grad2Rad(double value) {
  return Scale(value, kGrad2Rad);
}
double Mils2Deg(double value) {
  return Scale(value, kMils2Deg);
}
double Rad2Deg(double value) {
  return Scale(value, kRad2Deg);
}
double Rad2Grad(double value) {
  return Scale(value, kRad2Grad);
}

namespace {

constexpr int kDenominators[] = {4, 8, 16, 32, 64};

}  // namespace

int ConvertInchDecPrec(enumInchDecPrec precision) {
  const int* denominator = Find(kDenominators, precision);
  return denominator == nullptr ? 64 : *denominator;
}

bool ConvertInchDecPrec(int denominator, enumInchDecPrec& out) {
  for (std::size_t i = 0; i < std::size(kDenominators); ++i) {
    if (kDenominators[i] != denominator) continue;
    out = static_cast<enumInchDecPrec>(i);
    return true;
  }
  return false;
}

bool IsDMSAngleUnits(enumDisplayAngleUnits units) {
  return units >= enumDisplayAngleUnits::DMSSymbols && units <= enumDisplayAngleUnits::DMSPacked;
}

bool IsDoubleAngleUnits(enumDisplayAngleUnits units) {
  return units < enumDisplayAngleUnits::DMSSymbols || units > enumDisplayAngleUnits::DMSBlanks;
}

namespace {

// The feet-and-inch forms have the same values in lengths, areas and volumes.
template <class Unit>
bool IsPlainNumber(Unit units) {
  const auto value = static_cast<std::int32_t>(units);
  return value < 3 || value > 4;
}

}  // namespace

bool IsDoubleDistUnits(enumDisplayDistUnits units) {
  return IsPlainNumber(units);
}
bool IsDoubleAreaUnits(enumDisplayAreaUnits units) {
  return IsPlainNumber(units);
}
bool IsDoubleVolumeUnits(enumDisplayVolumeUnits units) {
  return IsPlainNumber(units);
}

namespace kelp::detail {
namespace {

// From the normal size: two factors, applied one after the other. None means no such size.
struct SizeFactors {
  double first = 0.0;
  double second = 1.0;
};

using SizeTable = SizeFactors[4];

constexpr SizeFactors kNone{};
constexpr double kMilesPerFoot = 0.0001893939393939394;

constexpr SizeTable kMetricDistSizes = {{1000.0}, kNone, {1.0}, {0.001}};
constexpr SizeTable kImperialDistSizes = {{12.0}, kNone, {1.0}, {kMilesPerFoot}};
constexpr SizeTable kDegreeSizes = {{3600.0}, {60.0}, {1.0}, kNone};
constexpr SizeTable kGonSizes = {{10000.0}, {100.0}, {1.0}, kNone};
constexpr SizeTable kMetricSpeedSizes = {kNone, kNone, {1.0}, {0.001, 3600.0}};
constexpr SizeTable kImperialSpeedSizes = {kNone, kNone, {1.0}, {kMilesPerFoot, 3600.0}};

double ConvertSize(const SizeTable& table, double value, enumMeasUnitSize from,
                   enumMeasUnitSize to) {
  const SizeFactors* source = Find(table, from);
  const SizeFactors* target = Find(table, to);
  if (source == nullptr || target == nullptr) return kNotSet;
  if (source->first == 0.0 || target->first == 0.0) return kNotSet;
  const double normal = value / source->first / source->second;
  if (normal > kNotSetThreshold) return kNotSet;
  return Result(normal * target->first * target->second);
}

}  // namespace

double ConvertDistSize(double value, enumDistUnits units, enumMeasUnitSize from,
                       enumMeasUnitSize to) {
  if (value > kNotSetThreshold) return value;
  if (Find(kDist, units) == nullptr) return kNotSet;
  const bool metric = units == enumDistUnits::Metre;
  return ConvertSize(metric ? kMetricDistSizes : kImperialDistSizes, value, from, to);
}

double ConvertAngleSize(double value, enumAngleUnits units, enumMeasUnitSize from,
                        enumMeasUnitSize to) {
  if (value > kNotSetThreshold || from == to) return value;
  switch (units) {
    case enumAngleUnits::Degree:
      return ConvertSize(kDegreeSizes, value, from, to);
    case enumAngleUnits::Gon:
      return ConvertSize(kGonSizes, value, from, to);
    case enumAngleUnits::Radian:
    case enumAngleUnits::Mil:
      return value;
  }
  return kNotSet;
}

double ConvertSpeedSize(double value, enumSpeedUnits units, enumMeasUnitSize from,
                        enumMeasUnitSize to) {
  if (value > kNotSetThreshold) return value;
  if (Find(kSpeed, units) == nullptr) return kNotSet;
  const bool metric = units == enumSpeedUnits::Metric;
  return ConvertSize(metric ? kMetricSpeedSizes : kImperialSpeedSizes, value, from, to);
}

}  // namespace kelp::detail
