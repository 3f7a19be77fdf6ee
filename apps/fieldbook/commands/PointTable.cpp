#include "fieldbook/commands/PointTable.h"

#include <utility>

#include "kelp0lang/Translate.h"

namespace fieldbook {

PointStyle ChoosePointStyle(const CMeasUnitSystem& settings, const CommandLine& line) {
  PointStyle style;
  style.isEastFirst = settings.GetCoordDisplayMode() == enumCoordDisplayMode::EastNorth;
  if (line.Has(Option::To)) {
    style.plane = style.height = ChooseLengthStyle(line);
    return style;
  }
  const LengthUnit& unit = UnitOf(settings.GetDistUnits());
  style.plane = StyleIn(unit, line, settings.GetNumCoordDec(), settings.GetCoordInchDecPrec());
  style.height = StyleIn(unit, line, settings.GetNumQuoteDec(), settings.GetQuoteInchDecPrec());
  return style;
}

std::vector<WString> PointHeads(const PointStyle& style) {
  std::vector<WString> heads = {
      kelp::Xlate(KTEXT("Point")), WithUnit(KTEXT("Easting"), *style.plane.unit),
      WithUnit(KTEXT("Northing"), *style.plane.unit),
      WithUnit(KTEXT("Elevation"), *style.height.unit), kelp::Xlate(KTEXT("Description"))};
  if (!style.isEastFirst) std::swap(heads[1], heads[2]);
  return heads;
}

Table MakePointTable(const PointStyle& style) {
  const std::vector<WString> heads = PointHeads(style);
  return Table({{heads[0], Align::Left},
                {heads[1], Align::Right},
                {heads[2], Align::Right},
                {heads[3], Align::Right},
                {heads[4], Align::Left}});
}

CoordinateWriter::CoordinateWriter(const LengthUnit& unit, const PointStyle& style)
    : m_unit(unit), m_style(style) {}

const std::string (&CoordinateWriter::Write(double easting, double northing, double elevation))[3] {
  WriteOne(easting, m_style.plane, m_texts[m_style.isEastFirst ? 0 : 1]);
  WriteOne(northing, m_style.plane, m_texts[m_style.isEastFirst ? 1 : 0]);
  WriteOne(elevation, m_style.height, m_texts[2]);
  return m_texts;
}

void CoordinateWriter::WriteOne(double value, const LengthStyle& style, std::string& text) const {
  text.clear();
  AppendLength(text, value, m_unit, style);
}

}  // namespace fieldbook
