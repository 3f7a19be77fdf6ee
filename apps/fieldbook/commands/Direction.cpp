#include "fieldbook/commands/Direction.h"

#include "fieldbook/values/AngleText.h"
#include "kelp0lang/LegacyGeometry.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr double kFullTurn = 400;

const AngleNotation& NotationOf(const CMeasUnitSystem& settings) {
  for (const AngleNotation& notation : kAngleNotations) {
    if (notation.form == settings.GetAngleUnits()) return notation;
  }
  return kAngleNotations[0];
}

bool IsClockwise(const CMeasUnitSystem& settings) {
  return settings.GetAngleDir() == enumAngleDir::Clockwise;
}

bool IsFromNorth(const CMeasUnitSystem& settings) {
  return settings.GetHorizStartAngle() == enumHorizStartAngle::North;
}

}  // namespace

// AngoloDaAsseRifer leaves directions just below a full turn negative.
double DirectionGon(const Point& from, const Point& to) {
  const double gon = AngoloDaAsseRifer(to.easting - from.easting, to.northing - from.northing);
  return gon < 0 ? gon + kFullTurn : gon;
}

WString DirectionText(double gon, const CMeasUnitSystem& settings) {
  const WString text = settings.FromAngleToString(gon, true);
  return settings.FromAngleToString(settings.FromStringToAngle(text, true), true);
}

WString BearingText(double gon, const CMeasUnitSystem& settings) {
  const bool hasSeconds = IsDMSAngleUnits(settings.GetAngleUnits());
  return WriteBearing(AngSesdFromCent(gon), hasSeconds ? settings.GetNumAngleDec() : 0);
}

WString DirectionHead(const CMeasUnitSystem& settings) {
  const WChar* from =
      IsFromNorth(settings)
          ? (IsClockwise(settings) ? KTEXT("Direction ({1}, clockwise from north)")
                                   : KTEXT("Direction ({1}, counter-clockwise from north)"))
          : (IsClockwise(settings) ? KTEXT("Direction ({1}, clockwise from east)")
                                   : KTEXT("Direction ({1}, counter-clockwise from east)"));
  return Message{from, {NotationOf(settings).name}}.Text();
}

double ReadDirection(const WString& text, const CMeasUnitSystem& settings) {
  const Reading reading = ReadAngle(text, NotationOf(settings), enumLatLonType::None);
  if (reading.fault) {
    throw Failure({KTEXT("direction \"{1}\": {2}"), {Quoted(text), reading.fault.Text()}});
  }
  return ConvertAngle(reading.value, eConvertAngleType::Position, enumAngleUnits::Degree,
                      settings.GetHorizStartAngle(), settings.GetAngleDir(), enumAngleUnits::Gon,
                      enumHorizStartAngle::North, enumAngleDir::Clockwise,
                      enumNormalizeAngle::Positive);
}

}  // namespace fieldbook
