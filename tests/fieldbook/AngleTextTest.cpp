#include "fieldbook/values/AngleText.h"

#include <cmath>
#include <random>
#include <tuple>

#include "tests/TestText.h"

using fieldbook::AngleNotation;
using fieldbook::kAngleNotations;
using fieldbook::ReadAngle;
using fieldbook::Reading;
using fieldbook::WriteAngle;
using kelp::WString;

namespace {

constexpr enumLatLonType kNone = enumLatLonType::None;
constexpr enumLatLonType kLat = enumLatLonType::Latitude;
constexpr enumLatLonType kLon = enumLatLonType::Longitude;

const AngleNotation& Notation(const char* name) {
  for (const AngleNotation& notation : kAngleNotations) {
    if (WString(notation.name) == WString::ConvertFromUtf8(name)) return notation;
  }
  throw std::invalid_argument(name);
}

Reading Read(const char* text, const char* notation, enumLatLonType type) {
  return ReadAngle(WString::ConvertFromUtf8(text), Notation(notation), type);
}

TEST(AngleText, UsualTextsAreRead) {
  const double full = 10 + 30.0 / 60 + 15.5 / 3600;
  const std::tuple<const char*, const char*, enumLatLonType, double> cases[] = {
      {"10\u00B030'15.5\"", "dms", kNone, full},
      {"-10\u00B0 30\u2032 15.5\u2033", "dms", kNone, -full},
      {"10:30:15.5", "dms", kNone, full},
      {"10\u00B030'15.5\"N", "dms", kNone, full},
      {"10\u00B030'15.5\" s", "dms", kLat, -full},
      {"10 30 15.5W", "dms-blank", kLon, -full},
      {"10\u00B0", "dms", kNone, 10},
      {"-0 30", "dms-blank", kNone, -0.5},
      {"10.30155", "dms-packed", kNone, full},
      {"-10.301550\"", "dms-packed", kNone, -full},
      {"10.30S", "dms-packed", kLat, -10.5},
      {"10", "dms-packed", kNone, 10},
      {"90 0 0 N", "dms", kLat, 90},
      {"400", "gon", kNone, 360},
      {"3.141592653589793", "rad", kNone, 180},
      {"-1600", "mil", kNone, -90},
      {"1e3", "deg", kNone, 1000},
      {"S45\u00B030'E", "dms", kNone, 134.5},
      {"45-30-15.5", "deg", kNone, 45 + 30.0 / 60 + 15.5 / 3600},
      {"100 gon", "dms", kNone, 90},
  };
  for (const auto& [text, notation, type, degrees] : cases) {
    const Reading reading = Read(text, notation, type);
    EXPECT_FALSE(reading.fault) << text;
    EXPECT_NEAR(reading.value, degrees, 1e-12) << text;
  }
}

TEST(AngleText, WhatCouldBeMistakenIsNot) {
  const std::tuple<const char*, const char*, enumLatLonType, const char*> cases[] = {
      {"", "dms", kNone, "there is no value"},
      {"10.5", "dms", kNone, "this could be 10.5\u00B0 or 10\u00B05'"},
      {"10\u00B030'15.5\"x", "dms", kNone, "this doesn't belong to the value"},
      {"10 30 15 20", "dms", kNone, "this doesn't belong to the value"},
      {"99999999999 0 0", "dms", kNone, "an angle lies between -1,000,000 and 1,000,000 degrees"},
      {"10\u00B060'", "dms", kNone, "minutes must be below 60"},
      {"10 59 60.0", "dms", kNone, "seconds must be below 60"},
      {"10.6000", "dms-packed", kNone, "minutes must be below 60"},
      {"10.3", "dms-packed", kNone, "this could be 10.03 or 10.30"},
      {"10.301", "dms-packed", kNone, "this could be 10.3001 or 10.3010"},
      {"-10\u00B030'S", "dms", kLat, "a sign and a hemisphere letter don't go together"},
      {"10\u00B030'E", "dms", kLat, "the letter of a latitude is N or S"},
      {"10\u00B030'N", "dms", kLon, "the letter of a longitude is E or W"},
      {"90\u00B000'01\"N", "dms", kNone, "a latitude lies between -90 and 90 degrees"},
      {"-90.001", "deg", kLat, "a latitude lies between -90 and 90 degrees"},
      {"200.1", "gon", kLon, "a longitude lies between -180 and 180 degrees"},
      {"1e7", "deg", kNone, "an angle lies between -1,000,000 and 1,000,000 degrees"},
      {"1e300", "rad", kNone, "an angle lies between -1,000,000 and 1,000,000 degrees"},
      {"nan", "gon", kNone, "not a number"},
  };
  for (const auto& [text, notation, type, fault] : cases) {
    const Reading reading = Read(text, notation, type);
    ASSERT_TRUE(reading.fault) << text;
    EXPECT_STREQ(reading.fault.Text().ToUtf8().c_str(), fault) << text;
  }
}

TEST(AngleText, ZeroHasNoSign) {
  EXPECT_EQ(WriteAngle(-1e-9, Notation("deg"), kNone, 3), WString(KTEXT("0.000")));
  EXPECT_EQ(WriteAngle(-1e-9, Notation("dms"), kNone, 1), WString(KTEXT("0\u00B000'00.0\"")));
  EXPECT_EQ(WriteAngle(-1e-9, Notation("dms"), kLat, 1), WString(KTEXT("0\u00B000'00.0\"N")));
  EXPECT_EQ(WriteAngle(-0.001, Notation("dms"), kLat, 1), WString(KTEXT("0\u00B000'03.6\"S")));
}

TEST(AngleText, BearingsCountFromNorthOrSouth) {
  const std::tuple<double, int, const char*> cases[] = {
      {0, 0, "N0\u00B000'00\"E"},           {45.5, 0, "N45\u00B030'00\"E"},
      {90, 0, "N90\u00B000'00\"E"},         {134.5, 0, "S45\u00B030'00\"E"},
      {180, 1, "S0\u00B000'00.0\"E"},       {225, 0, "S45\u00B000'00\"W"},
      {270, 0, "N90\u00B000'00\"W"},        {-44.5, 0, "N44\u00B030'00\"W"},
      {359.9999999, 0, "N0\u00B000'00\"E"}, {180.0000001, 0, "S0\u00B000'00\"E"},
      {45.9999999, 0, "N46\u00B000'00\"E"}, {1e6, 0, "N80\u00B000'00\"W"},
  };
  for (const auto& [degrees, decimals, text] : cases) {
    EXPECT_STREQ(WriteAngle(degrees, Notation("bearing"), kNone, decimals).ToUtf8().c_str(), text);
  }
}

// What the program writes in any notation it reads back, up to the decimals that were written.
TEST(AngleText, EveryNotationReadsBack) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> angle(-90, 90);
  for (int round = 0; round < 500; ++round) {
    const double degrees = angle(random);
    for (const AngleNotation& notation : kAngleNotations) {
      for (const enumLatLonType type : {kNone, kLat, kLon}) {
        if (notation.isBearing && type != kNone) continue;
        const WString text = WriteAngle(degrees, notation, type, 9);
        const Reading reading = ReadAngle(text, notation, type);
        EXPECT_FALSE(reading.fault) << text.ToUtf8().c_str();
        EXPECT_NEAR(std::remainder(reading.value - degrees, 360), 0, 6e-8) << text.ToUtf8().c_str();
      }
    }
  }
}

}  // namespace
