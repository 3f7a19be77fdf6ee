// fieldbook area: the area within points of a file.
#include <cmath>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/console/Table.h"
#include "fieldbook/points/NamedPoints.h"
#include "kelp0lang/LegacyGeometry.h"
#include "kelp0lang/MeasUnitLabel.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kAreaHelp = KTEXT(
    "Usage: fieldbook area FILE P1 P2 P3... [--from UNIT] [--columns P,E,N,Z,D]\n"
    "                      [--to UNIT] [--decimals N] [--denominator N]\n"
    "\n"
    "Shows the area within a boundary by the coordinates of its corners, and the\n"
    "perimeter.\n"
    "\n"
    "  FILE         a points file, see fieldbook show --help\n"
    "  P1 P2 P3...  the names of the corners in their order; the last is joined with\n"
    "               the first\n"
    "\n"
    "The area is in the area unit of the settings; the options are those of\n"
    "fieldbook show and concern the perimeter. A boundary that crosses itself is\n"
    "refused.\n");

namespace {

const Point& Corner(const std::vector<Point>& corners, std::size_t at) {
  return corners[at % corners.size()];
}

// The formula of Gauss, from the first corner, so that great coordinates lose no digits.
double AreaWithin(const std::vector<Point>& corners) {
  double twice = 0;
  const Point& origin = corners.front();
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Point& a = Corner(corners, i);
    const Point& b = Corner(corners, i + 1);
    twice += (a.easting - origin.easting) * (b.northing - origin.northing) -
             (b.easting - origin.easting) * (a.northing - origin.northing);
  }
  return std::fabs(twice) / 2;
}

double Perimeter(const std::vector<Point>& corners) {
  double sum = 0;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Point& a = Corner(corners, i);
    const Point& b = Corner(corners, i + 1);
    sum += Distanza2pt(a.easting, a.northing, b.easting, b.northing);
  }
  return sum;
}

bool Meet(const std::vector<Point>& corners, std::size_t i, std::size_t j) {
  const Point& a = Corner(corners, i);
  const Point& b = Corner(corners, i + 1);
  const Point& c = Corner(corners, j);
  const Point& d = Corner(corners, j + 1);
  return IntersezLine(a.easting, a.northing, b.easting, b.northing, c.easting, c.northing,
                      d.easting, d.northing);
}

// Sides that follow each other share a corner and aren't looked at.
void RequireSimple(const std::vector<Point>& corners) {
  for (std::size_t i = 0; i < corners.size(); ++i) {
    for (std::size_t j = i + 2; j < corners.size(); ++j) {
      if (i == 0 && j + 1 == corners.size()) continue;
      if (!Meet(corners, i, j)) continue;
      throw Failure({KTEXT("the boundary crosses itself: {1} to {2} meets {3} to {4}"),
                     {Quoted(Corner(corners, i).name), Quoted(Corner(corners, i + 1).name),
                      Quoted(Corner(corners, j).name), Quoted(Corner(corners, j + 1).name)}});
    }
  }
}

}  // namespace

Status AreaCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.size() < 4) {
    throw UsageFailure({KTEXT("area takes FILE and at least three points, {1} given"),
                        {WString::ValueOf(static_cast<int>(operands.size()))}});
  }
  const Settings settings = OpenSettings(line, console);
  const LengthStyle style = ChooseDistanceStyle(settings.units, line);
  const NamedPoints found = FindPoints(operands[0], NamesBehind(operands, 1),
                                       ChooseLayout(line, settings), line, console);
  RememberFiles({operands[0]});
  RequireSimple(found.points);
  const LengthUnit& unit = *found.layout.unit;
  const double toMetres = ConvertDist(1, unit.unit, enumDistUnits::Metre);
  const double area = AreaWithin(found.points) * toMetres * toMetres;
  console.PrintLine(LayoutText(found.layout));
  Table table(
      {{GetAreaLabel(kelp::Xlate(KTEXT("Area")), enumMeasUnitSize::Normal, true), Align::Left},
       {settings.units.FromAreaToString(area), Align::Right}});
  table.AddRow({WithUnit(KTEXT("Perimeter"), *style.unit),
                WriteLength(Perimeter(found.points), unit, style)});
  console.Print(table.Aligned(false));
  return kDone;
}

}  // namespace fieldbook
