// The tolerance: points nearer to each other than this are taken for one, measured twice.
#pragma once

#include "fieldbook/commands/Settings.h"

namespace fieldbook {

// That of the settings, metres; 0 where no points are looked for. A value that isn't a length gives
// the default, and a complaint.
double ReadTolerance(Console& console);
// A length that the user has typed, in the distance unit of the settings unless a unit stands
// behind it; metres. what is the word before it. Throws UsageFailure for one that can't be a
// tolerance.
double ParseTolerance(const WChar* what, const WString& text, const Settings& settings);
// "0.05 ft": a length in metres, in the distance unit of the settings. Feet and inches stand as
// feet, since a tolerance is mostly below their fractions.
WString ToleranceText(double metres, const Settings& settings);

}  // namespace fieldbook
