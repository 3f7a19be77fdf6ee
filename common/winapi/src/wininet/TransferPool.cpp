#include "wininet/TransferPool.h"

#include <winapi_host.h>
#include <windows.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <deque>
#include <mutex>
#include <utility>

#include "wininet/InternetHandle.h"

namespace winapi::internet {
namespace {

constexpr std::size_t kKeptPlaces = 8;
constexpr long kKeptConnections = 2;  // of a place

// It outlives all threads and static objects.
struct Shared {
  std::mutex mutex;
  std::deque<TransferPlace> places;  // idle, the last used at the end
  std::string certificateStore;
  std::mutex cookieMutex;
  CURLSH* cookies = nullptr;

  Shared() {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    cookies = curl_share_init();
    curl_share_setopt(cookies, CURLSHOPT_USERDATA, this);
    curl_share_setopt(cookies, CURLSHOPT_LOCKFUNC, &Lock);
    curl_share_setopt(cookies, CURLSHOPT_UNLOCKFUNC, &Unlock);
    curl_share_setopt(cookies, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
  }
  // libcurl also locks the share itself, within no other lock.
  static void Lock(CURL*, curl_lock_data, curl_lock_access, void* shared) {
    static_cast<Shared*>(shared)->cookieMutex.lock();
  }
  static void Unlock(CURL*, curl_lock_data, void* shared) {
    static_cast<Shared*>(shared)->cookieMutex.unlock();
  }
};

Shared& TheShared() {
  static Shared& shared = *new Shared;
  return shared;
}

// libcurl frees the names of cookie files only where they are set to none.
void CloseEasy(CURL* easy) {
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, nullptr);
  curl_easy_cleanup(easy);
}

void Close(TransferPlace& place) {
  const SigPipeGuard guard;
  CloseEasy(place.easy);
  curl_multi_cleanup(place.multi);
  curl_slist_free_all(place.headers);
}

// Before 8.1.1 a handle that is used again reads freed memory where an answer's first header begins
// with a blank, as it joins that to the last header of the answer before
// (https://github.com/curl/curl/pull/11103). There each transfer has a handle of its own.
bool MayUseAgain() {
  static const bool may = curl_version_info(CURLVERSION_NOW)->version_num >= 0x080101;
  return may;
}

}  // namespace

TransferPlace TakePlace(const std::string& server) {
  Shared& shared = TheShared();
  {
    const std::lock_guard lock(shared.mutex);
    const auto same = std::find_if(shared.places.rbegin(), shared.places.rend(),
                                   [&](const TransferPlace& p) { return p.server == server; });
    if (same != shared.places.rend()) {
      TransferPlace place = std::move(*same);
      shared.places.erase(std::next(same).base());
      if (MayUseAgain()) return place;
      place.setUp.reset();
      const SigPipeGuard guard;
      CloseEasy(std::exchange(place.easy, curl_easy_init()));
      return place;
    }
  }
  TransferPlace place{curl_multi_init(), curl_easy_init(), server, {}, nullptr};
  curl_multi_setopt(place.multi, CURLMOPT_MAXCONNECTS, kKeptConnections);
  return place;
}

void GivePlaceBack(TransferPlace place) {
  Shared& shared = TheShared();
  {
    const std::lock_guard lock(shared.mutex);
    shared.places.push_back(std::move(place));
    if (shared.places.size() <= kKeptPlaces) return;
    place = std::move(shared.places.front());
    shared.places.pop_front();
  }
  Close(place);
}

CURLSH* SharedCookies() {
  return TheShared().cookies;
}

std::string CertificateStore() {
  Shared& shared = TheShared();
  const std::lock_guard lock(shared.mutex);
  return shared.certificateStore;
}

SigPipeGuard::SigPipeGuard() {
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  m_blocked = pthread_sigmask(SIG_BLOCK, &pipe, &m_before) == 0;
  if (!m_blocked || sigismember(&m_before, SIGPIPE) == 0) return;
  // Where the host had it blocked, one that is pending already is the host's.
  sigset_t pending;
  sigpending(&pending);
  m_blocked = sigismember(&pending, SIGPIPE) == 0;
}

SigPipeGuard::~SigPipeGuard() {
  if (!m_blocked) return;
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  const std::timespec now{};
  sigtimedwait(&pipe, nullptr, &now);
  pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

}  // namespace winapi::internet

void WinapiSetCertificateStore(LPCWSTR file) {
  auto& shared = winapi::internet::TheShared();
  const std::lock_guard lock(shared.mutex);
  shared.certificateStore = winapi::internet::ToUtf8(file);
}
