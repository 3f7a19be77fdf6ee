#include <cmath>
#include <iterator>

#include "kelp0lang/UnitKinds.h"
#include "kelp0lang/ValueScan.h"

namespace kelp::detail {
namespace {

constexpr int kMostWords = 4;

struct UnitNames {
  WideView words[kMostWords];
  bool metric;
  double factor;  // metres, or feet
};

constexpr UnitNames kUnits[] = {
    {{KTEXT("m"), KTEXT("metre"), KTEXT("metres"), KTEXT("meters")}, true, 1},
    {{KTEXT("mm")}, true, 0.001},
    {{KTEXT("cm")}, true, 0.01},
    {{KTEXT("km")}, true, 1000},
    {{KTEXT("ft"), KTEXT("foot"), KTEXT("feet")}, false, 1},
    {{KTEXT("in"), KTEXT("inch"), KTEXT("inches")}, false, 1.0 / 12},
    {{KTEXT("yd"), KTEXT("yard"), KTEXT("yards")}, false, 3},
    {{KTEXT("ch"), KTEXT("chain"), KTEXT("chains")}, false, 66},
    {{KTEXT("mi"), KTEXT("mile"), KTEXT("miles")}, false, 5280},
};

constexpr double kSquareFeetPerAcre = 43560;
constexpr double kSquareMetresPerHectare = 10000;

const UnitNames* TakeName(ValueScan& scan) {
  for (const UnitNames& unit : kUnits) {
    for (const WideView word : unit.words) {
      if (!word.empty() && scan.TakeWord(word)) return &unit;
    }
  }
  return nullptr;
}

// What may stand between US and the unit.
void TakeLink(ValueScan& scan) {
  scan.TakeBlanks();
  scan.TakeDash();
  if (scan.TakeWord(KTEXT("survey"))) scan.TakeBlanks();
}

// US in front, as a word or joined to the unit; gone back from where no unit follows.
const UnitNames* TakeAfterUS(ValueScan& scan) {
  const WChar* const place = scan.Place();
  if (scan.TakeOneOf(KTEXT("uU")) && scan.TakeOneOf(KTEXT("sS"))) {
    TakeLink(scan);
    const UnitNames* const found = TakeName(scan);
    if (found != nullptr && !found->metric) return found;
  }
  scan.GoBack(place);
  return nullptr;
}

bool TakeUSBehind(ValueScan& scan) {
  const WChar* const place = scan.Place();
  scan.TakeBlanks();
  scan.TakeDash();
  if (scan.TakeWord(KTEXT("us"))) return true;
  scan.GoBack(place);
  return false;
}

bool IsLetterAhead(const ValueScan& scan) {
  const WChar lower = static_cast<WChar>(scan.Ahead() | 0x20);
  return lower >= KTEXT('a') && lower <= KTEXT('z');
}

bool TakePower(ValueScan& scan, int power) {
  const WChar* const place = scan.Place();
  scan.Take(KTEXT('^'));
  if (scan.TakeOneOf(power == 2 ? KTEXT("2\u00B2") : KTEXT("3\u00B3"))) return true;
  scan.GoBack(place);
  return false;
}

bool TakePowerWord(ValueScan& scan, int power) {
  const bool taken = power == 2 ? scan.TakeWord(KTEXT("sq")) || scan.TakeWord(KTEXT("square"))
                                : scan.TakeWord(KTEXT("cu")) || scan.TakeWord(KTEXT("cubic"));
  if (taken) scan.TakeBlanks();
  return taken;
}

// Hectares and acres, which need no power.
bool TakeLandUnit(ValueScan& scan, enumDistUnits foot, TypedUnit& unit) {
  if (scan.TakeWord(KTEXT("ha"))) {
    unit = {enumDistUnits::Metre, kSquareMetresPerHectare, UnitWord::Other};
    return true;
  }
  if (!scan.TakeWord(KTEXT("ac")) && !scan.TakeWord(KTEXT("acre")) &&
      !scan.TakeWord(KTEXT("acres"))) {
    return false;
  }
  unit = {foot, kSquareFeetPerAcre, UnitWord::Other};
  return true;
}

}  // namespace

bool ScanUnit(ValueScan& scan, int power, enumDistUnits foot, TypedUnit& unit) {
  const WChar* const place = scan.Place();
  if (power == 2 && TakeLandUnit(scan, foot, unit)) return true;
  bool powered = power == 1 || TakePowerWord(scan, power);
  if (scan.TakeWord(KTEXT("ift"))) {
    unit = {enumDistUnits::InternationalFoot, 1, UnitWord::Foot};
  } else if (scan.TakeWord(KTEXT("ftus"))) {
    unit = {enumDistUnits::USSurveyFoot, 1, UnitWord::Foot};
  } else {
    const UnitNames* found = TakeAfterUS(scan);
    const bool us = found != nullptr;
    if (!us) found = TakeName(scan);
    if (found == nullptr) {
      return scan.Place() != place || IsLetterAhead(scan) ? scan.Fail(kUnitFault, place) : true;
    }
    unit.base = found->metric ? enumDistUnits::Metre : us ? enumDistUnits::USSurveyFoot : foot;
    unit.factor = std::pow(found->factor, power);
    const bool isFoot = !found->metric && found->factor == 1;
    unit.word = isFoot ? UnitWord::Foot : UnitWord::Other;
    if (!found->metric && TakeUSBehind(scan)) unit.base = enumDistUnits::USSurveyFoot;
  }
  powered = powered || TakePower(scan, power);
  return powered || scan.Fail(kUnitFault, place);
}

}  // namespace kelp::detail
