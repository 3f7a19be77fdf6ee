// What three people type for a height, and what it is in metres.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

int main() {
  constexpr auto kUnits = enumDisplayDistUnits::InternationalFootInch;
  for (const kelp::WString typed : {KTEXT("12'6 1/2\""), KTEXT("3,82 m"), KTEXT("12 1/2")}) {
    const TValueCheck check = CheckLength(typed, kUnits);
    const double metres =
        ConvertDist(check.value, enumDistUnits::InternationalFoot, enumDistUnits::Metre);
    const kelp::WString shown =
        check.IsValue() ? StringDaDouble(metres, 0, 4) + KTEXT(" m") : check.Reason();
    std::printf("%-11s %s\n", typed.ToUtf8().c_str(), shown.ToUtf8().c_str());
  }
}
