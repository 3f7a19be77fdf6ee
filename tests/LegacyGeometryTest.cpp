#include "kelp0lang/LegacyGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kelp0lang/MeasUnit.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Within360(double a) {
  LimiteAng0_360(a);
  return a;
}

TEST(LegacyGeometry, AnglesComeIntoOneTurn) {
  EXPECT_EQ(Within360(360), 0);
  EXPECT_EQ(Within360(-0.0), 0);
  EXPECT_EQ(Within360(-90), 270);
  EXPECT_EQ(Within360(725), 5);
  EXPECT_EQ(Within360(-1e-20), 0) << "a full turn, once added, is taken off again";
  EXPECT_EQ(Within360(359.99999999999994), 359.99999999999994);

  EXPECT_NEAR(LimiteAng0_400(399.99996), -0.00004, 1e-12);
  EXPECT_EQ(LimiteAng0_400(399.99994), 399.99994);
  EXPECT_EQ(LimiteAng0_400(-0.00004), -0.00004);
  EXPECT_NEAR(LimiteAng0_400(-0.00006), 399.99994, 1e-12);
  EXPECT_EQ(LimiteAng0_400(-400), 0);

  EXPECT_EQ(LimiteAng200_200(200.00004), 200.00004);
  EXPECT_NEAR(LimiteAng200_200(200.00006), -199.99994, 1e-12);
  EXPECT_EQ(LimiteAng200_200(-199.99994), -199.99994);
  EXPECT_NEAR(LimiteAng200_200(-199.99996), 200.00004, 1e-12);
  EXPECT_EQ(LimiteAng200_200(1000), 200);
}

// The limits are met by whole turns, each rounded as the one before.
TEST(LegacyGeometry, AnglesTurnStepByStepAndEndForHugeOnes) {
  for (double turns : {1.0, 7.0, 1000.0, 4000.0}) {
    for (double start : {0.1, 123.456789, 399.9}) {
      double expected = turns * 400 + start;
      while (expected > 399.99995) expected -= 400;
      EXPECT_EQ(LimiteAng0_400(turns * 400 + start), expected);
    }
  }
  EXPECT_EQ(LimiteAng0_400(1e20), std::fmod(1e20, 400));
  for (double huge : {1e150, -1e150, 8e199, -std::numeric_limits<double>::max()}) {
    EXPECT_GE(Within360(huge), 0);
    EXPECT_LT(Within360(huge), 360);
    EXPECT_LE(std::abs(LimiteAng200_200(huge)), 200.00005);
  }
  for (double kept : {kelp::kNotSet, 9e199, kInfinity, -kInfinity}) {
    EXPECT_EQ(Within360(kept), kept);
    EXPECT_EQ(LimiteAng0_400(kept), kept);
    EXPECT_EQ(LimiteAng200_200(kept), kept);
  }
  EXPECT_TRUE(std::isnan(LimiteAng0_400(std::nan(""))));
}

TEST(LegacyGeometry, DirectionsAreClockwiseFromNorth) {
  struct Direction {
    double dx, dy, gon;
  };
  constexpr Direction kDirections[] = {
      {0, 0, 0},
      {0, 5, 0},
      {0, -1, 200},
      {0.5, 0, 100},
      {-1, 0, 300},
      {3, 3, 50},
      {3, -3, 150},
      {-3, -3, 250},
      {-3, 3, 350},
      {-5e-7, 1, -3.18309886e-5},
      {-1e-6, 1, 400 - 6.36619772e-5},
  };
  // What the ten digits of the constant leave of a turn and of the quarter between the axes.
  constexpr double kConstant = 500 * 1.31e-10;
  for (const Direction& d : kDirections) {
    EXPECT_NEAR(AngoloDaAsseRifer(d.dx, d.dy), d.gon, kConstant) << d.dx << ' ' << d.dy;
  }

  // There and back, the direction of the components is the direction.
  for (double gon = 0.5; gon < 400; gon += 7.25) {
    const double east = CalcCoordEst(1500, gon);
    const double north = CalcCoordNord(1500, gon);
    EXPECT_NEAR(AngoloDaAsseRifer(east, north), gon, kConstant);
    EXPECT_NEAR(Distanza2pt(100, 200, 100 + east, 200 + north), 1500, 1e-9);
  }
  EXPECT_EQ(CalcCoordEst(kelp::kNotSet, 1), kelp::kNotSet);
  EXPECT_EQ(CalcCoordNord(1, 9e199), kelp::kNotSet);
  EXPECT_EQ(DistQuad2pt(1, 2, 4, 6), 25);
  EXPECT_EQ(Distanza2pt(1, 2, 4, 6), 5);
}

TEST(LegacyGeometry, TurnsOfThreePoints) {
  struct Turn {
    double x1, y1, x2, y2;
    int turn;
  };
  constexpr Turn kTurns[] = {
      {1, 0, 1, 1, 1}, {1, 0, 1, -1, -1},   // to the left, to the right
      {1, 1, 2, 2, 1}, {2, 2, 1, 1, 0},     // beyond the second, between
      {1, 1, 1, 1, 0}, {1, 1, -1, -1, -1},  // on the second, behind the first
      {1, 0, 0, 0, 0}, {0, 0, 1, 1, 1},
  };
  for (const Turn& t : kTurns) {
    EXPECT_EQ(ItrePtSonoInSensoAntiOrar(10, 20, 10 + t.x1, 20 + t.y1, 10 + t.x2, 20 + t.y2), t.turn)
        << t.x1 << ' ' << t.y1 << ' ' << t.x2 << ' ' << t.y2;
  }
}

TEST(LegacyGeometry, SegmentsAndDiagonalsMeet) {
  EXPECT_TRUE(IntersezLine(0, 0, 4, 4, 0, 4, 4, 0)) << "they cross";
  EXPECT_TRUE(IntersezLine(0, 0, 4, 0, 2, 0, 2, 3)) << "one ends on the other";
  EXPECT_TRUE(IntersezLine(0, 0, 4, 0, 4, 0, 8, 0)) << "they share an end";
  EXPECT_TRUE(IntersezLine(0, 0, 4, 0, 1, 0, 2, 0)) << "one within the other";
  EXPECT_FALSE(IntersezLine(0, 0, 4, 0, 5, 0, 8, 0)) << "in line, with a gap";
  EXPECT_FALSE(IntersezLine(0, 0, 4, 0, 2, 1, 2, 3));
  EXPECT_FALSE(IntersezLine(0, 0, 1, 1, 0, 4, 4, 0)) << "it ends before the other";

  EXPECT_TRUE(IntersezDiagonaliAllInterno(0, 0, 4, 4, 0, 4, 4, 0));
  EXPECT_TRUE(IntersezDiagonaliAllInterno(0, 0, 1, 1, 0, 4, 4, 0)) << "a line, not a segment";
  EXPECT_FALSE(IntersezDiagonaliAllInterno(0, 0, 4, 4, 0, 1, 0, 4)) << "both on one side";
  EXPECT_FALSE(IntersezDiagonaliAllInterno(0, 0, 4, 4, 2, 2, 4, 0)) << "one on the line";
}

}  // namespace
