// The library's life in the process: its static objects, in the order in which they are built, and
// what happens when it is attached and detached. No other source has an object that needs building
// at load, so that this order is the only one there is.
#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/IniFile.h"
#include "kelp0lang/LocalTimeComputer.h"
#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/ReportLog.h"
#include "kelp0lang/Singleton.h"
#include "kelp0lang/StringLoader.h"

namespace kelp {
namespace {

// The computer reads the machine's time zone now. It is a singleton: built with new, deleted by
// the walk.
[[maybe_unused]] CGlobalLocalTimeComputer& globalLocalTimeComputer =
    CGlobalLocalTimeComputer::GetInstance();
CStringLoader globalStringLoader;
CCriticalSec globalCritSection;
CCriticalSec reportLogSection;

}  // namespace
}  // namespace kelp

kelp::WString CIniFile::s_sDefaultIniFileName;

namespace kelp {
namespace {

// Behind the construction of all static objects, and before their destruction.
void Attach() {
  detail::CreateCLocale();
}

void Detach() {
  detail::DeleteSingletonList();
  detail::FreeCLocale();
}

}  // namespace

CStringLoader& GetGlobalStringLoader() {
  return globalStringLoader;
}

CCriticalSec& CCriticalSec::GetGlobalCritSection() {
  return globalCritSection;
}

CCriticalSec& detail::GetReportLogSection() {
  return reportLogSection;
}

}  // namespace kelp

#ifdef _WIN32

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
  kelp::GetGlobalStringLoader().Init(module);
  if (reason == DLL_PROCESS_ATTACH) kelp::Attach();
  if (reason == DLL_PROCESS_DETACH) kelp::Detach();
  return TRUE;
}

#else

#include <iterator>

#include "winapi_host.h"

namespace {

constexpr WORD kItalian = 1040;
constexpr WINAPI_STRING kStrings[] = {
#define KELP_STRING(id, text) {id, KTEXT(text)},
#include "kelp0lang/StringTable.inc"
};

// The last static object of the library. Nobody tells the library of threads here.
struct Attachment {
  Attachment() {
    kelp::GetGlobalStringLoader().Init(module);
    WinapiSetStrings(module, kItalian, kStrings, std::size(kStrings));
    kelp::Attach();
  }
  ~Attachment() {
    kelp::GetGlobalStringLoader().Init(module);
    kelp::Detach();
    WinapiSetStrings(module, kItalian, nullptr, 0);
  }

  const HMODULE module = GetModuleHandleW(KTEXT("kelp0lang.dll"));
} attachment;

}  // namespace

#endif
