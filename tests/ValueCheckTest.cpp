#include "kelp0lang/ValueCheck.h"

#include <cmath>
#include <random>
#include <string>

#include "kelp0lang/Translate.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::kNotSet;
using kelp::WString;

namespace {

constexpr double kPi = 3.141592653589793;

using Form = enumDisplayAngleUnits;
using Length = enumDisplayDistUnits;
using Kind = enumMeasUnitValue;

constexpr double D(double degrees, double minutes = 0, double seconds = 0) {
  return seconds / 3600 + (minutes / 60 + degrees);
}

// What a text is to be: a value, or the place and the beginning of the reason.
struct Expected {
  double value;
  int position = -1;
  const char* reason = "";
};

Expected Fault(int position, const char* reason) {
  return {kNotSet, position, reason};
}

void Compare(const TValueCheck& check, const Expected& expected, const char* text) {
  EXPECT_EQ(check.IsValue(), expected.position < 0)
      << text << ": " << check.Reason().ToUtf8().c_str();
  if (expected.position < 0) {
    EXPECT_NEAR(check.value, expected.value, 1e-12 * std::fmax(1, std::fabs(expected.value)))
        << text;
    return;
  }
  EXPECT_EQ(check.value, kNotSet) << text;
  EXPECT_EQ(check.position, expected.position) << text << ": " << check.Reason().ToUtf8().c_str();
  const std::string reason = check.Reason().ToUtf8().c_str();
  EXPECT_EQ(reason.substr(0, std::string(expected.reason).size()), expected.reason) << text;
}

WString Wide(const char* text) {
  return WString::ConvertFromUtf8(text);
}

TEST(ValueCheck, Numbers) {
  struct Case {
    const char* text;
    Expected expected;
  };
  const Case cases[] = {
      {"12.5", {12.5}},
      {" \t12,5\xC2\xA0\r\n", {12.5}},
      {"+.5", {0.5}},
      {"5.", {5}},
      {"\xE2\x88\x92"
       "3",
       {-3}},
      {"- 3", {-3}},
      {"1.5e3", {1500}},
      {"1E-2", {0.01}},
      {"3/4", {0.75}},
      {"-1 1/2", {-1.5}},
      {"\xC2\xBD", {0.5}},
      {"2\xE2\x85\x9B", {2.125}},
      {"9/8", {1.125}},
      {"\xC2\xBC", {0.25}},
      {"\xC2\xBE", {0.75}},
      {"\xE2\x85\x93", {1.0 / 3}},
      {"\xE2\x85\x94", {2.0 / 3}},
      {"\xE2\x85\x9C", {0.375}},
      {"\xE2\x85\x9D", {0.625}},
      {"\xE2\x85\x9E", {0.875}},
      {"-0", {0}},
      {"0.1234567890123456789012345678901234567890123456789012345678901234567890",
       {0.12345678901234568}},
      {"", Fault(0, "there is no value")},
      {"  ", Fault(2, "there is no value")},
      {"x", Fault(0, "not a number")},
      {"12a", Fault(2, "this doesn't belong")},
      {"12 13", Fault(3, "this doesn't belong")},
      {"1.2.3", Fault(3, "a number has one decimal mark")},
      {"1,234,567", Fault(5, "a number has one decimal mark")},
      {"1.234,5", Fault(5, "a number has one decimal mark")},
      {"--5", Fault(1, "a value has one sign")},
      {"-+5", Fault(1, "a value has one sign")},
      {"1/0", Fault(2, "the denominator")},
      {"1 3/2", Fault(2, "a fraction behind")},
      {"1.5 1/2", Fault(4, "this doesn't belong")},
      {"1/", Fault(2, "not a number")},
      {"1/x", Fault(2, "not a number")},
      {"1e", Fault(1, "this doesn't belong")},
      {"8.5e199", {8.5e199}},
      {"8.6e199", Fault(0, "out of range")},
      {"-1e999", Fault(0, "out of range")},
      {"nan", Fault(0, "not a number")},
      {"0x10", Fault(1, "this doesn't belong")},
  };
  for (const Case& each : cases) Compare(CheckNumber(Wide(each.text)), each.expected, each.text);
}

TEST(ValueCheck, Lengths) {
  struct Case {
    const char* text;
    Length units;
    Expected expected;
  };
  const double half = (6.0 + 0.5) / 12 + 12;
  const Case cases[] = {
      {"12.5", Length::Metre, {12.5}},
      {"1/2", Length::Metre, {0.5}},
      {"\xC2\xBD", Length::USSurveyFoot, {0.5}},
      {"1250 mm", Length::Metre, {1.25}},
      {"3cm", Length::Metre, {0.03}},
      {"2 km", Length::Metre, {2000}},
      {"2 Metres", Length::Metre, {2}},
      {"12ft", Length::Metre, {12 * 0.3048}},
      {"12 US ft", Length::Metre, {12 * 1200.0 / 3937}},
      {"12usft", Length::Metre, {12 * 1200.0 / 3937}},
      {"12 ft US", Length::Metre, {12 * 1200.0 / 3937}},
      {"12 ftUS", Length::Metre, {12 * 1200.0 / 3937}},
      {"12 us survey feet", Length::Metre, {12 * 1200.0 / 3937}},
      {"12 ift", Length::USSurveyFoot, {12 * 0.3048 * 3937 / 1200}},
      {"12 ft", Length::USSurveyFoot, {12}},
      {"1 m", Length::USSurveyFootInch, {3937.0 / 1200}},
      {"2 yd", Length::InternationalFoot, {6}},
      {"1 ch", Length::USSurveyFoot, {66}},
      {"33 ft", Length::USSurveyChain, {0.5}},
      {"1 mi", Length::InternationalFoot, {5280}},
      {"6 in", Length::InternationalFoot, {0.5}},
      {"12 ft 6 1/2 in", Length::InternationalFootInch, {half}},
      {"12'6 1/2\"", Length::InternationalFoot, {half}},
      {"12'-6 1/2\"", Length::InternationalFoot, {half}},
      {"12'6\"1/2", Length::InternationalFootInch, {half}},
      {"12'6.5\"", Length::InternationalFootInch, {half}},
      {"12' 6.5''", Length::InternationalFootInch, {half}},
      {"12\xE2\x80\xB2 6\xC2\xBD\xE2\x80\xB3", Length::InternationalFootInch, {half}},
      {"12-6-1/2", Length::InternationalFoot, {half}},
      {"12-6-1/2", Length::Metre, {half * 0.3048}},
      {"-12-6-\xC2\xBD", Length::USSurveyChain, {-half / 66}},
      {"12-6 1/2", Length::InternationalFootInch, {half}},
      {"12 6 1/2", Length::InternationalFootInch, {half}},
      {"-12'6-1/2\"", Length::InternationalFootInch, {-half}},
      {"12'6 1/2", Length::InternationalFootInch, {half}},
      {"12'1/2\"", Length::InternationalFootInch, {0.5 / 12 + 12}},
      {"5'0\"0/8", Length::InternationalFootInch, {5}},
      {"6.5\"", Length::InternationalFootInch, {6.5 / 12}},
      {"6\" 3/8", Length::InternationalFootInch, {6.375 / 12}},
      {"66\"", Length::InternationalFootInch, {5.5}},
      {"12.5'", Length::InternationalFootInch, {12.5}},
      {"12 1/2'", Length::InternationalFootInch, {12.5}},
      {"12.5", Length::InternationalFootInch, {12.5}},
      {"12'", Length::Metre, {12 * 0.3048}},
      {"12 1/2", Length::InternationalFootInch, Fault(0, "this could be 12 1/2' or 12'1/2\"")},
      {"-1/2", Length::InternationalFootInch, Fault(1, "this could be 1/2' or 1/2\"")},
      {"12-1/2", Length::InternationalFoot, Fault(0, "this could be 12'0 1/2\" or 12 1/2")},
      {"12'12\"", Length::InternationalFoot, Fault(3, "inches behind feet")},
      {"12-13", Length::InternationalFoot, Fault(3, "inches behind feet")},
      {"12.5'6\"", Length::InternationalFoot, Fault(5, "only the last part")},
      {"12.5-6", Length::InternationalFoot, Fault(5, "only the last part")},
      {"12'6\"8/8", Length::InternationalFoot, Fault(5, "a fraction behind")},
      {"12'6\"1/0", Length::InternationalFoot, Fault(7, "the denominator")},
      {"12'6x", Length::InternationalFoot, Fault(4, "this doesn't belong")},
      {"12-6", Length::Metre, Fault(2, "feet and inches need")},
      {"12-1/2", Length::Metre, Fault(2, "feet and inches need")},
      {"12-13-1/2", Length::Metre, Fault(3, "inches behind feet")},
      {"12-6-1", Length::Metre, Fault(2, "feet and inches need")},
      {"12 6", Length::InternationalFoot, Fault(2, "feet and inches need")},
      {"12 parsec", Length::Metre, Fault(3, "no unit")},
      {"12 us m", Length::Metre, Fault(3, "no unit")},
      {"12 m 5", Length::Metre, Fault(5, "this doesn't belong")},
      {"12 m2", Length::Metre, Fault(4, "this doesn't belong")},
      {"1e199 km", Length::Metre, Fault(0, "out of range")},
  };
  for (const Case& each : cases) {
    Compare(CheckLength(Wide(each.text), each.units), each.expected, each.text);
  }
}

TEST(ValueCheck, Angles) {
  struct Case {
    const char* text;
    Form units;
    Expected expected;
    enumLatLonType type = enumLatLonType::None;
  };
  constexpr auto kLat = enumLatLonType::Latitude;
  constexpr auto kLon = enumLatLonType::Longitude;
  const double full = D(45, 30, 15.5);
  const Case cases[] = {
      {"45.5", Form::Degree, {45.5}},
      {"50", Form::Gon, {45}},
      {"45.5\xC2\xB0", Form::Gon, {45.5}},
      {"50g", Form::Degree, {45}},
      {"50 gon", Form::DMSSymbols, {45}},
      {"1 rad", Form::Degree, {180 / kPi}},
      {"1600 mil", Form::Degree, {90}},
      {"1e1", Form::Degree, {10}},
      {"45\xC2\xB0"
       "30'15.5\"",
       Form::Gon,
       {full}},
      {"-45\xC2\xBA 30\xE2\x80\xB2 15,5\xE2\x80\xB3", Form::Degree, {-full}},
      {"\xE2\x88\x92"
       "45\xC2\xB0"
       "30\xE2\x80\x99"
       "15.5\xE2\x80\x9D",
       Form::Degree,
       {-full}},
      {"45-30-15.5", Form::DMSSymbols, {full}},
      {"45 30 15.5\"", Form::DMSBlanks, {full}},
      {"45:30:15.5", Form::Degree, {full}},
      {"45d30'15.5''", Form::Degree, {full}},
      {"45d30m15.5s", Form::Degree, {full}},
      {"45 deg 30", Form::Degree, {45.5}},
      {"45\xC2\xB0"
       "30.5'",
       Form::DMSSymbols,
       {D(45, 30.5)}},
      {"45-30.5", Form::DMSSymbols, {D(45, 30.5)}},
      {"30'", Form::Gon, {0.5}},
      {"30'15\"", Form::Degree, {D(0, 30, 15)}},
      {"15.5\"", Form::DMSSymbols, {15.5 / 3600}},
      {"15''", Form::Degree, {15.0 / 3600}},
      {"45", Form::DMSSymbols, {45}},
      {"45.30", Form::DMSPacked, {45.5}},
      {"45.3015", Form::DMSPacked, {D(45, 30, 15)}},
      {"-45.301550\"", Form::DMSPacked, {-full}},
      {"45.5\xC2\xB0", Form::DMSPacked, {45.5}},
      {"45-30-15.5", Form::DMSPacked, {full}},
      {"S45\xC2\xB0"
       "30'15.5\"E",
       Form::DMSSymbols,
       {180 - full}},
      {"N 45-30-15.5 W", Form::DMSSymbols, {360 - full}},
      {"s 10 w", Form::Degree, {190}},
      {"N50E", Form::Gon, {45}},
      {"N50gE", Form::Degree, {45}},
      {"S45dE", Form::Degree, {135}},
      {"N0W", Form::Degree, {0}},
      {"N0.5W", Form::Degree, {359.5}},
      {"S90E", Form::Degree, {90}},
      {"45\xC2\xB0"
       "30'15.5\"N",
       Form::DMSSymbols,
       {full},
       kLat},
      {"S45-30-15.5", Form::DMSSymbols, {-full}, kLat},
      {"45.5\xC2\xB0 w", Form::DMSSymbols, {-45.5}, kLon},
      {"E180", Form::Degree, {180}, kLon},
      {"45E", Form::Degree, {45}, kLon},
      {"45S", Form::Degree, {-45}},
      {"-45", Form::Degree, {-45}, kLat},
      {"45d30m15sS", Form::Degree, {-D(45, 30, 15)}, kLat},
      {"1000000", Form::Degree, {1e6}},
      {"45.3", Form::DMSPacked, Fault(0, "this could be 45.03 or 45.30")},
      {"45.301", Form::DMSPacked, Fault(0, "this could be 45.3001 or 45.3010")},
      {"45.5", Form::DMSSymbols,
       Fault(0,
             "this could be 45.5\xC2\xB0 or 45\xC2\xB0"
             "5'")},
      {"45d30m15S", Form::Degree, Fault(8, "this could be \" or S"), kLat},
      {"45.6015", Form::DMSPacked, Fault(3, "minutes must be")},
      {"45.3060", Form::DMSPacked, Fault(5, "seconds must be")},
      {"45-60", Form::Degree, Fault(3, "minutes must be")},
      {"45-30-60", Form::Degree, Fault(6, "seconds must be")},
      {"60'", Form::Degree, Fault(0, "minutes must be")},
      {"60\"", Form::Degree, Fault(0, "seconds must be")},
      {"45.5\xC2\xB0"
       "30'",
       Form::Degree, Fault(5, "only the last part")},
      {"45\xC2\xB0"
       "30.5'15\"",
       Form::Degree, Fault(8, "only the last part")},
      {"45-30-15", Form::Gon, Fault(2, "degrees, minutes and seconds need")},
      {"45 30 15 5", Form::DMSBlanks, Fault(9, "this doesn't belong")},
      {"45\xC2\xB0"
       "15\"",
       Form::Degree, Fault(5, "this doesn't belong")},
      {"junk", Form::DMSSymbols, Fault(0, "not a number")},
      {"\xC2\xB0", Form::DMSSymbols, Fault(0, "not a number")},
      {"N", Form::Degree, Fault(1, "not a number"), kLat},
      {"-45N", Form::Degree, Fault(3, "a sign and"), kLat},
      {"N-45", Form::Degree, Fault(1, "a sign and"), kLat},
      {"N45N", Form::Degree, Fault(3, "a value has one hemisphere"), kLat},
      {"45E", Form::Degree, Fault(2, "the letter of a latitude is N or S"), kLat},
      {"45N", Form::Degree, Fault(2, "the letter of a longitude is E or W"), kLon},
      {"90.5", Form::Degree, Fault(0, "a latitude lies"), kLat},
      {"100g 1", Form::Degree, Fault(5, "this doesn't belong"), kLat},
      {"101g", Form::Degree, Fault(0, "a latitude lies"), kLat},
      {"W181", Form::Degree, Fault(1, "a longitude lies"), kLon},
      {"1000001", Form::Degree, Fault(0, "an angle lies")},
      {"E45N", Form::Degree, Fault(0, "a bearing has north")},
      {"N45S", Form::Degree, Fault(0, "a bearing has north")},
      {"W45E", Form::Degree, Fault(0, "a bearing has north")},
      {"N91E", Form::Degree, Fault(1, "a bearing lies")},
  };
  for (const Case& each : cases) {
    Compare(CheckAngle(Wide(each.text), each.units, each.type), each.expected, each.text);
  }
}

// German east is O, which is west in Italian: the user's own letter goes first, English ones stay.
TEST(ValueCheck, LettersOfTheUsersLanguage) {
  const TempFolder folder;
  folder.Write("de.po", "msgid \"E@@East (1 char)\"\nmsgstr \"O\"\n");
  ASSERT_TRUE(kelp::LoadTranslateFile(folder.Wide(KTEXT("de.po")).c_str()));
  constexpr auto kLon = enumLatLonType::Longitude;
  const std::pair<const char*, double> cases[] = {{"45O", 45}, {"45e", 45}, {"45W", -45}};
  for (const auto& [text, degrees] : cases) {
    Compare(CheckAngle(Wide(text), Form::Degree, kLon), {degrees}, text);
  }
  Compare(CheckAngle(Wide("S10O"), Form::Degree, enumLatLonType::None), {170}, "S10O");
  Compare(CheckAngle(Wide("45N"), Form::Degree, kLon),
          Fault(2, "the letter of a longitude is O or W"), "45N");
  kelp::UnloadTranslateFile();
}

// Values are the stored ones, under units, start and sense of the system.
TEST(ValueCheck, KindsUnderASystem) {
  CMeasUnitSystem metric;
  CMeasUnitSystem us;
  us.SetUnitSystem(enumUnitSystem::USSurvey, true);
  us.SetAngleUnits(Form::DMSSymbols);
  us.SetHorizStartAngle(enumHorizStartAngle::East);
  us.SetAngleDir(enumAngleDir::CounterClockwise);
  CMeasUnitSystem inches(us);
  inches.SetDistUnits(Length::USSurveyFootInch);
  inches.SetAreaUnits(enumDisplayAreaUnits::SquareUSSurveyFootInch);
  inches.SetVolumeUnits(enumDisplayVolumeUnits::CubicUSSurveyFootInch);
  const double foot = 1200.0 / 3937;
  struct Case {
    const char* text;
    Kind kind;
    const CMeasUnitSystem* system;
    Expected expected;
  };
  const Case cases[] = {
      {"12.5", Kind::Dist, &metric, {12.5}},
      {"100", Kind::Coord, &us, {100 * foot}},
      {"100", Kind::TSDist, &us, {100 * foot}},
      {"100 ift", Kind::Quote, &us, {30.48}},
      {"5'6\"", Kind::Coord2, &inches, {5.5 * foot}},
      {"12.5", Kind::Area, &metric, {12.5}},
      {"2 ha", Kind::Area, &us, {20000}},
      {"100 sq ft", Kind::Area, &metric, {9.290304}},
      {"1 sq ift", Kind::Area, &us, {0.09290304}},
      {"1 us ft^2", Kind::Area, &metric, {foot * foot}},
      {"3 m\xC2\xB2", Kind::Area, &us, {3}},
      {"1 yd2", Kind::Area, &metric, {9 * 0.09290304}},
      {"1 acre", Kind::Area, &us, {43560 * foot * foot}},
      {"5'6\"", Kind::Area, &inches, {5.5 * foot * foot}},
      {"-3 m3", Kind::Volume, &metric, {-3}},
      {"2 cu yd", Kind::Volume, &us, {54 * foot * foot * foot}},
      {"5'6\"", Kind::Volume, &inches, {5.5 * foot * foot * foot}},
      {"1", Kind::VolPerDist, &us, {foot * foot * foot * foot}},
      {"36 km/h", Kind::Speed, &metric, {10}},
      {"1e1 m/s", Kind::Speed, &us, {10}},
      {"-6.21371", Kind::Speed, &us, {-10}},
      {"100", Kind::PosAngle, &metric, {100}},
      {"-100", Kind::RotAngle, &metric, {-100}},
      {"500", Kind::LenAngle, &metric, {100}},
      {"45", Kind::TSAngle, &metric, {45}},
      {"0", Kind::PosAngle, &us, {100}},
      {"90", Kind::RotAngle, &us, {-100}},
      {"90", Kind::LenAngle, &us, {100}},
      {"N90E", Kind::PosAngle, &us, {100}},
      {"S45E", Kind::PosGeomAngle, &us, {7 * kPi / 4}},
      {"90", Kind::PosGeomAngle, &us, {kPi / 2}},
      {"90", Kind::RotGeomAngle, &us, {kPi / 2}},
      {"90", Kind::LenGeomAngle, &us, {kPi / 2}},
      {"45\xC2\xB0S", Kind::LatAngle, &us, {-kPi / 4}},
      {"180E", Kind::LonAngle, &metric, {kPi}},
      {"-1.5 \xC2\xB0"
       "C",
       Kind::Temperature,
       &metric,
       {-1.5}},
      {"760 mmHg", Kind::Pressure, &metric, {760}},
      {"12.5 %", Kind::Slope, &metric, {12.5}},
      {"1/2", Kind::Number, &metric, {0.5}},
      {"2.5", Kind::NumberThreeDec, &metric, {2.5}},
      {"-42", Kind::Integer, &metric, {-42}},
      {"5 m", Kind::Area, &metric, Fault(2, "no unit")},
      {"5 m2", Kind::Volume, &metric, Fault(2, "no unit")},
      {"5 m", Kind::Area, &inches, Fault(2, "this doesn't belong")},
      {"5 ha", Kind::Volume, &metric, Fault(2, "no unit")},
      {"5 km", Kind::Speed, &metric, Fault(2, "this doesn't belong")},
      {"90E", Kind::PosAngle, &us, Fault(2, "a bearing has")},
      {"N90E", Kind::RotAngle, &us, Fault(0, "not a number")},
      {"1e2 m2", Kind::Area, &metric, {100}},
      {"1e1", Kind::Integer, &metric, Fault(0, "a whole number")},
      {"4.0", Kind::Integer, &metric, Fault(0, "a whole number")},
      {"1", static_cast<Kind>(50), &metric, Fault(0, "there are no values")},
  };
  for (const Case& each : cases) {
    const TValueCheck check = CheckValue(Wide(each.text), each.kind, *each.system);
    if (each.expected.position < 0) {
      // The factors of the angle and the power units have 13 digits and more.
      EXPECT_NEAR(check.value, each.expected.value, 1e-11 * std::fabs(each.expected.value))
          << each.text;
    } else {
      Compare(check, each.expected, each.text);
    }
  }
}

// What the library shows under any units is a value, and the same one to its last decimal.
TEST(ValueCheck, ReadsWhatTheLibraryShows) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> any(-80, 80);
  for (int round = 0; round < 2000; ++round) {
    CMeasUnitSystem system;
    system.SetDistUnits(static_cast<Length>(round % 7));
    system.SetAreaUnits(static_cast<enumDisplayAreaUnits>(round % 5));
    system.SetVolumeUnits(static_cast<enumDisplayVolumeUnits>(round % 7));
    system.SetAngleUnits(static_cast<Form>(round % 7));
    system.SetTSAngleUnits(static_cast<Form>(round % 7));
    system.SetLatLonAngleUnits(static_cast<Form>(2 + round % 3));
    for (int kind = 0; kind <= 22; ++kind) {
      const auto value = static_cast<Kind>(kind);
      const double stored = kind == 11 || kind == 12 ? any(random) / 60 : any(random);
      const WString text = system.FromValueToString(stored, value);
      const TValueCheck check = CheckValue(text, value, system);
      ASSERT_TRUE(check.IsValue()) << kind << ' ' << round % 7 << ' ' << text.ToUtf8().c_str()
                                   << ": " << check.Reason().ToUtf8().c_str();
      EXPECT_NEAR(check.value, system.FromStringToValue(text, value), 1e-9)
          << kind << ' ' << round % 7 << ' ' << text.ToUtf8().c_str();
    }
  }
}

}  // namespace
