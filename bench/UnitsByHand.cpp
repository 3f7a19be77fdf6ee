#include "bench/UnitsByHand.h"

namespace bench {
namespace {

constexpr double kToDegree[] = {1.0, 0.9, 57.29577951308233, 0.05625};
constexpr double kFromDegree[] = {1.0, 1.1111111111111112, 0.01745329251994, 17.77777777777778};

double IntoTurn(double degrees, double low) {
  while (degrees < low) degrees += 360;
  while (degrees >= low + 360) degrees -= 360;
  return degrees;
}

}  // namespace

double ConvertDistByHand(double value, enumDistUnits from, enumDistUnits to) {
  static constexpr double kToMetre[] = {1.0, 0.3048, 0.3048006096012192, 20.1168,
                                        20.116840233680467};
  static constexpr double kFromMetre[] = {1.0, 0.0, 3.2808333333333333, 0.049709695378986715,
                                          0.04970959595959596};
  const double metres = value * kToMetre[static_cast<int>(from)];
  if (to == enumDistUnits::InternationalFoot) return metres / 0.3048;
  return metres * kFromMetre[static_cast<int>(to)];
}

double ConvertAngleByHand(double value, enumAngleUnits from, enumAngleUnits to) {
  return value * kToDegree[static_cast<int>(from)] * kFromDegree[static_cast<int>(to)];
}

double TurnAngleByHand(double value, enumAngleUnits fromUnits, enumHorizStartAngle fromStart,
                       enumAngleDir fromDir, enumAngleUnits toUnits, enumHorizStartAngle toStart,
                       enumAngleDir toDir, enumNormalizeAngle normalize) {
  double degrees = value * kToDegree[static_cast<int>(fromUnits)];
  if (fromStart == enumHorizStartAngle::East) degrees -= 90;
  if (fromDir != toDir) degrees = -degrees;
  if (toStart == enumHorizStartAngle::East) degrees += 90;
  if (normalize == enumNormalizeAngle::Positive) degrees = IntoTurn(degrees, 0);
  if (normalize == enumNormalizeAngle::Symmetric) degrees = IntoTurn(degrees, -180);
  return degrees * kFromDegree[static_cast<int>(toUnits)];
}

}  // namespace bench
