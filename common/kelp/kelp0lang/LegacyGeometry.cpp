#include "kelp0lang/LegacyGeometry.h"

#include <cmath>

#include "kelp0lang/MeasUnit.h"

using kelp::IsNotSet;

namespace {

// pi / 200 to the ten digits that all surveys of the programs were computed with, and the
// reciprocal of that; both are off by 1.3e-10 of themselves.
constexpr double kRadiansPerGon = 0.01570796327;
constexpr double kGonPerRadian = 63.66197722844561;

constexpr double kGonTolerance = 5e-5;
// The largest double below 360.
constexpr double kBelow360 = 0x1.67fffffffffffp8;

// Brings an angle into [low, high] by whole turns. A step of one turn rounds as those before it
// did, which the reports of old surveys show; beyond any number of turns met there the remainder
// serves, for a turn is lost in the rounding of a large angle.
double WithinTurn(double angle, double turn, double low, double high) {
  constexpr double kMostTurns = 4096;
  if (IsNotSet(angle) || !std::isfinite(angle)) return angle;
  if (std::abs(angle) > kMostTurns * turn) angle = std::fmod(angle, turn);
  while (angle < low) angle += turn;
  while (angle > high) angle -= turn;
  return angle;
}

}  // namespace

double Distanza2pt(const double& x1, const double& y1, const double& x2, const double& y2) {
  return std::sqrt(DistQuad2pt(x1, y1, x2, y2));
}

double DistQuad2pt(const double& x1, const double& y1, const double& x2, const double& y2) {
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  return dx * dx + dy * dy;
}

double CalcCoordEst(double dist, double gon) {
  if (IsNotSet(dist) || IsNotSet(gon)) return kelp::kNotSet;
  return std::sin(gon * kRadiansPerGon) * dist;
}

double CalcCoordNord(double dist, double gon) {
  if (IsNotSet(dist) || IsNotSet(gon)) return kelp::kNotSet;
  return std::cos(gon * kRadiansPerGon) * dist;
}

double AngoloDaAsseRifer(double dx, double dy) {
  if (dx == 0) return dy >= 0 ? 0 : 200;
  if (dy == 0) return dx >= 0 ? 100 : 300;
  return LimiteAng0_400(100 - std::atan2(dy, dx) * kGonPerRadian);
}

int ItrePtSonoInSensoAntiOrar(double x0, double y0, double x1, double y1, double x2, double y2) {
  const double dx1 = x1 - x0;
  const double dy1 = y1 - y0;
  const double dx2 = x2 - x0;
  const double dy2 = y2 - y0;
  if (dy2 * dx1 > dx2 * dy1) return 1;
  if (dx2 * dy1 > dy2 * dx1) return -1;
  if (dx2 * dx1 < 0 || dy2 * dy1 < 0) return -1;
  return dy2 * dy2 + dx2 * dx2 > dy1 * dy1 + dx1 * dx1 ? 1 : 0;
}

bool IntersezLine(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                  double dy) {
  const int turnC = ItrePtSonoInSensoAntiOrar(ax, ay, bx, by, cx, cy);
  const int turnD = ItrePtSonoInSensoAntiOrar(ax, ay, bx, by, dx, dy);
  if (turnC * turnD > 0) return false;
  const int turnA = ItrePtSonoInSensoAntiOrar(cx, cy, dx, dy, ax, ay);
  const int turnB = ItrePtSonoInSensoAntiOrar(cx, cy, dx, dy, bx, by);
  return turnA * turnB < 1;
}

bool IntersezDiagonaliAllInterno(double ax, double ay, double bx, double by, double cx, double cy,
                                 double dx, double dy) {
  const double sideC = (ax - cx) * (by - cy) - (bx - cx) * (ay - cy);
  const double sideD = (bx - dx) * (ay - dy) - (ax - dx) * (by - dy);
  return sideC * sideD > 0;
}

void LimiteAng0_360(double& a) {
  a = WithinTurn(a, 360, 0, kBelow360);
}

double LimiteAng0_400(double a) {
  return WithinTurn(a, 400, -kGonTolerance, 400 - kGonTolerance);
}

double LimiteAng200_200(double a) {
  return WithinTurn(a, 400, -(200 - kGonTolerance), 200 + kGonTolerance);
}
