// fieldbook polar: a point by direction and distance from another.
#include "fieldbook/commands/Direction.h"
#include "fieldbook/commands/PointTable.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/points/NamedPoints.h"
#include "kelp0lang/LegacyGeometry.h"

namespace fieldbook {

const WChar* const kPolarHelp = KTEXT(
    "Usage: fieldbook polar FILE FROM DIRECTION DISTANCE [--from UNIT]\n"
    "                       [--columns P,E,N,Z,D] [--to UNIT] [--decimals N]\n"
    "                       [--denominator N] [--csv]\n"
    "\n"
    "Shows the point that lies in a direction and at a horizontal distance from a\n"
    "point of a file.\n"
    "\n"
    "  FILE       a points file, see fieldbook show --help\n"
    "  FROM       the name of a point\n"
    "  DIRECTION  in the angle unit, from the start and in the sense of the settings\n"
    "  DISTANCE   in the distance unit of the settings, or that of --to\n"
    "\n"
    "The options are those of fieldbook show.\n");

Status PolarCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.size() != 4) {
    throw UsageFailure({KTEXT("polar takes FILE, FROM, DIRECTION and DISTANCE, {1} given"),
                        {WString::ValueOf(static_cast<int>(operands.size()))}});
  }
  const Settings settings = OpenSettings(line, console);
  const PointStyle style = ChoosePointStyle(settings.units, line);
  const double gon = ReadDirection(operands[2].text, settings.units);
  const LengthUnit& unit = *ChooseDistanceStyle(settings.units, line).unit;
  const Reading distance = ReadLength(operands[3].text, unit, DecimalMark::PointOrComma);
  if (distance.fault) {
    throw Failure(
        {KTEXT("distance \"{1}\": {2}"), {Quoted(operands[3].text), distance.fault.Text()}});
  }
  const NamedPoints found =
      FindPoints(operands[0], {operands[1].text}, ChooseLayout(line, settings), line, console);
  RememberFiles({operands[0]});
  Point point = found.points[0];
  const LengthUnit& fileUnit = *found.layout.unit;
  const double length = ConvertDist(distance.value, unit.unit, fileUnit.unit);
  point.easting += CalcCoordEst(length, gon);
  point.northing += CalcCoordNord(length, gon);
  if (!IsWithinReach(point.easting, fileUnit) || !IsWithinReach(point.northing, fileUnit)) {
    throw Failure(OutOfRange());
  }
  CoordinateWriter writer(fileUnit, style);
  const auto& texts = writer.Write(point.easting, point.northing, kelp::kNotSet);
  const std::vector<WString> row = {WString(), Decode(texts[0], true), Decode(texts[1], true),
                                    WString(), WString()};
  if (line.Has(Option::Csv)) {
    console.Print(CsvLine(PointHeads(style)) + '\n' + CsvLine(row) + '\n');
    return kDone;
  }
  console.PrintLine(LayoutText(found.layout));
  Table table({{PointHeads(style)[1], Align::Right}, {PointHeads(style)[2], Align::Right}});
  table.AddRow({row[1], row[2]});
  console.Print(table.Aligned(console.HasColour()));
  return kDone;
}

}  // namespace fieldbook
