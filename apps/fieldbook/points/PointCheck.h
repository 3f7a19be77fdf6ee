// What is wrong with points among each other: names that come again, and points that lie nearer to
// each other than they should.
//
//   for (const PointPair& pair : FindNear(places, 0.01)) ...  // pair.point lies too near
//   pair.before
//
// Each point is told once, with one of those before it, so that a thousand points in one place give
// 999 pairs and not half a million. Where no pair is found there is none; where points are in the
// way of several others, the next look tells. The time grows as n log n, whatever lies where.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace fieldbook {

// In the plane, metres: a wall has its head above its foot.
struct PlanePosition {
  double easting;
  double northing;
};

// Two points by their places in the list.
struct PointPair {
  std::size_t point;
  std::size_t before;
};

// The points that have a name which one before them has, with the first that has it. The pairs are
// in the order of the points, as are those of FindNear.
std::vector<PointPair> FindNamedAlike(const std::vector<std::string_view>& names);

// The points of which one before them lies nearer than the tolerance, metres, at least 1e-6.
// Coordinates are at most 1e9.
std::vector<PointPair> FindNear(const std::vector<PlanePosition>& positions, double tolerance);

}  // namespace fieldbook
