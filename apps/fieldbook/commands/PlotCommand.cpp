// fieldbook plot: the points of a file as a drawing.
#include <algorithm>
#include <cmath>
#include <limits>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/points/PointReading.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kPlotHelp = KTEXT(
    "Usage: fieldbook plot FILE -o MAP.svg [--from UNIT] [--columns P,E,N,Z,D]\n"
    "                      [--progress]\n"
    "\n"
    "Draws the points of a file with their names, north up, with a north arrow and a\n"
    "scale bar in the distance unit of the settings. Points that follow each other in\n"
    "the file with the same description are joined by a line.\n"
    "\n"
    "  FILE                 a points file, see fieldbook show --help\n"
    "  -o, --output FILE    the drawing, in SVG; a file that is there is written over\n"
    "\n"
    "The other options are those of fieldbook show.\n");

namespace {

constexpr double kDrawing = 1000;  // the longer side of the points, in units of the drawing
constexpr double kMargin = 80;
constexpr double kBarShare = 0.25;  // of the width, at the most

struct Box {
  double east1 = std::numeric_limits<double>::max();
  double north1 = std::numeric_limits<double>::max();
  double east2 = std::numeric_limits<double>::lowest();
  double north2 = std::numeric_limits<double>::lowest();

  void Add(const Point& point) {
    east1 = std::min(east1, point.easting);
    east2 = std::max(east2, point.easting);
    north1 = std::min(north1, point.northing);
    north2 = std::max(north2, point.northing);
  }
  double Longer() const { return std::max(east2 - east1, north2 - north1); }
};

std::string Escaped(const WString& text) {
  std::string utf8, escaped;
  AppendUtf8(utf8, Shown(text));
  for (const char byte : utf8) {
    switch (byte) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += byte;
    }
  }
  return escaped;
}

// The greatest of 1, 2 and 5 times a power of ten that isn't more.
double RoundLength(double most) {
  const double power = std::pow(10, std::floor(std::log10(most)));
  for (const double factor : {5.0, 2.0}) {
    if (factor * power <= most) return factor * power;
  }
  return power;
}

class Drawing {
 public:
  Drawing(const std::vector<Point>& points, const LengthUnit& unit, const LengthUnit& barUnit)
      : m_points(points), m_unit(unit), m_barUnit(barUnit) {
    for (const Point& point : points) m_box.Add(point);
    // One point, or several at one place, stand in the middle of a drawing of their own size.
    m_scale = m_box.Longer() > 0 ? kDrawing / m_box.Longer() : 1;
  }

  std::string Svg() {
    const double width = (m_box.east2 - m_box.east1) * m_scale + 2 * kMargin;
    const double height = (m_box.north2 - m_box.north1) * m_scale + 2 * kMargin;
    m_svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\"";
    m_svg +=
        " viewBox=\"0 0 " + Number(width) + ' ' + Number(height) + "\" font-family=\"sans-serif\"";
    m_svg += " font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    PutLines();
    PutPoints();
    PutNorth(width);
    if (m_box.Longer() > 0) PutBar(height);
    m_svg += "</svg>\n";
    return std::move(m_svg);
  }

 private:
  static std::string Number(double value) {
    std::string text;
    AppendNumber(text, value, 2);
    return text;
  }
  std::string X(const Point& p) const {
    return Number((p.easting - m_box.east1) * m_scale + kMargin);
  }
  std::string Y(const Point& p) const {
    return Number((m_box.north2 - p.northing) * m_scale + kMargin);
  }

  void PutLines() {
    m_svg += "<g fill=\"none\" stroke=\"steelblue\" stroke-width=\"1.5\">\n";
    for (auto begin = m_points.begin(); begin != m_points.end();) {
      const auto end = std::find_if(begin, m_points.end(), [&begin](const Point& p) {
        return p.description != begin->description;
      });
      if (!begin->description.empty() && end - begin > 1) {
        m_svg += "<polyline points=\"";
        for (auto p = begin; p != end; ++p) m_svg += X(*p) + ',' + Y(*p) + ' ';
        m_svg.back() = '"';
        m_svg += "><title>" + Escaped(begin->description) + "</title></polyline>\n";
      }
      begin = end;
    }
    m_svg += "</g>\n";
  }

  void PutPoints() {
    for (const Point& p : m_points) {
      m_svg += "<circle cx=\"" + X(p) + "\" cy=\"" + Y(p) + "\" r=\"2.5\"/>";
      m_svg += "<text x=\"" + X(p) + "\" y=\"" + Y(p) + "\" dx=\"5\" dy=\"-5\">" + Escaped(p.name) +
               "</text>\n";
    }
  }

  void PutNorth(double width) {
    const std::string x = Number(width - kMargin / 2);
    m_svg += "<g stroke=\"black\" transform=\"translate(" + x + " 20)\">";
    m_svg += "<path d=\"M0 0 L6 22 L0 17 L-6 22 Z\"/></g>\n<text x=\"" + x;
    m_svg += "\" y=\"58\" text-anchor=\"middle\">" +
             Escaped(kelp::Xlate(KTEXT("N@@North (1 char)"))) + "</text>\n";
  }

  void PutBar(double height) {
    const double most = ConvertDist(kBarShare * kDrawing / m_scale, m_unit.unit, m_barUnit.unit);
    const double length = RoundLength(most);
    const double drawn = ConvertDist(length, m_barUnit.unit, m_unit.unit) * m_scale;
    const std::string y = Number(height - kMargin / 3);
    const std::string end = Number(kMargin + drawn);
    m_svg += "<path d=\"M" + Number(kMargin) + ' ' + y + " v-6 v6 H" + end +
             " v-6\" fill=\"none\" stroke=\"black\"/>\n<text x=\"" + end + "\" y=\"" + y +
             "\" dx=\"6\">";
    AppendExactly(m_svg, length, 0);
    if (m_svg.back() == '.') m_svg.pop_back();
    m_svg += ' ' + Escaped(kelp::Xlate(m_barUnit.symbol)) + "</text>\n";
  }

  const std::vector<Point>& m_points;
  const LengthUnit& m_unit;
  const LengthUnit& m_barUnit;
  Box m_box;
  double m_scale;
  std::string m_svg;
};

}  // namespace

Status PlotCommand(const CommandLine& line, Console& console) {
  const Argument* output = line.Value(Option::Output);
  if (line.Operands().size() != 1 || output == nullptr) {
    throw UsageFailure({KTEXT("plot takes one FILE, and {1} with the drawing"), {KTEXT("-o")}});
  }
  const Argument& source = line.Operands()[0];
  const Settings settings = OpenSettings(line, console);
  const LayoutWishes wishes = ChooseLayout(line, settings);
  PointFile file;
  {
    Progress progress(line, console);
    const Progress::Task reading(progress, KTEXT("reading"), 1);
    const auto read = [&](ByteSource& bytes, const Watch& watch) {
      file = ReadPoints(bytes, wishes, watch);
    };
    WithFile(source, read, progress);
  }
  RequirePoints(source, file.points.size(), file.faults);
  RememberFiles({source});
  ComplainOfRows(file.faults, source, console);
  const LengthUnit& barUnit = UnitOf(settings.units.GetDistUnits());
  WriteAll(*output, Drawing(file.points, *file.layout.unit, barUnit).Svg());
  console.PrintLine(LayoutText(file.layout));
  console.PrintLine(
      Message{KTEXT("{1} points drawn in {2}"),
              {WString::ValueOf(static_cast<int>(file.points.size())), Shown(output->text)}}
          .Text());
  return file.faults.IsEmpty() ? kDone : kPartly;
}

}  // namespace fieldbook
