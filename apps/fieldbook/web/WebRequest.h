// What requests have in common.
#pragma once

#include <memory>

#include "fieldbook/console/Progress.h"
#include "fieldbook/web/WebClient.h"
#include "fieldbook/web/WebFailure.h"
#include "fieldbook/web/WebSession.h"

namespace fieldbook {

inline Dovek::THttpRequestOptions WebOptions(WebSession& session) {
  constexpr DWORD kSilence = 30'000;  // ms
  Dovek::THttpRequestOptions options;
  options.flags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE |
                  INTERNET_FLAG_PRAGMA_NOCACHE | INTERNET_FLAG_NO_UI;
  options.timeout = kSilence;
  options.hInternet = session.Handle();
  return options;
}

// Runs requests to an address, which may send a file; what they fail by is thrown as Failure.
template <class Work>
auto AskWeb(const WebSession& session, const Argument& address, const Argument* file, Work work) {
  try {
    return work();
  } catch (const Dovek::httpclientexceptionW& error) {
    if (session.IsStopped()) throw Failure(Stopped());
    const bool isOfFile = file != nullptr && IsWebFileError(error.ErrorId());
    throw Failure({KTEXT("{1}: {2}"),
                   {Shown(isOfFile ? file->text : address.text),
                    WebErrorText(error.ErrorId(), error.Win32Error())}});
  }
}

}  // namespace fieldbook
