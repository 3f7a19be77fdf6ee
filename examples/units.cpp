// A length and a direction as the settings of two users show them, and one of them typed.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

namespace {

void Show(const char* user, const CMeasUnitSystem& system) {
  const kelp::WString length = system.FromDistToString(12.5);          // metres
  const kelp::WString direction = system.FromAngleToString(50, true);  // gon
  const kelp::WString head = GetUnitMeasureLabel(system, KTEXT("D"), enumMeasUnitValue::Dist,
                                                 enumMeasUnitSize::Normal, true);
  std::printf("%-9s %s %s, direction %s\n", user, head.ToUtf8().c_str(), length.ToUtf8().c_str(),
              direction.ToUtf8().c_str());
}

void Type(const CMeasUnitSystem& system, const kelp::WString& typed) {
  const TValueCheck check = CheckValue(typed, enumMeasUnitValue::PosAngle, system);
  if (check.IsValue()) {
    std::printf("%s is %.4f gon\n", typed.ToUtf8().c_str(), check.value);
  } else {
    std::printf("%s: %s (at %d)\n", typed.ToUtf8().c_str(), check.Reason().ToUtf8().c_str(),
                check.position);
  }
}

}  // namespace

int main() {
  CMeasUnitSystem metric;
  CMeasUnitSystem survey;
  survey.SetUnitSystem(enumUnitSystem::USSurvey, true);
  survey.SetNumDistDec(2);
  survey.SetAngleUnits(enumDisplayAngleUnits::DMSSymbols);
  survey.SetNumAngleDec(1);
  Show("surveyor", metric);
  Show("engineer", survey);

  Type(survey, KTEXT("45-30-15.5"));
  Type(survey, KTEXT("S45°30'E"));
  Type(survey, KTEXT("45°75'"));
}
