#include "kelp0lang/MeasUnit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

#include "kelptext/Compiler.h"

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
  if (value > kNotSetThreshold) [[unlikely]]
    return kNotSet;
  return value;
}

// Steps to and from the base unit. Which operations they are counts, not only their factors: a
// division and the product with the reciprocal differ in the last digit. Where a step has more
// operations than its unit, these are with 1, which is exact and takes less time than a branch.
struct Product {
  double Apply(double value) const { return value * factor; }
  double factor;
};

struct Quotient {
  double Apply(double value) const { return value * factor / divisor; }
  double factor;
  double divisor = 1.0;
};

struct TripleProduct {
  double Apply(double value) const { return value * first * second * third; }
  double first;
  double second = 1.0;
  double third = 1.0;
};

template <class ToBase, class FromBase>
struct UnitSteps {
  ToBase toBase;
  FromBase fromBase;
};

// The two directions aren't reciprocals of each other in every case; both are as stored projects
// were computed with.
constexpr UnitSteps<Product, Quotient> kDist[] = {
    {{1.0}, {1.0}},
    {{0.3048}, {1.0, 0.3048}},
    {{0.3048006096012192}, {3.2808333333333333}},
    {{20.1168}, {0.049709695378986715}},
    {{20.116840233680467}, {0.04970959595959596}},
};

constexpr UnitSteps<Product, Product> kArea[] = {
    {{1.0}, {1.0}},
    {{0.09290304}, {10.76391041670972}},
    {{0.09290341161327482}, {10.76386736111111}},
};

constexpr double kFeetPerMetre = 3.280839895013123;
constexpr double kUSFeetPerMetre = 3.2808333333333333;

constexpr UnitSteps<Product, TripleProduct> kVolume[] = {
    {{1.0}, {1.0}},
    {{0.028316846592000004}, {kFeetPerMetre, kFeetPerMetre, kFeetPerMetre}},
    {{0.028317016493759152}, {kUSFeetPerMetre, kUSFeetPerMetre, kUSFeetPerMetre}},
    {{0.7645548579840002}, {1.3079506193143915}},
    {{0.764559445331497}, {1.3079427716263718}},
};

constexpr UnitSteps<Quotient, Product> kSpeed[] = {
    {{1.0}, {1.0}},
    {{1.0, 0.621371}, {0.621371}},
};

template <class ToBase, class FromBase, std::size_t N, class Unit>
double Convert(const UnitSteps<ToBase, FromBase> (&table)[N], double value, Unit from, Unit to) {
  if (value > kNotSetThreshold || from == to) return value;
  const auto* source = Find(table, from);
  const auto* target = Find(table, to);
  if (source == nullptr || target == nullptr) return kNotSet;
  const double base = source->toBase.Apply(value);
  const double result = target->fromBase.Apply(base);
  // One test for both steps.
  return std::max(base, result) > kNotSetThreshold ? kNotSet : result;
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

// Where the interval of 360 degrees begins that angles are brought into; null for none.
const double* FindLow(enumNormalizeAngle normalize) {
  static constexpr double kLow[] = {0.0, -180.0};
  return Find(kLow, static_cast<std::int32_t>(normalize) -
                        static_cast<std::int32_t>(enumNormalizeAngle::Positive));
}

// One turn more or less, or none, towards [low, low + 360).
double TowardsTurn(double degrees, double low) {
  if (degrees < low) return degrees + 360.0;
  return degrees < low + 360.0 ? degrees : degrees - 360.0;
}

// An angle any number of turns away into [low, low + 360), as whole turns added or taken away one
// by one would bring it there; then into its unit. Apart from its caller, which so needs no stack.
KELP_NOINLINE double FromFarAway(double degrees, double low, double fromDegrees) {
  const double high = low + 360.0;
  // The remainder is exact, and so was every turn but the last. Adding zero makes -0 positive.
  degrees = std::fmod(degrees, 360.0) + 0.0;
  if (degrees < low) degrees += 360.0;
  // Also where the turn added to a tiny negative angle rounded up to high.
  if (degrees >= high) degrees -= 360.0;
  return Result(degrees * fromDegrees);
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
  const double* low = FindLow(normalize);
  if (low == nullptr) {
    const bool same = fromUnits == toUnits && fromStart == toStart && fromDir == toDir;
    if (value > kNotSetThreshold || (same && normalize == enumNormalizeAngle::None)) return value;
  }
  const AngleFactors* source = Find(kAngle, fromUnits);
  const AngleFactors* target = Find(kAngle, toUnits);
  if (source == nullptr || target == nullptr) [[unlikely]]
    return value > kNotSetThreshold ? value : kNotSet;

  double degrees = value * source->toDegrees;
  if (type != eConvertAngleType::Length) {
    const bool turnsStart = type != eConvertAngleType::Rotation;
    if (turnsStart && fromStart == enumHorizStartAngle::East) degrees -= 90.0;
    const bool reversed =
        (fromDir == enumAngleDir::CounterClockwise) != (toDir == enumAngleDir::CounterClockwise);
    if (reversed) degrees = -degrees;
    if (turnsStart && toStart == enumHorizStartAngle::East) degrees += 90.0;
  }
  degrees += 0.0;  // makes a negative zero positive
  if (low == nullptr) return Result(degrees * target->fromDegrees);

  const double turned = TowardsTurn(degrees, *low);
  if (turned >= *low && turned < *low + 360.0) [[likely]]
    return turned * target->fromDegrees;
  // A value that isn't set is far away too.
  return value > kNotSetThreshold ? value : FromFarAway(degrees, *low, target->fromDegrees);
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
  // The normal size has the factors 1 in every table.
  constexpr auto kNormal = enumMeasUnitSize::Normal;
  if (from == kNormal && to == kNormal) return Result(value);
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
