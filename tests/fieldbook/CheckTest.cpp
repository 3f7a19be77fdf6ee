// fieldbook check and fieldbook tolerance.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "fieldbook/points/PointCheck.h"
#include "tests/fieldbook/RunProgram.h"

namespace {

using fieldbook::PlanePosition;
using fieldbook::PointPair;

bool AreNear(const PlanePosition& a, const PlanePosition& b, double tolerance) {
  return std::hypot(a.easting - b.easting, a.northing - b.northing) < tolerance;
}

// Against a look at every pair: heaps, lines and fields of points on all sides of zero.
TEST(PointCheck, EachPointThatIsNearOneBeforeItIsToldOnce) {
  std::mt19937 random(7);
  for (const double spread : {0.0, 0.5, 3.0, 20.0, 400.0}) {
    for (const double tolerance : {0.01, 1.0, 3.7}) {
      std::uniform_real_distribution<double> place(-spread, spread);
      std::vector<PlanePosition> points;
      for (int i = 0; i < 300; ++i) points.push_back({place(random), place(random)});
      for (int i = 0; i < 60; ++i) {
        // Just within the tolerance of another, just without it, and on whole squares.
        const double reach = tolerance * (i % 2 == 0 ? 0.999 : 1.001);
        points.push_back(
            {points[i].easting + reach * std::cos(i), points[i].northing + reach * std::sin(i)});
        points.push_back({std::floor(place(random)), std::floor(place(random))});
      }
      const std::vector<PointPair> pairs = fieldbook::FindNear(points, tolerance);
      std::size_t told = 0;
      for (std::size_t at = 0; at < points.size(); ++at) {
        bool isNear = false;
        for (std::size_t b = 0; b < at; ++b) isNear |= AreNear(points[at], points[b], tolerance);
        const bool isTold = told < pairs.size() && pairs[told].point == at;
        ASSERT_EQ(isTold, isNear) << spread << ' ' << tolerance << ' ' << at;
        if (!isTold) continue;
        ASSERT_LT(pairs[told].before, at);
        ASSERT_TRUE(AreNear(points[at], points[pairs[told].before], tolerance));
        ++told;
      }
      EXPECT_EQ(told, pairs.size());
    }
  }
}

// Runs on settings of its own.
class Check : public testing::Test {
 protected:
  ProgramResult Run(std::vector<std::string> arguments) const {
    arguments.push_back("--data=" + m_folder.PathOf("data").string());
    return RunFieldbook(arguments);
  }
  DataFolder m_folder;
};

TEST_F(Check, SeveralFilesAreOneListWithTheirOwnUnits) {
  const std::string a = m_folder.Write("a.csv", "A,0,0\n\nB,0.005,0\nC,10,10\n");
  const std::string b = m_folder.Write("b.csv", "Name,E (ft),N (ft)\nC,32.82,32.8084\nD,50,50\n");
  const ProgramResult both = Run({"check", a, b});
  const std::string found =
      b + ":2: the name \"C\" is that of " + a + ":4 too\n" + a +
      ":3: \"B\" lies 0.005 m from \"A\" (" + a + ":1)\n" + b +
      ":2: \"C\" lies 0.003536 m from \"C\" (" + a +
      ":4)\n5 points: 1 with the name of another, 2 nearer than 0.01 m to another\n";
  EXPECT_NE(both.out.find("in ft (as its heads say).\n" + found), std::string::npos) << both.out;
  EXPECT_EQ(both.status, 2);
  EXPECT_EQ(Run({"check", a}).status, 2);
  EXPECT_EQ(Run({"check", a, "--tolerance", "4 mm"}).status, 0);
  EXPECT_EQ(Run({"check", a, "--tolerance", "0"}).status, 0);
  EXPECT_NE(Run({"check", a, b, "--limit", "1"}).out.find("\nand 1 more\n"), std::string::npos);
  const ProgramResult missing = Run({"check", a + "x", b});
  EXPECT_NE(missing.out.find("2 points: 0 with the name of another, 0 nearer"), std::string::npos);
  EXPECT_EQ(missing.status, 1);
}

TEST_F(Check, TheToleranceStaysAsItWasSetUnderMetresAndUnderFeet) {
  EXPECT_EQ(Run({"tolerance"}).out, "0.01 m\n");
  EXPECT_EQ(Run({"tolerance", "0.05 ft"}).out, "tolerance: 0.01 m -> 0.01524 m\n");
  Run({"units", "set", "unit-system", "imperial"});
  EXPECT_EQ(Run({"tolerance"}).out, "0.03 ft\n") << "a tolerance of its own";
  EXPECT_EQ(Run({"tolerance", "0.05"}).out, "tolerance: 0.03 ft -> 0.05 ft\n");
  EXPECT_EQ(Run({"tolerance"}).out, "0.05 ft\n");
  Run({"units", "set", "dist-units", "us-ft-in"});
  EXPECT_EQ(Run({"tolerance", "3/4 in"}).out, "tolerance: 0.05 US ft -> 0.0625 US ft\n");
  Run({"units", "set", "unit-system", "metric"});
  EXPECT_EQ(Run({"tolerance"}).out, "0.01524 m\n");
  for (const char* refused : {"-1", "x", "1e-9", "1e12"}) {
    EXPECT_EQ(Run({"tolerance", refused}).status, 1) << refused;
  }
  EXPECT_EQ(Run({"tolerance"}).out, "0.01524 m\n");

  m_folder.Write("data/Support/fieldbook.ket", "[Check]\nTolerance_mt=1 O\n");
  const ProgramResult unknown = Run({"tolerance"});
  EXPECT_EQ(unknown.out, "0.01 m\n");
  EXPECT_EQ(unknown.err,
            "the settings have values that aren't known; the defaults stand for tolerance\n");
}

}  // namespace
