// Points as a table shows them: their heads, the order of the coordinates, units and decimals.
#pragma once

#include "fieldbook/commands/Commands.h"
#include "fieldbook/console/Table.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace fieldbook {

struct PointStyle {
  LengthStyle plane;   // northing and easting
  LengthStyle height;  // elevation
  bool isEastFirst;
  WString heads[3];  // in the order of the columns
};

// By --to, --decimals and --denominator; northing first.
PointStyle StyleOfOptions(const CommandLine& line);
// By the settings in force, but for what --decimals and --denominator say.
PointStyle StyleOfSettings(const CMeasUnitSystem& settings, const CommandLine& line);

// The three coordinates of a point that is reckoned in the given unit, as the style orders them.
std::vector<WString> CoordinateTexts(const Point& point, const LengthUnit& unit,
                                     const PointStyle& style);

Table MakePointTable(const std::vector<Point>& points, const LengthUnit& unit,
                     const PointStyle& style, const Watch& watch = {});

}  // namespace fieldbook
