// The unit settings: the folder in which they are kept, and the keys by which a user sees and
// changes them.
#pragma once

#include <vector>

#include "console/Console.h"
#include "fieldbook/values/Text.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace fieldbook {

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
  int (*get)(const CMeasUnitSystem& system);
  void (*set)(CMeasUnitSystem& system, int value);
};

// In the order in which they are shown. The unit system comes first, since it sets further ones.
const std::vector<Setting>& AllSettings();

// Throws UsageFailure, with the keys that there are.
const Setting& RequireSetting(const WString& key);
// The value that a text stands for. Throws UsageFailure, with the texts that there are.
int ReadSetting(const Setting& setting, const WString& text);
WString SettingText(const Setting& setting, const CMeasUnitSystem& system);

// The settings in force, out of the folder of --data or the user's own; without a settings file the
// library's defaults. A value in the file that no setting has gives its default, and a complaint.
// Throws Failure if there is no folder.
CMeasUnitSystem& OpenSettings(const CommandLine& line, Console& console);
// Makes the folder if it isn't there. Throws Failure if the settings can't be written; then those
// that were there stay.
void SaveSettings(CMeasUnitSystem& settings);

}  // namespace fieldbook
