// fieldbook inverse: what lies between two points of a file.
#include <algorithm>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/console/Table.h"
#include "fieldbook/points/PointReading.h"
#include "fieldbook/values/AngleText.h"
#include "kelp0lang/LegacyGeometry.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kInverseHelp = KTEXT(
    "Usage: fieldbook inverse FILE FROM TO [--from UNIT] [--to UNIT] [--decimals N]\n"
    "                         [--denominator N] [--progress] [--verbose]\n"
    "\n"
    "Shows horizontal distance, difference of height and direction from one point\n"
    "of a file to another. The direction counts clockwise from north, in gon and in\n"
    "degrees, minutes and seconds.\n"
    "\n"
    "  FILE      a points file, see fieldbook show --help; - reads standard input\n"
    "  FROM, TO  names of two points; each stands for one place in the file\n"
    "\n"
    "The options are those of fieldbook show; they concern the lengths. Without --to\n"
    "these are in metres.\n");

namespace {

constexpr int kGonDecimals = 4;
constexpr int kSecondDecimals = 1;

bool SamePlace(const Point& a, const Point& b) {
  return a.northing == b.northing && a.easting == b.easting && a.elevation == b.elevation;
}

// The point of this name. A name that stands for several places is a failure, since either could be
// meant.
const Point& FindPoint(const PointFile& file, const Argument& source, const WString& name) {
  const Point* found = nullptr;
  for (const Point& point : file.points) {
    if (point.name != name) continue;
    if (found != nullptr && !SamePlace(*found, point)) {
      throw Failure({KTEXT("{1}: there are several points \"{2}\", in lines {3} and {4}"),
                     {Shown(source.text), Quoted(name), WString::ValueOf(found->line),
                      WString::ValueOf(point.line)}});
    }
    if (found == nullptr) found = &point;
  }
  if (found == nullptr) {
    throw Failure({KTEXT("{1}: there is no point \"{2}\""), {Shown(source.text), Quoted(name)}});
  }
  return *found;
}

double HeightDifference(const Point& from, const Point& to) {
  const bool isKnown = std::max(from.elevation, to.elevation) < kelp::kNotSetThreshold;
  return isKnown ? to.elevation - from.elevation : kelp::kNotSet;
}

// AngoloDaAsseRifer leaves directions just below a full turn negative. The two texts are made of
// one value in [0, 400), and one that rounds to the full turn is shown as 0.
WString GonText(double gon) {
  const WString text = WriteNumber(gon, kGonDecimals);
  return text == WriteNumber(400, kGonDecimals) ? WriteNumber(0, kGonDecimals) : text;
}

WString DMSText(double gon) {
  const double degrees = AngSesdFromCent(gon);
  const bool isFullTurn = DegToTDMS(degrees, kSecondDecimals).degrees == 360;
  return DegToDMS(isFullTurn ? 0 : degrees, enumDisplayAngleUnits::DMSSymbols, enumLatLonType::None,
                  kSecondDecimals);
}

PointFile ReadOneFile(const CommandLine& line, const LengthUnit& unit, Console& console) {
  Progress progress(line, console);
  const Progress::Task reading(progress, KTEXT("reading"), 1);
  ReadFile file = ReadPointFiles({line.Operands()[0]}, unit, progress).front();
  if (!file.failure.empty()) throw Failure(file.failure);
  return std::move(file.points);
}

}  // namespace

Status InverseCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.size() != 3) {
    throw UsageFailure({KTEXT("inverse takes FILE, FROM and TO, {1} given"),
                        {WString::ValueOf(static_cast<int>(operands.size()))}});
  }
  const LengthUnit& unit = ChooseFileUnit(line);
  const LengthStyle style = ChooseLengthStyle(line);
  const PointFile file = ReadOneFile(line, unit, console);
  ComplainOfRows(file, operands[0], console);
  const Point& from = FindPoint(file, operands[0], operands[1].text);
  const Point& to = FindPoint(file, operands[0], operands[2].text);

  const double distance = Distanza2pt(from.easting, from.northing, to.easting, to.northing);
  const double direction =
      AngoloDaAsseRifer(to.easting - from.easting, to.northing - from.northing);
  const double gon = direction < 0 ? direction + 400 : direction;
  const bool hasDirection = distance > 0;
  const double height = HeightDifference(from, to);

  const WString none = kelp::Xlate(KTEXT("not known"));
  const auto orNone = [&none](bool isKnown, const WString& text) { return isKnown ? text : none; };
  const bool hasHeight = height < kelp::kNotSetThreshold;
  Table table({{kelp::Xlate(KTEXT("From")), Align::Left}, {from.name, Align::Right}});
  table.AddRow({kelp::Xlate(KTEXT("To")), to.name});
  table.AddRow({WithUnit(KTEXT("Distance"), *style.unit), WriteLength(distance, unit, style)});
  table.AddRow({WithUnit(KTEXT("Difference of height"), *style.unit),
                orNone(hasHeight, WriteLength(height, unit, style))});
  table.AddRow({kelp::Xlate(KTEXT("Direction (gon)")), orNone(hasDirection, GonText(gon))});
  table.AddRow({kelp::Xlate(KTEXT("Direction (DMS)")), orNone(hasDirection, DMSText(gon))});
  console.Print(table.Aligned(false));
  return file.faults.empty() ? kDone : kPartly;
}

}  // namespace fieldbook
