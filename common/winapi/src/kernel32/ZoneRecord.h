// A zone as the record of the Windows API; internal to the layer.
#pragma once

#include <windows.h>

#include <string>

#include "kernel32/ZoneChanges.h"

// The folder of zone files: what TZDIR names, else the system's.
std::string ZoneFolder();

// The rule of a zone file, whose last line it is given. The file may have other changes for this
// year than that rule has: those of a rule that begins later, or that follow another calendar.
ZoneRule RuleOfFile(const std::string& lastLine, const ZoneNow& now);

// Gives the part of the year, TIME_ZONE_ID_...
DWORD ToRecord(const ZoneRule& rule, const ZoneNow& now, TIME_ZONE_INFORMATION& record);
