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
#include "kelptext/Compiler.h"

KELP_BUILDS_FIRST

namespace kelp {
namespace {

// The computer reads the machine's time zone now. It is a singleton: built with new, deleted by
// the walk.
struct TimeComputer {
  CGlobalLocalTimeComputer& computer = CGlobalLocalTimeComputer::GetInstance();
};
[[maybe_unused]] KELP_BUILT_FIRST TimeComputer globalLocalTimeComputer;
KELP_BUILT_FIRST CStringLoader globalStringLoader;
KELP_BUILT_FIRST CCriticalSec globalCritSection;
KELP_BUILT_FIRST CCriticalSec reportLogSection;

}  // namespace
}  // namespace kelp

KELP_BUILT_FIRST kelp::WString CIniFile::s_sDefaultIniFileName;

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

#if defined(_WIN32) && !defined(KELP0LANG_STATIC)

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
  kelp::GetGlobalStringLoader().Init(module);
  if (reason == DLL_PROCESS_ATTACH) kelp::Attach();
  if (reason == DLL_PROCESS_DETACH) kelp::Detach();
  return TRUE;
}

#else

#ifndef _WIN32
#include <iterator>

#include "winapi_host.h"
#endif

namespace {

#ifdef _WIN32
// The linker has put the library's strings among the program's own.
HMODULE Module() {
  return GetModuleHandleW(nullptr);
}
void SetStrings(HMODULE) {}
void TakeStringsAway(HMODULE) {}
#else
constexpr WORD kItalian = 1040;
constexpr WINAPI_STRING kStrings[] = {
#define KELP_STRING(id, text) {id, KTEXT(text)},
#include "kelp0lang/StringTable.inc"
};

// The strings of a library that is within the program stay apart from the program's own, which
// takes the place of those it had before: their handle is of no module.
HMODULE Module() {
#ifdef KELP0LANG_STATIC
  return reinterpret_cast<HMODULE>(const_cast<WINAPI_STRING*>(kStrings));
#else
  return GetModuleHandleW(KTEXT("kelp0lang.dll"));
#endif
}
void SetStrings(HMODULE module) {
  WinapiSetStrings(module, kItalian, kStrings, std::size(kStrings));
}
void TakeStringsAway(HMODULE module) {
  WinapiSetStrings(module, kItalian, nullptr, 0);
}
#endif

// The last static object of the library. Nobody tells the library of threads here.
struct Attachment {
  Attachment() {
    kelp::GetGlobalStringLoader().Init(module);
    SetStrings(module);
    kelp::Attach();
  }
  ~Attachment() {
    kelp::GetGlobalStringLoader().Init(module);
    kelp::Detach();
    TakeStringsAway(module);
  }

  const HMODULE module = Module();
};
KELP_BUILT_FIRST Attachment attachment;

}  // namespace

#endif

// What a program names that has the library within itself, so that the linker takes this source.
extern "C" {
extern const int kelp0lang_attachment;
const int kelp0lang_attachment = 1;
}
