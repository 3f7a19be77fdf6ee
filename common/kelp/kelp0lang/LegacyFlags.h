// Four choices that the programs keep in one place. All are false at the start; the library itself
// reads only the first. They aren't synchronised: set them before other threads read them.
#pragma once

#include "kelp0lang/Export.h"

// The Italian product; it has a helper of its own (StubCaller.h).
KELP0LANG_API bool IsModIta();
KELP0LANG_API void SetModIta(bool on);

// The rest are between the programs, and mean nothing here.
KELP0LANG_API bool IsLanguageIta();
KELP0LANG_API void SetLanguageIta(bool on);
KELP0LANG_API bool IsLumenCrashRoad();
KELP0LANG_API void SetLumenCrashRoad(bool on);
KELP0LANG_API bool IsLumenCrashSnow();
KELP0LANG_API void SetLumenCrashSnow(bool on);
