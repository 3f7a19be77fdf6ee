// fieldbook show: the points of a file as a table.
#include "Commands.h"
#include "Table.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kShowHelp = KTEXT(
    "Usage: fieldbook show FILE [--from UNIT] [--to UNIT] [--decimals N]\n"
    "                      [--denominator N] [--csv]\n"
    "\n"
    "Shows the points of a file as a table.\n"
    "\n"
    "  FILE             rows of point, northing, easting, elevation, description;\n"
    "                   - reads standard input\n"
    "  --from UNIT      unit of the coordinates in the file (m)\n"
    "  --to UNIT        unit to show them in (m)\n"
    "  --decimals N     decimals, 0 to 9 (3; of chains 5)\n"
    "  --denominator N  of fractions of an inch: 4, 8, 16, 32 or 64 (16)\n"
    "  --csv            comma-separated values instead of a table\n"
    "\n"
    "UNIT is m, ft (international foot), us-ft (US survey foot), ft-in and us-ft-in\n"
    "(the same as feet and inches, such as 5'6\"3/8), ch or us-ch (chain of 66 feet).\n"
    "\n"
    "Fields are separated by tabs, semicolons, commas or blanks; the program finds\n"
    "out which. A field may stand in quotes, with \"\" for a quote in it. What\n"
    "follows the elevation is description, to the end of the row. Elevation and\n"
    "description may be missing; in rows with blanks \"\" stands for no elevation.\n"
    "Where commas don't separate, numbers may have a decimal comma.\n"
    "\n"
    "Empty rows and rows with # in front are skipped. So is a first row of heads:\n"
    "one without a digit in its first four fields. The text is UTF-8 or Latin-1.\n"
    "\n"
    "A row that can't be read is reported as FILE:LINE: what is wrong, the others\n"
    "are shown, and the exit status is 2.\n");

Status ShowCommand(const CommandLine& line, Console& console) {
  if (line.Operands().size() != 1) {
    throw UsageFailure({KTEXT("show takes one FILE, {1} given"),
                        {WString::ValueOf(static_cast<int>(line.Operands().size()))}});
  }
  const LengthUnit& unit = ChooseFileUnit(line);
  const LengthStyle style = ChooseLengthStyle(line);
  const PointFile file = ReadPointFile(line.Operands()[0], unit, console);

  Table table({{kelp::Xlate(KTEXT("Point")), Align::Left},
               {WithUnit(KTEXT("Northing"), *style.unit), Align::Right},
               {WithUnit(KTEXT("Easting"), *style.unit), Align::Right},
               {WithUnit(KTEXT("Elevation"), *style.unit), Align::Right},
               {kelp::Xlate(KTEXT("Description")), Align::Left}});
  for (const Point& point : file.points) {
    table.AddRow({point.name, WriteLength(point.northing, unit, style),
                  WriteLength(point.easting, unit, style),
                  WriteLength(point.elevation, unit, style), point.description});
  }
  console.Print(line.Has(Option::Csv) ? table.Csv() : table.Aligned(console.HasColour()));
  return file.faults.empty() ? kDone : kPartly;
}

}  // namespace fieldbook
