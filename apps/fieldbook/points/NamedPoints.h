// The points of a file that have certain names.
#pragma once

#include <string>
#include <vector>

#include "fieldbook/points/PointReading.h"

namespace fieldbook {

struct NamedPoints {
  PointLayout layout;
  std::vector<Point> points;  // in the order of the names
};

// Each name stands for one place in the file; a name may come several times. Throws Failure if one
// stands for none, for several, or for a row that can't be read. Other rows aren't looked at.
NamedPoints FindPoints(const Argument& file, const std::vector<WString>& names,
                       const LayoutWishes& wishes, const CommandLine& line, Console& console);

// The texts of the operands from this one on.
std::vector<WString> NamesBehind(const std::vector<Argument>& operands, std::size_t first);

}  // namespace fieldbook
