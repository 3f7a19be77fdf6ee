// Texts of degrees, minutes and seconds beside those of GeographicLib.
#include <GeographicLib/DMS.hpp>
#include <random>

#include "bench/BenchTable.h"
#include "kelp0lang/AngleForm.h"

using GeographicLib::DMS;

namespace bench {
namespace {

constexpr auto kForm = enumDisplayAngleUnits::DMSSymbols;
constexpr auto kPlain = enumLatLonType::None;
constexpr int kDecimals = 2;

std::vector<double> Angles() {
  std::mt19937 random(45);
  std::uniform_real_distribution<> degrees(-180, 360);
  std::vector<double> angles(2048);
  for (double& angle : angles) angle = degrees(random);
  return angles;
}

std::string TheirText(double degrees) {
  return DMS::Encode(degrees, DMS::SECOND, kDecimals);
}

}  // namespace

void AddAngleWorks() {
  const auto angles = Angles();
  std::vector<kelp::WString> ourTexts;
  std::vector<std::string> theirTexts;
  for (const double angle : angles) {
    ourTexts.push_back(DegToDMS(angle, kForm, kPlain, kDecimals));
    theirTexts.push_back(TheirText(angle));
  }
  Compare("DegToDMS",
          Over(angles, [](double angle) { return DegToDMS(angle, kForm, kPlain, kDecimals); }),
          {{"GeographicLib::DMS::Encode", 0.25, Over(angles, TheirText)}});
  Compare("DMSToDeg",
          Over(ourTexts, [](const kelp::WString& text) { return DMSToDeg(text, kForm, kPlain); }),
          {{"GeographicLib::DMS::Decode", 0.25, Over(theirTexts, [](const std::string& text) {
              DMS::flag hemisphere;
              return DMS::Decode(text, hemisphere);
            })}});
}

}  // namespace bench
