// All of a points file in memory; what such a file holds stands in PointScan.h.
#pragma once

#include <string>
#include <vector>

#include "fieldbook/points/FaultList.h"
#include "fieldbook/points/PointScan.h"

namespace fieldbook {

struct Point {
  WString name;
  double easting;  // in the unit of the file, as are the other two
  double northing;
  double elevation;  // kelp::kNotSet where the row has none
  WString description;
  int line;
  // The fields of the columns that aren't read, but for empty ones at the end.
  std::vector<WString> others;
};

struct Line {
  int line;
  WString text;
};

struct PointFile {
  PointLayout layout;
  std::vector<Point> points;
  std::vector<Line> others;  // no rows: comments, empty lines and heads, these comma-separated
  FaultList faults;
};

// The row that a scan has just read.
Point ToPoint(const PointScan& scan);

// The lists are in the order of the lines. The watch hears how far the reading is. Throws
// Failure as PointScan does.
PointFile ReadPoints(ByteSource& bytes, const LayoutWishes& wishes, const Watch& watch = {});
PointFile ReadPoints(std::string_view bytes, const LayoutWishes& wishes = {});

}  // namespace fieldbook
