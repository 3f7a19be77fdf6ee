// Points files: rows of point, northing, easting, elevation and description.
//
//   12,5040123.250,1513044.910,212.334,"Mill, door sill"
//
// One character separates the fields of all rows: tab, semicolon, comma or, failing these, runs of
// blanks. It is the one with which most rows can be read. A field may stand in quotes; then
// separators in it don't count and "" is a quote. A quote further behind in a field is a character
// like any other, since inches are written so. Behind the fourth field everything belongs to the
// description, separators too. Where the comma doesn't separate it may be the decimal mark.
//
// The bytes are UTF-8, or Latin-1 if they aren't valid as UTF-8. Lines end in LF or CR LF. Empty
// lines and lines with # in front are skipped, and so is a line of heads at the top.
#pragma once

#include <string>
#include <vector>

#include "fieldbook/values/Length.h"

namespace fieldbook {

struct Point {
  WString name;
  double northing;  // in the unit of the file, as are the other two
  double easting;
  double elevation;  // kelp::kNotSet where the row has none
  WString description;
  int line;
};

// A row that can't be read.
struct RowFault {
  int line;
  Message message;
};

struct Line {
  int line;
  WString text;
};

struct PointFile {
  std::vector<Point> points;
  std::vector<Line> others;  // no rows: comments, empty lines and heads, these comma-separated
  std::vector<RowFault> faults;
};

// All three lists are in the order of the lines. The watch hears how far the rows are.
PointFile ReadPoints(const std::string& bytes, const LengthUnit& unit, const Watch& watch = {});

}  // namespace fieldbook
