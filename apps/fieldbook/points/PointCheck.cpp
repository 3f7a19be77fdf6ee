#include "fieldbook/points/PointCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <tuple>

namespace fieldbook {
namespace {

void SortByPoint(std::vector<PointPair>& pairs) {
  std::sort(pairs.begin(), pairs.end(),
            [](const PointPair& a, const PointPair& b) { return a.point < b.point; });
}

// Squares so small that all points in one are nearer to each other than the tolerance. So of a
// square only the first point has to be looked at beside the points of the squares around it, and a
// heap of points costs no more than as many that lie apart.
class Squares {
 public:
  Squares(const std::vector<PlanePosition>& positions, double tolerance)
      : m_positions(positions), m_squaredTolerance(tolerance * tolerance) {
    // A hair below tolerance / sqrt(2), so that rounding makes no diagonal too long.
    const double side = tolerance * std::sqrt(0.5) * (1 - 1e-9);
    m_entries.reserve(positions.size());
    for (std::size_t at = 0; at < positions.size(); ++at) {
      m_entries.push_back({static_cast<std::int64_t>(std::floor(positions[at].northing / side)),
                           static_cast<std::int64_t>(std::floor(positions[at].easting / side)),
                           at});
    }
    std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) {
      return std::tie(a.row, a.column, a.at) < std::tie(b.row, b.column, b.at);
    });
  }

  std::vector<PointPair> FindPairs() {
    std::vector<PointPair> pairs;
    m_starts.fill(0);
    for (std::size_t begin = 0, end = 0; begin < m_entries.size(); begin = end) {
      const std::size_t first = m_entries[begin].at;
      const std::size_t before = FirstAround(m_entries[begin]);
      if (before < first) pairs.push_back({first, before});
      for (end = begin + 1; end < m_entries.size() && IsSameSquare(begin, end); ++end) {
        pairs.push_back({m_entries[end].at, first});
      }
    }
    SortByPoint(pairs);
    return pairs;
  }

 private:
  static constexpr std::int64_t kReach = 2;  // squares further away are too far

  struct Entry {
    std::int64_t row;
    std::int64_t column;
    std::size_t at;
  };

  bool IsSameSquare(std::size_t a, std::size_t b) const {
    return m_entries[a].row == m_entries[b].row && m_entries[a].column == m_entries[b].column;
  }

  bool AreNear(std::size_t a, std::size_t b) const {
    const double east = m_positions[a].easting - m_positions[b].easting;
    const double north = m_positions[a].northing - m_positions[b].northing;
    return east * east + north * north < m_squaredTolerance;
  }

  // The first of the points that are near this one, which is itself where there is none before it.
  // Squares are asked for in their order, so each row's start only moves on.
  std::size_t FirstAround(const Entry& entry) {
    std::size_t found = entry.at;
    for (std::int64_t step = -kReach; step <= kReach; ++step) {
      const std::int64_t row = entry.row + step;
      std::size_t& start = m_starts[static_cast<std::size_t>(step + kReach)];
      while (start < m_entries.size() && std::tie(m_entries[start].row, m_entries[start].column) <
                                             std::make_tuple(row, entry.column - kReach)) {
        ++start;
      }
      for (std::size_t i = start; i < m_entries.size() && m_entries[i].row == row &&
                                  m_entries[i].column <= entry.column + kReach;
           ++i) {
        if (m_entries[i].at < found && AreNear(m_entries[i].at, entry.at)) found = m_entries[i].at;
      }
    }
    return found;
  }

  const std::vector<PlanePosition>& m_positions;
  const double m_squaredTolerance;
  std::vector<Entry> m_entries;  // by square, and in it in the order of the points
  std::array<std::size_t, 2 * kReach + 1>
      m_starts{};  // of each row around, where its search begins
};

}  // namespace

std::vector<PointPair> FindNamedAlike(const std::vector<std::string_view>& names) {
  struct Entry {
    std::size_t hash;
    std::size_t at;
  };
  std::vector<Entry> entries;
  entries.reserve(names.size());
  for (std::size_t at = 0; at < names.size(); ++at) {
    entries.push_back({std::hash<std::string_view>()(names[at]), at});
  }
  // Names that differ in spite of one hash are told apart.
  std::sort(entries.begin(), entries.end(), [&names](const Entry& a, const Entry& b) {
    if (a.hash != b.hash) return a.hash < b.hash;
    const int order = names[a.at].compare(names[b.at]);
    return order != 0 ? order < 0 : a.at < b.at;
  });
  std::vector<PointPair> pairs;
  std::size_t first = 0;
  for (std::size_t i = 1; i < entries.size(); ++i) {
    const bool isAlike =
        entries[i].hash == entries[first].hash && names[entries[i].at] == names[entries[first].at];
    if (isAlike) {
      pairs.push_back({entries[i].at, entries[first].at});
    } else {
      first = i;
    }
  }
  SortByPoint(pairs);
  return pairs;
}

std::vector<PointPair> FindNear(const std::vector<PlanePosition>& positions, double tolerance) {
  return Squares(positions, tolerance).FindPairs();
}

}  // namespace fieldbook
