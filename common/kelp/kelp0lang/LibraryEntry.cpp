// The library's life in the process: its static objects, in the order in which they are built, and
// what happens when it is attached and detached. No other source has an object that needs building
// at load, so that this order is the only one there is.
#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/LocalTimeComputer.h"
#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/Singleton.h"

namespace kelp {
namespace {

// The computer reads the machine's time zone now. It is a singleton: built with new, deleted by
// the walk.
[[maybe_unused]] CGlobalLocalTimeComputer& globalLocalTimeComputer =
    CGlobalLocalTimeComputer::GetInstance();
CCriticalSec globalCritSection;

// Behind the construction of all static objects, and before their destruction.
void Attach() {
  detail::CreateCLocale();
}

void Detach() {
  detail::DeleteSingletonList();
  detail::FreeCLocale();
}

}  // namespace

CCriticalSec& CCriticalSec::GetGlobalCritSection() {
  return globalCritSection;
}

}  // namespace kelp

#ifdef _WIN32

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) kelp::Attach();
  if (reason == DLL_PROCESS_DETACH) kelp::Detach();
  return TRUE;
}

#else

namespace {

// The last static object of the library.
struct Attachment {
  Attachment() { kelp::Attach(); }
  ~Attachment() { kelp::Detach(); }
} attachment;

}  // namespace

#endif
