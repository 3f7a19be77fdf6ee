// Cells of a table under the current unit settings, beside snprintf.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "bench/BenchTable.h"
#include "bench/SurveyValues.h"
#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/MeasUnitText.h"

namespace bench {
namespace {

constexpr int kCells = 1'000'000;

using Buffer = char[64];

// The same conversions by hand.
constexpr double kMetresInFoot = 0.3048;
constexpr double kDegreesInRadian = 57.29577951308233;

void PrintMetres(double metres, Buffer& text) {
  std::snprintf(text, sizeof text, "%.3f", metres);
}

void PrintFeet(double metres, Buffer& text) {
  std::snprintf(text, sizeof text, "%.3f", metres / kMetresInFoot);
}

// Of the nearest whole number, a half upwards.
long long RoundedMagnitude(double value) {
  return std::llabs(static_cast<long long>(std::floor(value + 0.5)));
}

// Feet, inches and eighths of an inch.
void PrintFeetInch(double metres, Buffer& text) {
  constexpr int kPerInch = 8;
  constexpr int kPerFoot = 12 * kPerInch;
  const double feet = metres / kMetresInFoot;
  const long long count = RoundedMagnitude(feet * kPerFoot);
  const int rest = static_cast<int>(count % kPerFoot);
  std::snprintf(text, sizeof text, "%s%lld'%d\"%d/%d", feet < 0 ? "-" : "", count / kPerFoot,
                rest / kPerInch, rest % kPerInch, kPerInch);
}

// Degrees, minutes and seconds with five decimals, and the hemisphere.
void PrintLatitude(double radians, Buffer& text) {
  constexpr long long kPerSecond = 100'000;
  constexpr long long kPerMinute = 60 * kPerSecond;
  constexpr long long kPerDegree = 60 * kPerMinute;
  double degrees = radians * kDegreesInRadian;
  while (degrees < -180) degrees += 360;
  while (degrees >= 180) degrees -= 360;
  const long long count = RoundedMagnitude(degrees * kPerDegree);
  std::snprintf(text, sizeof text, "%lld\u00B0%02lld'%02lld.%05lld\"%c", count / kPerDegree,
                count / kPerMinute % 60, count / kPerSecond % 60, count % kPerSecond,
                degrees < 0 ? 'S' : 'N');
}

std::vector<double> Latitudes() {
  std::mt19937 random(31);
  std::uniform_real_distribution<> radians(-1.5, 1.5);
  std::vector<double> latitudes(kCells);
  for (double& latitude : latitudes) latitude = radians(random);
  return latitudes;
}

// A column of a table: what it holds, how lengths are shown, and the two ways to print a cell.
struct Column {
  const char* work;
  const std::vector<double>& cells;
  enumDisplayDistUnits units;
  kelp::WString (*ours)(double);
  void (*byHand)(double, Buffer&);
};

void Use(enumDisplayDistUnits units) {
  CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem()->SetDistUnits(units);
}

// The comparison holds for equal texts only. Some thousands of cells show what could differ.
void RequireEqualTexts(const Column& column) {
  constexpr int kLooked = 20'000;
  Use(column.units);
  for (int i = 0; i < kLooked; ++i) {
    Buffer text;
    column.byHand(column.cells[i], text);
    const kelp::String ours = column.ours(column.cells[i]).ToUtf8();
    if (ours == kelp::String(text)) continue;
    std::fprintf(stderr, "%s: \"%s\" beside \"%s\"\n", column.work, ours.c_str(), text);
    std::abort();
  }
}

void AddColumn(const Column& column) {
  RequireEqualTexts(column);
  const auto ours = [column](benchmark::State& state) {
    Use(column.units);
    OverAll(state, column.cells, column.ours);
  };
  const auto byHand = [column](benchmark::State& state) {
    OverAll(state, column.cells, [&column](double cell) {
      Buffer text;
      column.byHand(cell, text);
      benchmark::DoNotOptimize(text);
      return 0;
    });
  };
  Compare(column.work, ours, {{"snprintf", 0.5, byHand}});
}

kelp::WString Length(double metres) {
  return DistToString(metres);
}

}  // namespace

void AddCellWorks() {
  static const std::vector<double> kLengths = SurveyValues(kCells);
  static const std::vector<double> kLatitudes = Latitudes();
  AddColumn({"DistToString, metres", kLengths, enumDisplayDistUnits::Metre, Length, PrintMetres});
  AddColumn({"DistToString, decimal feet", kLengths, enumDisplayDistUnits::InternationalFoot,
             Length, PrintFeet});
  AddColumn({"DistToString, feet and inches", kLengths, enumDisplayDistUnits::InternationalFootInch,
             Length, PrintFeetInch});
  AddColumn({"LatAngleToString", kLatitudes, enumDisplayDistUnits::Metre, LatAngleToString,
             PrintLatitude});
}

}  // namespace bench
