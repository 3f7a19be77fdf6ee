// Small questions to the system: its version, the rights of this process, and which programs of the
// family run beside it.
//
//   std::vector<int> ids;
//   GetRunningInstances(ids, true, false);
//   if (!ids.empty()) tell(KTEXT("Close the other programs first."));
//
// Threads: any.
#pragma once

#include <vector>

#include "kelp0lang/Export.h"

// The numbers of the version as the system tells them to this program, the service pack, and
// whether it isn't a workstation. On failure false, zeros and no server.
KELP0LANG_API bool GetOSVersion(unsigned long& major, unsigned long& minor,
                                unsigned long& servicePack, bool& isServer);
KELP0LANG_API bool GetOSVersion(unsigned long& major);

// Whether the process has the rights of the administrators' group. False where that can't be told.
KELP0LANG_API bool IsAdmin();

// Adds the process ids of the other running programs of the family, in the system's order: those of
// the office, whose names begin with "Ostrand" or "Talvera", and those of the field, with "Brevik"
// or "Lumen", all without regard to case. A process that this one may not look into is left out.
KELP0LANG_API void GetRunningInstances(std::vector<int>& ids, bool office, bool field);

namespace kelp {

// The library runs on 64-bit systems only, and as 64-bit code.
inline bool Is64bitOS() {
  return true;
}
inline bool Is32on64bitOS() {
  return false;
}

}  // namespace kelp
