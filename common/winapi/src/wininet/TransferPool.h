// What transfers need of libcurl, used again by the next one; internal to the layer.
#pragma once

#include <curl/curl.h>
#include <signal.h>

#include <optional>
#include <string>

#include "wininet/RequestPlan.h"

namespace winapi::internet {

// A place for one transfer at a time, with the connections that earlier ones left open.
struct TransferPlace {
  CURLM* multi = nullptr;
  CURL* easy = nullptr;
  std::string server;  // that of the last transfer

  // What the easy handle is set up for, so that a transfer like the last one needn't set up the
  // same again; nothing where the next one begins anew.
  struct SetUp {
    RequestPlan plan;
    std::string certificateStore;
    DWORD connectTimeOut = 0;
  };
  std::optional<SetUp> setUp;
  curl_slist* headers = nullptr;
};

// A place, best one that has talked to that server; null members where memory is out. Connections
// and cookies are the process's, as WinINet's are.
TransferPlace TakePlace(const std::string& server);
// Its transfer has been taken out. A few places are kept, the others close their connections.
void GivePlaceBack(TransferPlace place);

// The cookies of the process.
CURLSH* SharedCookies();

// The file of certificates that servers are verified by; empty is the system's store.
std::string CertificateStore();

// While it lives a connection that has gone doesn't end the process: SIGPIPE is kept from the
// thread.
class SigPipeGuard {
 public:
  SigPipeGuard();
  ~SigPipeGuard();
  SigPipeGuard(const SigPipeGuard&) = delete;
  SigPipeGuard& operator=(const SigPipeGuard&) = delete;

 private:
  sigset_t m_before;
  bool m_blocked;
};

}  // namespace winapi::internet
