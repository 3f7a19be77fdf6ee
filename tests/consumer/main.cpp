#include <kelp0lang/kelp0lang.h>

#include <cstdio>

int main() {
  const double azimuth = AngSesdFromCent(33.8912);
  const kelp::WString text =
      DegToDMS(azimuth, enumDisplayAngleUnits::DMSSymbols, enumLatLonType::None, 1);
  const double feet = ConvertDist(100.0, enumDistUnits::Metre, enumDistUnits::USSurveyFoot);
  std::printf("%s, %s ft\n", text.ToUtf8().c_str(), StringDaDouble(feet, 0, 3).ToUtf8().c_str());
}
