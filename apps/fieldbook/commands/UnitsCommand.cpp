// fieldbook units: the unit settings, shown and changed.
#include <algorithm>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/console/Table.h"
#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/MeasUnitChangeContext.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kUnitsHelp = KTEXT(
    "Usage: fieldbook units [--data DIR]\n"
    "       fieldbook units set KEY VALUE... [--data DIR]\n"
    "\n"
    "Shows the settings of units, or changes them for this and all later runs.\n"
    "fieldbook show and fieldbook edit follow them.\n"
    "\n"
    "  set KEY VALUE  gives the setting KEY a value; further pairs may follow\n"
    "  --data DIR     folder of the settings (fieldbook in your application data)\n"
    "\n"
    "KEY and VALUE are\n"
    "  unit-system         metric, imperial or us-survey; sets the units of\n"
    "                      distances, areas, volumes and speeds too\n"
    "  file-units          units of points files whose heads have none\n"
    "  dist-units, ts-dist-units\n"
    "                      units of lengths that are shown; these, as file-units:\n"
    "                      m, ft, us-ft, ft-in, us-ft-in, ch, us-ch\n"
    "  area-units          m2, ft2, us-ft2, ft-in2, us-ft-in2\n"
    "  volume-units        m3, ft3, us-ft3, ft-in3, us-ft-in3, yd3, us-yd3\n"
    "  speed-units         metric, imperial\n"
    "  angle-units         deg, gon, dms, dms-blank, dms-packed, rad, mil\n"
    "  ts-angle-units      deg, gon, dms, dms-blank, dms-packed\n"
    "  lat-lon-angle-units dms, dms-blank, dms-packed\n"
    "  temperature-units   celsius\n"
    "  pressure-units      mmhg\n"
    "  coord-display-mode  east-north, north-east\n"
    "  horiz-start-angle   north, east\n"
    "  angle-dir           clockwise, counter-clockwise\n"
    "  vert-angle, date-format\n"
    "                      default\n"
    "  num-X-dec           decimals, 0 to 9; X is dist, ts-dist, area, vol, speed,\n"
    "                      coord, quote, ts-angle, angle or lat-lon-angle\n"
    "  X-inch-dec-prec     denominator of fractions of an inch: 4, 8, 16, 32 or 64;\n"
    "                      X is dist, ts-dist, area, vol, coord or quote\n"
    "\n"
    "ts is for values of a total station, coord for coordinates, quote for\n"
    "elevations.\n"
    "\n"
    "Example:\n"
    "  fieldbook units set file-units us-ft dist-units us-ft num-coord-dec 2\n");

namespace {

CMeasUnitSystem& InForce() {
  return *CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem();
}

// Prints what has changed whenever the library reports a change of the settings.
class ChangeReporter final : public kelp::CSourceEvent::IEvent {
 public:
  ChangeReporter(const Settings& before, const Settings& edited, Console& console)
      : m_context(*InForce().GetContext()), m_before(before), m_edited(edited), m_console(console) {
    m_context.Register(this);
  }
  ~ChangeReporter() { m_context.Unregister(this); }
  ChangeReporter(const ChangeReporter&) = delete;
  ChangeReporter& operator=(const ChangeReporter&) = delete;

  void OnBeginEvent(kelp::CSourceEvent*) override {}
  void OnBeforeEndEvent(kelp::CSourceEvent*) override {}
  void OnEndEvent(kelp::CSourceEvent*) override {
    if (!m_context.IsMeasUnitSystemChanged()) return;
    const Settings now{InForce(), m_edited.fileUnits};
    for (const Setting& setting : AllSettings()) {
      if (setting.get(m_before) == setting.get(now)) continue;
      m_console.PrintLine(Message{
          KTEXT("{1}: {2} -> {3}"),
          {kelp::Xlate(setting.title), SettingText(setting, m_before), SettingText(setting, now)}}
                              .Text());
    }
    m_hasHeard = true;
  }

  bool HasHeard() const { return m_hasHeard; }

 private:
  CMeasUnitChangeContext& m_context;
  const Settings& m_before;
  const Settings& m_edited;
  Console& m_console;
  bool m_hasHeard = false;
};

bool AreEqual(const Settings& a, const Settings& b) {
  const std::vector<Setting>& all = AllSettings();
  return std::all_of(all.begin(), all.end(),
                     [&](const Setting& setting) { return setting.get(a) == setting.get(b); });
}

// Takes the edited settings over, as one change to whoever listens.
void PutInForce(const Settings& edited, const Settings& before) {
  CMeasUnitChangeContext* context = InForce().GetContext();
  const kelp::CSourceEventScope change(context);
  CCurrMeasUnitInfo::GetInstance()->CopyFrom(edited.units);
  // What CopyFrom leaves out, and what raises no flag of the library's.
  InForce() = edited.units;
  InForce().ResetNotify();
  if (!AreEqual(edited, before)) context->Notify_Changed();
}

void SetSettings(const std::vector<Argument>& operands, const Settings& before, Console& console) {
  Settings edited(before);
  for (std::size_t i = 1; i < operands.size(); i += 2) {
    const Setting& setting = RequireSetting(operands[i].text);
    if (i + 1 == operands.size()) {
      throw UsageFailure({KTEXT("{1} needs a value behind it"), {setting.key}});
    }
    setting.set(edited, ReadSetting(setting, operands[i + 1].text));
  }
  // Before it is reported, so that nothing is reported that doesn't last.
  SaveSettings(edited, before);
  const ChangeReporter reporter(before, edited, console);
  PutInForce(edited, before);
  if (!reporter.HasHeard()) console.PrintLine(kelp::Xlate(KTEXT("no setting changes")));
}

void ShowSettings(const Settings& settings, Console& console) {
  Table table({{kelp::Xlate(KTEXT("Key")), Align::Left},
               {kelp::Xlate(KTEXT("Value")), Align::Left},
               {kelp::Xlate(KTEXT("Meaning")), Align::Left}});
  for (const Setting& setting : AllSettings()) {
    table.AddRow({setting.key, SettingText(setting, settings), kelp::Xlate(setting.title)});
  }
  console.Print(table.Aligned(console.HasColour()));
}

}  // namespace

Status UnitsCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (!operands.empty() && operands[0].text != WString(KTEXT("set"))) {
    throw UsageFailure({KTEXT("units takes nothing, or set with KEY and VALUE, not \"{1}\""),
                        {Quoted(operands[0].text)}});
  }
  if (operands.size() == 1) {
    throw UsageFailure({KTEXT("units set takes KEY and VALUE, at least once"), {}});
  }
  const Settings settings = OpenSettings(line, console);
  if (operands.empty()) {
    ShowSettings(settings, console);
  } else {
    SetSettings(operands, settings, console);
  }
  return kDone;
}

}  // namespace fieldbook
