// How the rows of a points file are laid out: which field is which, the unit of the coordinates,
// and the character between the fields.
//
// A line of heads at the top of a file decides, where it is there. Without one it is what the user
// says, and what the settings say where the user doesn't.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "console/Console.h"
#include "fieldbook/values/Length.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

enum class Column { Point, Easting, Northing, Elevation, Description, Other };

bool IsCoordinate(Column column);

// The columns of a row in their order. A description that stands last takes all the rest of a row.
using ColumnOrder = std::vector<Column>;

// Of letters with commas between them, such as "P,E,N,Z,D"; a minus sign stands for a field that
// isn't read. Nothing where a letter isn't one of these, comes twice, or P, E or N is missing.
std::optional<ColumnOrder> ReadColumns(const WString& text);
// Point, the coordinates in one of the two usual orders, elevation, description.
ColumnOrder UsualColumns(bool isEastFirst);
// "point, easting, northing", in the user's language.
WString ColumnNames(const ColumnOrder& columns);

// What decides where heads don't.
struct LayoutWishes {
  std::optional<ColumnOrder> columns;  // --columns
  const LengthUnit* from = nullptr;    // --from
  bool isEastFirst = true;             // of the settings, as is the unit
  const LengthUnit* fileUnit = &kLengthUnits[0];
};

enum class Decider { Heads, Option, Setting };

struct PointLayout {
  ColumnOrder columns;
  const LengthUnit* unit;
  char separator;  // a blank stands for runs of blanks and tabs
  Decider columnsBy;
  Decider unitBy;

  DecimalMark Mark() const {
    return separator == ',' ? DecimalMark::Point : DecimalMark::PointOrComma;
  }
};

// What a line of heads says.
struct Heads {
  ColumnOrder columns;
  const LengthUnit* unit = nullptr;  // null where no head has one
};

// Whether a row may be one of heads: it names easting or northing, or has words where the
// coordinates would stand and no digit before its description.
bool MayBeHeads(const std::vector<WString>& texts);
// Whether the words tell the columns of point, easting and northing.
bool TellColumns(const std::vector<WString>& texts);
// What is wrong with the heads of a file, without the file's name.
class LayoutFailure : public Failure {
 public:
  using Failure::Failure;
};

// Takes heads apart. Throws LayoutFailure, with what was read, if they contradict each other or if
// they can't be told and the wishes have no columns.
Heads ReadHeads(const std::vector<WString>& texts, const LayoutWishes& wishes);

// "Read as point, easting, northing in US ft (as its heads say)", for the user.
WString LayoutText(const PointLayout& layout);

}  // namespace fieldbook
