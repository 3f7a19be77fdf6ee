// The settings of a user: the folder in which they are kept, and the keys by which the user sees
// and changes them. Those of units are the library's own and stand in its file; the others stand
// beside it, see SettingsFile.h.
#pragma once

#include <vector>

#include "console/Console.h"
#include "fieldbook/points/PointLayout.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace fieldbook {

struct Settings {
  CMeasUnitSystem units;
  // Of the coordinates in points files whose heads have no unit.
  enumDisplayDistUnits fileUnits = enumDisplayDistUnits::Metre;
};

// The values of a setting, one after another. They have words, or are numbers themselves.
struct Choices {
  const WChar* const* names;
  int first;
  int count;
};

struct Setting {
  const WChar* key;    // on the command line
  const WChar* title;  // a source text
  Choices choices;
  int (*get)(const Settings& settings);
  void (*set)(Settings& settings, int value);
};

// In the order in which they are shown. The unit system comes first, since it sets further ones.
const std::vector<Setting>& AllSettings();

// Throws UsageFailure, with the keys that there are.
const Setting& RequireSetting(const WString& key);
// The value that a text stands for. Throws UsageFailure, with the texts that there are.
int ReadSetting(const Setting& setting, const WString& text);
WString SettingText(const Setting& setting, const Settings& settings);

// The settings in force, out of the folder of --data or the user's own; without a settings file the
// defaults. A value in a file that no setting has gives its default, and a complaint. Throws
// Failure if there is no folder.
Settings OpenSettings(const CommandLine& line, Console& console);
// The complaint of settings that have unknown values, whose keys these are.
WString UnknownSettings(const WString& keys);
// Makes the folder if it isn't there. Throws Failure if the edited settings can't be written; then
// those that were there before stay.
void SaveSettings(const Settings& edited, const Settings& before);

// How points files are laid out where their heads don't say it: by --columns and --from, else by
// the settings.
LayoutWishes ChooseLayout(const CommandLine& line, const Settings& settings);

}  // namespace fieldbook
