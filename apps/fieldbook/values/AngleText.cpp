#include "fieldbook/values/AngleText.h"

#include <cmath>

namespace fieldbook {
namespace {

double Same(double degrees) {
  return degrees;
}

bool IsZero(const TDMS& angle) {
  return angle.degrees == 0 && angle.minutes == 0 && angle.seconds == 0;
}

}  // namespace

const AngleNotation kAngleNotations[8] = {
    {KTEXT("deg"), enumDisplayAngleUnits::Degree, Same, 6},
    {KTEXT("gon"), enumDisplayAngleUnits::Gon, AngCentFromSesd, 5},
    {KTEXT("rad"), enumDisplayAngleUnits::Radian, AngRadiFromSesd, 8},
    {KTEXT("mil"), enumDisplayAngleUnits::Mil, Deg2Mils, 4},
    {KTEXT("dms"), enumDisplayAngleUnits::DMSSymbols, nullptr, 2},
    {KTEXT("dms-blank"), enumDisplayAngleUnits::DMSBlanks, nullptr, 2},
    {KTEXT("dms-packed"), enumDisplayAngleUnits::DMSPacked, nullptr, 2},
    {KTEXT("bearing"), enumDisplayAngleUnits::DMSSymbols, nullptr, 2, true},
};

Reading ReadAngle(const WString& text, const AngleNotation& notation, enumLatLonType type) {
  return ToReading(CheckAngle(text, notation.form, type));
}

WString WriteAngle(double degrees, const AngleNotation& notation, enumLatLonType type,
                   int decimals) {
  if (notation.isBearing) return WriteBearing(degrees, decimals);
  if (!IsDMSAngleUnits(notation.form)) return WriteNumber(notation.fromDegrees(degrees), decimals);
  const bool isZero = degrees < 0 && IsZero(DegToTDMS(degrees, decimals));
  return DegToDMS(isZero ? 0.0 : degrees, notation.form, type, decimals);
}

WString WriteBearing(double degrees, int decimals) {
  constexpr double kFullTurn = 360, kHalfTurn = 180, kRightAngle = 90;
  // From north, to the east where it is positive.
  const double turn = std::remainder(degrees, kFullTurn);
  const bool isSouth = std::abs(turn) > kRightAngle;
  const double angle = isSouth ? kHalfTurn - std::abs(turn) : std::abs(turn);
  const bool isWest = turn < 0 && !IsZero(DegToTDMS(angle, decimals));
  return WString(isSouth ? KTEXT("S") : KTEXT("N"))
      .Concat(DegToDMS(angle, enumDisplayAngleUnits::DMSSymbols, enumLatLonType::None, decimals))
      .Concat(isWest ? KTEXT("W") : KTEXT("E"));
}

}  // namespace fieldbook
