#include "winspool/CupsBinding.h"

#include <signal.h>

#include "RunTimeLibrary.h"

namespace winapi {
namespace {

struct Binding {
  CupsCalls calls;
  bool isThere = true;

  Binding() {
    const RunTimeLibrary library("libcups.so.2");
#define WINAPI_BIND(name) isThere = library.Bind(#name, calls.name) && isThere;
    WINAPI_CUPS_CALLS(WINAPI_BIND)
#undef WINAPI_BIND
    if (isThere) Initialize();
  }

 private:
  // It has the process ignore SIGPIPE, which is the host's to decide; PipeSignalScope serves.
  void Initialize() const {
    struct sigaction before;
    sigaction(SIGPIPE, nullptr, &before);
    calls.httpInitialize();
    sigaction(SIGPIPE, &before, nullptr);
  }
};

}  // namespace

const CupsCalls* Cups() {
  static const Binding binding;
  return binding.isThere ? &binding.calls : nullptr;
}

}  // namespace winapi
