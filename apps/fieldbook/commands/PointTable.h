// Points as a table shows them: their heads, the order of the coordinates, units and decimals.
#pragma once

#include <string>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/console/Table.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace fieldbook {

struct PointStyle {
  LengthStyle plane;   // northing and easting
  LengthStyle height;  // elevation
  bool isEastFirst;
};

// By the settings in force, but for what --to, --decimals and --denominator say.
PointStyle ChoosePointStyle(const CMeasUnitSystem& settings, const CommandLine& line);

// "Point", the coordinates with their unit, "Description".
std::vector<WString> PointHeads(const PointStyle& style);
Table MakePointTable(const PointStyle& style);

// Writes the coordinates of points that are reckoned in one unit.
class CoordinateWriter {
 public:
  CoordinateWriter(const LengthUnit& unit, const PointStyle& style);

  // The three in the order of the style, in UTF-8; valid until the next call.
  const std::string (&Write(double easting, double northing, double elevation))[3];
  const std::string (&Write(const PointRow& row))[3] {
    return Write(row.easting, row.northing, row.elevation);
  }
  const std::string (&Write(const Point& point))[3] {
    return Write(point.easting, point.northing, point.elevation);
  }

 private:
  void WriteOne(double value, const LengthStyle& style, std::string& text) const;

  const LengthUnit& m_unit;
  PointStyle m_style;
  std::string m_texts[3];
};

}  // namespace fieldbook
