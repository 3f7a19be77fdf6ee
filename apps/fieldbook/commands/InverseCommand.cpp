// fieldbook inverse: what lies between the points of a file.
#include <algorithm>
#include <cmath>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/Direction.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/console/Table.h"
#include "fieldbook/points/NamedPoints.h"
#include "kelp0lang/LegacyGeometry.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kInverseHelp = KTEXT(
    "Usage: fieldbook inverse FILE FROM TO... [--from UNIT] [--columns P,E,N,Z,D]\n"
    "                         [--to UNIT] [--decimals N] [--denominator N]\n"
    "                         [--bearing] [--progress] [--verbose]\n"
    "\n"
    "Shows horizontal distance, slope distance, difference of height, grade and\n"
    "direction from one point of a file to another, or along a chain of points.\n"
    "\n"
    "  FILE      a points file, see fieldbook show --help; - reads standard input\n"
    "  FROM, TO  names of points; each stands for one place in the file. With more\n"
    "            than two each leg of the chain has a row, and the last is the sum\n"
    "\n"
    "  --bearing  the direction as a quadrant bearing, such as S45\u00B030'15\"E\n"
    "\n"
    "The other options are those of fieldbook show; they concern the lengths. Without\n"
    "them the lengths are in the distance unit of the settings. So are directions in\n"
    "the angle unit, start and sense of the settings. Rows of other points aren't\n"
    "looked at.\n");

namespace {

// What lies between two points, in the unit of the file. What isn't known is kelp::kNotSet.
struct Leg {
  double distance;
  double slopeDistance;
  double height;
  double grade;      // per cent
  double direction;  // gon
};

Leg LegBetween(const Point& from, const Point& to) {
  Leg leg{Distanza2pt(from.easting, from.northing, to.easting, to.northing), kelp::kNotSet,
          kelp::kNotSet, kelp::kNotSet, kelp::kNotSet};
  if (leg.distance > 0) leg.direction = DirectionGon(from, to);
  if (std::max(from.elevation, to.elevation) > kelp::kNotSetThreshold) return leg;
  leg.height = to.elevation - from.elevation;
  leg.slopeDistance = std::hypot(leg.distance, leg.height);
  if (leg.distance > 0) leg.grade = 100 * leg.height / leg.distance;
  return leg;
}

class InverseTexts {
 public:
  InverseTexts(const LengthUnit& unit, const LengthStyle& style, const CMeasUnitSystem& settings,
               bool bearings)
      : m_unit(unit), m_style(style), m_settings(settings), m_bearings(bearings) {}

  std::vector<WString> Heads() const {
    return {WithUnit(KTEXT("Distance"), *m_style.unit),
            WithUnit(KTEXT("Slope distance"), *m_style.unit),
            WithUnit(KTEXT("Difference of height"), *m_style.unit), kelp::Xlate(KTEXT("Grade (%)")),
            m_bearings ? kelp::Xlate(KTEXT("Bearing")) : DirectionHead(m_settings)};
  }

  std::vector<WString> Texts(const Leg& leg) const {
    constexpr int kGradeDecimals = 2;
    std::vector<WString> texts = {Length(leg.distance), Length(leg.slopeDistance),
                                  Length(leg.height), WriteNumber(leg.grade, kGradeDecimals),
                                  WString()};
    if (leg.direction < kelp::kNotSetThreshold) {
      texts[4] = m_bearings ? BearingText(leg.direction, m_settings)
                            : DirectionText(leg.direction, m_settings);
    }
    for (WString& text : texts) {
      if (text.empty()) text = kelp::Xlate(KTEXT("not known"));
    }
    return texts;
  }

 private:
  WString Length(double value) const { return WriteLength(value, m_unit, m_style); }

  const LengthUnit& m_unit;
  const LengthStyle& m_style;
  const CMeasUnitSystem& m_settings;
  const bool m_bearings;
};

Table TableOfOne(const Point& from, const Point& to, const InverseTexts& texts) {
  Table table({{kelp::Xlate(KTEXT("From")), Align::Left}, {from.name, Align::Right}});
  table.AddRow({kelp::Xlate(KTEXT("To")), to.name});
  const std::vector<WString> heads = texts.Heads();
  const std::vector<WString> values = texts.Texts(LegBetween(from, to));
  for (std::size_t i = 0; i < heads.size(); ++i) table.AddRow({heads[i], values[i]});
  return table;
}

// A sum with something that isn't known isn't known either.
double Plus(double sum, double value) {
  return std::max(sum, value) > kelp::kNotSetThreshold ? kelp::kNotSet : sum + value;
}

Table TableOfChain(const std::vector<Point>& points, const InverseTexts& texts) {
  std::vector<Table::Column> columns = {{kelp::Xlate(KTEXT("From")), Align::Left},
                                        {kelp::Xlate(KTEXT("To")), Align::Left}};
  for (const WString& head : texts.Heads()) columns.push_back({head, Align::Right});
  Table table(columns);
  const auto addRow = [&table](const WString& from, const WString& to, std::vector<WString> row) {
    row.insert(row.begin(), {from, to});
    table.AddRow(row);
  };
  Leg sum = LegBetween(points.front(), points.back());
  sum.distance = sum.slopeDistance = 0;
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    const Leg leg = LegBetween(points[i], points[i + 1]);
    sum.distance += leg.distance;
    sum.slopeDistance = Plus(sum.slopeDistance, leg.slopeDistance);
    addRow(points[i].name, points[i + 1].name, texts.Texts(leg));
  }
  std::vector<WString> last = texts.Texts(sum);
  last[3] = last[4] = WString();  // grade and direction of a sum of legs mean nothing
  addRow(kelp::Xlate(KTEXT("Sum")), WString(), last);
  return table;
}

}  // namespace

Status InverseCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.size() < 3) {
    throw UsageFailure({KTEXT("inverse takes FILE, FROM and TO, {1} given"),
                        {WString::ValueOf(static_cast<int>(operands.size()))}});
  }
  const Settings settings = OpenSettings(line, console);
  const LengthStyle style = ChooseDistanceStyle(settings.units, line);
  const NamedPoints found = FindPoints(operands[0], NamesBehind(operands, 1),
                                       ChooseLayout(line, settings), line, console);
  RememberFiles({operands[0]});
  const InverseTexts texts(*found.layout.unit, style, settings.units, line.Has(Option::Bearing));
  console.PrintLine(LayoutText(found.layout));
  const Table table = found.points.size() == 2 ? TableOfOne(found.points[0], found.points[1], texts)
                                               : TableOfChain(found.points, texts);
  console.Print(table.Aligned(false));
  return kDone;
}

}  // namespace fieldbook
