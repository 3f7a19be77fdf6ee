// Directions as the settings show them: their unit, start and sense.
#pragma once

#include "fieldbook/points/PointFile.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace fieldbook {

// From one point to another, in gon, clockwise from north, in [0, 400).
double DirectionGon(const Point& from, const Point& to);
// From one point to another as a quadrant bearing, with the settings' decimals of seconds, or whole
// seconds where their angles have none.
WString BearingText(double gon, const CMeasUnitSystem& settings);
// A full turn that only the rounding makes is shown as zero.
WString DirectionText(double gon, const CMeasUnitSystem& settings);
// "Direction (gon, clockwise from north)".
WString DirectionHead(const CMeasUnitSystem& settings);
// A direction as a user types it, in the unit of the settings; in gon, clockwise from north. Throws
// Failure.
double ReadDirection(const WString& text, const CMeasUnitSystem& settings);

}  // namespace fieldbook
