#include "fieldbook/commands/PointTable.h"

#include <utility>

#include "kelp0lang/MeasUnitLabel.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

WString WithCurrentUnit(const WString& head) {
  return GetDistLabel(head, enumMeasUnitSize::Normal, true);
}

}  // namespace

PointStyle StyleOfOptions(const CommandLine& line) {
  const LengthStyle style = ChooseLengthStyle(line);
  return {style,
          style,
          false,
          {WithUnit(KTEXT("Northing"), *style.unit), WithUnit(KTEXT("Easting"), *style.unit),
           WithUnit(KTEXT("Elevation"), *style.unit)}};
}

PointStyle StyleOfSettings(const CMeasUnitSystem& settings, const CommandLine& line) {
  const LengthUnit& unit = kLengthUnits[static_cast<int>(settings.GetDistUnits())];
  constexpr auto kWord = enumCoordLabelMode::Word;
  return {{&unit, ChooseDecimals(line, settings.GetNumCoordDec()),
           ChooseFraction(line, settings.GetCoordInchDecPrec())},
          {&unit, ChooseDecimals(line, settings.GetNumQuoteDec()),
           ChooseFraction(line, settings.GetQuoteInchDecPrec())},
          settings.GetCoordDisplayMode() == enumCoordDisplayMode::EastNorth,
          {WithCurrentUnit(GetCoord1Label(WString(), kWord)),
           WithCurrentUnit(GetCoord2Label(WString(), kWord)),
           WithCurrentUnit(kelp::Xlate(KTEXT("Elevation")))}};
}

std::vector<WString> CoordinateTexts(const Point& point, const LengthUnit& unit,
                                     const PointStyle& style) {
  std::vector<WString> texts = {WriteLength(point.northing, unit, style.plane),
                                WriteLength(point.easting, unit, style.plane),
                                WriteLength(point.elevation, unit, style.height)};
  if (style.isEastFirst) std::swap(texts[0], texts[1]);
  return texts;
}

Table MakePointTable(const std::vector<Point>& points, const LengthUnit& unit,
                     const PointStyle& style, const Watch& watch) {
  Table table({{kelp::Xlate(KTEXT("Point")), Align::Left},
               {style.heads[0], Align::Right},
               {style.heads[1], Align::Right},
               {style.heads[2], Align::Right},
               {kelp::Xlate(KTEXT("Description")), Align::Left}});
  std::size_t row = 0;
  for (const Point& point : points) {
    if (watch && row % kWatchedRows == 0) {
      watch(static_cast<double>(row) / static_cast<double>(points.size()));
    }
    ++row;
    const std::vector<WString> texts = CoordinateTexts(point, unit, style);
    table.AddRow({point.name, texts[0], texts[1], texts[2], point.description});
  }
  return table;
}

}  // namespace fieldbook
