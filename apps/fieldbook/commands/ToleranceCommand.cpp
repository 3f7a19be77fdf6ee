// fieldbook tolerance: the tolerance of fieldbook check, shown and set.
#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/SettingsFile.h"
#include "fieldbook/commands/Tolerance.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kToleranceHelp = KTEXT(
    "Usage: fieldbook tolerance [LENGTH] [--data DIR]\n"
    "\n"
    "Shows the tolerance of fieldbook check, or changes it for all later runs.\n"
    "\n"
    "  LENGTH      in the distance unit of the settings, unless a unit stands behind\n"
    "              it: 0.05 ft; 0 for no look at distances\n"
    "  --data DIR  folder of the settings\n"
    "\n"
    "Metres and feet have a tolerance each: which one counts says the setting\n"
    "unit-system. At first it is 0.01 m, and 0.03 ft.\n");

namespace {

constexpr const WChar* kSection = KTEXT("Check");
constexpr const WChar* kKey = KTEXT("Tolerance");
constexpr double kPreset = 0.01;    // metres
constexpr double kShortest = 1e-6;  // the settings file has six decimals
constexpr int kDecimals = 6;

}  // namespace

double ReadTolerance(Console& console) {
  const Reading reading = SettingsFile().ReadLength(kSection, kKey, kPreset);
  if (reading.fault) console.Complain(UnknownSettings(KTEXT("tolerance")));
  return reading.value < kShortest ? 0 : reading.value;
}

double ParseTolerance(const WChar* what, const WString& text, const Settings& settings) {
  const LengthUnit& unit = UnitOf(settings.units.GetDistUnits());
  const Reading reading = ReadLength(text, unit, DecimalMark::PointOrComma);
  if (reading.fault) {
    throw UsageFailure({KTEXT("{1} \"{2}\": {3}"), {what, Quoted(text), reading.fault.Text()}});
  }
  const double metres = ConvertDist(reading.value, unit.unit, enumDistUnits::Metre);
  if (metres == 0 || metres >= kShortest) return metres;
  throw UsageFailure({KTEXT("{1} \"{2}\": {3}"), {what, Quoted(text), OutOfRange().Text()}});
}

WString ToleranceText(double metres, const Settings& settings) {
  const LengthUnit& unit = UnitOf(settings.units.GetDistUnits());
  const LengthUnit& plain = unit.inches ? PlainFeet(unit) : unit;
  const double length = ConvertDist(metres, enumDistUnits::Metre, plain.unit);
  std::string text;
  AppendNumber(text, length, kDecimals);
  // 0.05, not 0.050000.
  const std::size_t least = text.size() - kDecimals + 2;
  while (text.size() > least && text.back() == '0') text.pop_back();
  text += ' ';
  AppendUtf8(text, kelp::Xlate(plain.symbol));
  return Decode(text, true);
}

Status ToleranceCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.size() > 2) throw UsageFailure({KTEXT("tolerance takes one LENGTH"), {}});
  const Settings settings = OpenSettings(line, console);
  const double before = ReadTolerance(console);
  if (operands.empty()) {
    console.PrintLine(ToleranceText(before, settings));
    return kDone;
  }
  WString text = operands[0].text;
  if (operands.size() == 2) text += KTEXT(' ') + operands[1].text;
  const double after = ParseTolerance(KTEXT("tolerance"), text, settings);
  SettingsFile().WriteLength(kSection, kKey, after);
  console.PrintLine(Message{KTEXT("{1}: {2} -> {3}"),
                            {kelp::Xlate(KTEXT("tolerance@@of distances")),
                             ToleranceText(before, settings), ToleranceText(after, settings)}}
                        .Text());
  return kDone;
}

}  // namespace fieldbook
