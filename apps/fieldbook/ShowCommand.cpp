// fieldbook show: the points of a file as a table.
#include "PointTable.h"
#include "Settings.h"

namespace fieldbook {

const WChar* const kShowHelp = KTEXT(
    "Usage: fieldbook show FILE [--from UNIT] [--to UNIT] [--decimals N]\n"
    "                      [--denominator N] [--csv]\n"
    "\n"
    "Shows the points of a file as a table, in the units, with the decimals and in\n"
    "the order of coordinates of the settings, see fieldbook units --help.\n"
    "\n"
    "  FILE             rows of point, northing, easting, elevation, description;\n"
    "                   - reads standard input\n"
    "  --from UNIT      unit of the coordinates in the file (m)\n"
    "  --to UNIT        unit to show them in; then the settings don't count, and the\n"
    "                   northing comes first, as in a points file\n"
    "  --decimals N     decimals, 0 to 9 (with --to 3; of chains 5)\n"
    "  --denominator N  of fractions of an inch: 4, 8, 16, 32 or 64 (with --to 16)\n"
    "  --csv            comma-separated values instead of a table; with --to a points\n"
    "                   file again\n"
    "  --data DIR       folder of the settings\n"
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
  const PointStyle style = line.Has(Option::To)
                               ? StyleOfOptions(line)
                               : StyleOfSettings(OpenSettings(line, console), line);
  const PointFile file = ReadPointFile(line.Operands()[0], unit, console);
  const Table table = MakePointTable(file.points, unit, style);
  console.Print(line.Has(Option::Csv) ? table.Csv() : table.Aligned(console.HasColour()));
  return file.faults.empty() ? kDone : kPartly;
}

}  // namespace fieldbook
