// Unit conversions beside the least that gives the same numbers.
#include <random>

#include "bench/BenchTable.h"
#include "bench/UnitsByHand.h"
#include "kelp0lang/MeasUnit.h"

namespace bench {
namespace {

// Settings change now and then, as a program shows many values under one; a run is that many.
constexpr int kRun = 16;
constexpr int kRuns = 256;

template <class Unit>
struct Conversion {
  double value;
  Unit from;
  Unit to;
};

template <class Unit>
std::vector<Conversion<Unit>> Conversions(unsigned units, double limit) {
  std::mt19937 random(17);
  std::uniform_real_distribution<> values(0, limit);
  std::vector<Conversion<Unit>> conversions;
  for (int run = 0; run < kRuns; ++run) {
    const unsigned from = random() % units;
    const unsigned to = (from + 1 + random() % (units - 1)) % units;
    for (int i = 0; i < kRun; ++i) {
      conversions.push_back({values(random), static_cast<Unit>(from), static_cast<Unit>(to)});
    }
  }
  return conversions;
}

// A stored survey angle, in gon, clockwise from North, as a setting shows it.
struct Direction {
  double gon;
  enumAngleUnits units;
  enumHorizStartAngle start;
  enumAngleDir direction;
};

std::vector<Direction> Directions() {
  std::mt19937 random(23);
  std::uniform_real_distribution<> values(0, 400);
  std::vector<Direction> directions;
  for (int run = 0; run < kRuns; ++run) {
    const auto units = static_cast<enumAngleUnits>(random() % 4);
    const auto start = static_cast<enumHorizStartAngle>(random() % 2);
    const auto direction = static_cast<enumAngleDir>(random() % 2);
    for (int i = 0; i < kRun; ++i) directions.push_back({values(random), units, start, direction});
  }
  return directions;
}

constexpr auto kGon = enumAngleUnits::Gon;
constexpr auto kNorth = enumHorizStartAngle::North;
constexpr auto kClockwise = enumAngleDir::Clockwise;

}  // namespace

void AddUnitWorks() {
  const auto lengths = Conversions<enumDistUnits>(5, 10000);
  Compare("ConvertDist",
          Over(lengths, [](const auto& c) { return ConvertDist(c.value, c.from, c.to); }),
          {{"by hand", 1.5, Over(lengths, [](const auto& c) {
              return ConvertDistByHand(c.value, c.from, c.to);
            })}});

  const auto directions = Directions();
  Compare("ConvertAngle of a direction",
          Over(directions,
               [](const Direction& d) {
                 return ConvertAngle(d.gon, eConvertAngleType::Position, kGon, kNorth, kClockwise,
                                     d.units, d.start, d.direction, enumNormalizeAngle::Positive);
               }),
          {{"by hand", 1.5, Over(directions, [](const Direction& d) {
              return TurnAngleByHand(d.gon, kGon, kNorth, kClockwise, d.units, d.start, d.direction,
                                     enumNormalizeAngle::Positive);
            })}});

  const auto angles = Conversions<enumAngleUnits>(4, 6);
  Compare("ConvertAngle of a length",
          Over(angles,
               [](const auto& c) {
                 return ConvertAngle(c.value, eConvertAngleType::Length, c.from, kNorth, kClockwise,
                                     c.to, kNorth, kClockwise, enumNormalizeAngle::None);
               }),
          {{"by hand", 1.5, Over(angles, [](const auto& c) {
              return ConvertAngleByHand(c.value, c.from, c.to);
            })}});
}

}  // namespace bench
