#include "wininet/Transfer.h"

#include <tchar.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

#include "Fail.h"
#include "wininet/InternetError.h"

namespace winapi::internet {
namespace {

// Received bytes that wait for the caller; more stay with the server.
constexpr std::size_t kMostWaiting = 64 * 1024;

bool IsRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool WantsAccount(int status) {
  return status == 401 || status == 407;
}

}  // namespace

Transfer::Transfer(const RequestPlan& plan, const Options& options)
    : m_place(TakePlace(plan.server)),
      m_timeOuts(options.timeOuts),
      m_isSecure((plan.flags & INTERNET_FLAG_SECURE) != 0),
      m_follows((plan.flags & INTERNET_FLAG_NO_AUTO_REDIRECT) == 0) {}

Transfer::Transfer(const RequestPlan& plan, const Options& options, std::string body)
    : Transfer(plan, options) {
  m_whole = std::move(body);
  m_body = m_whole;
  SetUp(plan);
  SetUpAccounts(plan, options);
  SetUpVerb(plan, !m_body.empty(), m_body.size());
  Start();
}

Transfer::Transfer(const RequestPlan& plan, const Options& options, std::uint64_t bodySize)
    : Transfer(plan, options) {
  m_isWhole = false;
  m_bodyLeft = bodySize;
  SetUp(plan);
  SetUpAccounts(plan, options);
  SetUpVerb(plan, true, bodySize);
  Start();
}

Transfer::~Transfer() {
  if (m_isLeft) {
    curl_multi_remove_handle(m_place.multi, m_place.easy);
  } else {
    const SigPipeGuard guard;
    curl_multi_remove_handle(m_place.multi, m_place.easy);
  }
  GivePlaceBack(std::move(m_place));
}

void Transfer::Start() {
  m_lastMove = std::chrono::steady_clock::now();
  if (curl_multi_add_handle(m_place.multi, m_place.easy) != CURLM_OK) throw std::bad_alloc();
}

void Transfer::SetUp(const RequestPlan& plan) {
  CURL* const easy = m_place.easy;
  const std::string store = CertificateStore();
  const auto& last = m_place.setUp;
  const bool isSame = last && last->certificateStore == store &&
                      last->connectTimeOut == m_timeOuts.connect && last->plan.IsLike(plan);
  if (!isSame) SetUpAnew(plan, store);
  curl_easy_setopt(easy, CURLOPT_URL, plan.url.c_str());
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy, CURLOPT_READDATA, this);
  curl_easy_setopt(easy, CURLOPT_SEEKDATA, this);
}

void Transfer::SetUpAnew(const RequestPlan& plan, const std::string& store) {
  CURL* const easy = m_place.easy;
  m_place.setUp.reset();
  // A reset forgets the names of cookie files without freeing them.
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, nullptr);
  curl_easy_reset(easy);
  curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION,
                   static_cast<long>(plan.http10 ? CURL_HTTP_VERSION_1_0 : CURL_HTTP_VERSION_1_1));
  const DWORD connect = m_timeOuts.connect;
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                   connect == 0 || connect > INT_MAX ? long{INT_MAX} : static_cast<long>(connect));
  if (!plan.agent.empty()) curl_easy_setopt(easy, CURLOPT_USERAGENT, plan.agent.c_str());
  if ((plan.flags & INTERNET_FLAG_KEEP_CONNECTION) == 0) {
    curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, 1L);
  }
  // Set, and be it to nothing, so that the environment isn't asked.
  curl_easy_setopt(easy, CURLOPT_PROXY, plan.proxy.c_str());
  curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
  curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);

  constexpr long kMostRedirects = 10;
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, m_follows ? 1L : 0L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, kMostRedirects);
  const bool cookies = (plan.flags & INTERNET_FLAG_NO_COOKIES) == 0;
  curl_easy_setopt(easy, CURLOPT_SHARE, cookies ? SharedCookies() : nullptr);
  if (cookies) curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");
  SetUpSecurity(plan, store);
  SetUpHeaders(plan);

  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &OnHeader);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &OnBody);
  curl_easy_setopt(easy, CURLOPT_READFUNCTION, &OnRead);
  curl_easy_setopt(easy, CURLOPT_SEEKFUNCTION, &OnSeek);
  m_place.setUp = {plan, store, m_timeOuts.connect};
}

void Transfer::SetUpSecurity(const RequestPlan& plan, const std::string& store) {
  CURL* const easy = m_place.easy;
  const bool mayLeave = !m_isSecure || (plan.flags & INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTP) != 0;
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, mayLeave ? "http,https" : "https");
  if (store.empty()) return;
  curl_easy_setopt(easy, CURLOPT_CAINFO, store.c_str());
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
}

void Transfer::SetUpHeaders(const RequestPlan& plan) {
  // libcurl sends these by itself unless they are named without a value.
  bool has[] = {false, false, false};
  constexpr const char* kOwn[] = {"Accept:", "Content-Type:", "Expect:"};
  curl_slist_free_all(std::exchange(m_place.headers, nullptr));
  const auto add = [this](const std::string& line) {
    curl_slist* const longer = curl_slist_append(m_place.headers, line.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    m_place.headers = longer;
  };
  for (const std::string& line : plan.headers) {
    for (std::size_t i = 0; i < std::size(kOwn); ++i) {
      has[i] |= _strnicmp(line.c_str(), kOwn[i], std::strlen(kOwn[i])) == 0;
    }
    // A header with an empty value ends in a semicolon there.
    const std::size_t colon = line.find(':');
    const bool isEmpty = line.find_first_not_of(" \t", colon + 1) == std::string::npos;
    add(isEmpty ? line.substr(0, colon) + ";" : line);
  }
  for (std::size_t i = 0; i < std::size(kOwn); ++i) {
    if (!has[i]) add(kOwn[i]);
  }
  curl_easy_setopt(m_place.easy, CURLOPT_HTTPHEADER, m_place.headers);
}

void Transfer::SetUpAccounts(const RequestPlan& plan, const Options& options) {
  CURL* const easy = m_place.easy;
  // Who is asked for an account first has to send the body again.
  const long ways = static_cast<long>(m_isWhole ? CURLAUTH_BASIC | CURLAUTH_DIGEST | CURLAUTH_NTLM
                                                : CURLAUTH_BASIC);
  if (!options.account.user.empty() && (plan.flags & INTERNET_FLAG_NO_AUTH) == 0) {
    curl_easy_setopt(easy, CURLOPT_USERNAME, options.account.user.c_str());
    curl_easy_setopt(easy, CURLOPT_PASSWORD, options.account.password.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTPAUTH, ways);
    m_hasAccount = m_isWhole;
    m_place.setUp.reset();
  }
  if (!plan.proxy.empty() && !options.proxyAccount.user.empty()) {
    curl_easy_setopt(easy, CURLOPT_PROXYUSERNAME, options.proxyAccount.user.c_str());
    curl_easy_setopt(easy, CURLOPT_PROXYPASSWORD, options.proxyAccount.password.c_str());
    curl_easy_setopt(easy, CURLOPT_PROXYAUTH, ways);
    m_hasAccount = m_isWhole;
    m_place.setUp.reset();
  }
}

void Transfer::SetUpVerb(const RequestPlan& plan, bool hasBody, std::uint64_t bodySize) {
  CURL* const easy = m_place.easy;
  const bool isPost = plan.verb == "POST";
  if (hasBody || plan.verb != "GET") m_place.setUp.reset();
  if (hasBody || isPost) {
    curl_easy_setopt(easy, CURLOPT_POST, 1L);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(bodySize));
    if (!isPost) curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, plan.verb.c_str());
  } else if (plan.verb == "HEAD") {
    curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
  } else if (plan.verb != "GET") {
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, plan.verb.c_str());
  }
}

void Transfer::Take(std::size_t count) {
  m_taken += count;
  if (m_taken < m_received.size()) return;
  m_received.clear();
  m_taken = 0;
}

void Transfer::ReadMessages() {
  int left = 0;
  while (const CURLMsg* const message = curl_multi_info_read(m_place.multi, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    m_isLeft = true;
    End(message->data.result);
  }
}

// Moves the transfer on until what is waited for has come, it has ended, or nothing has moved for
// the time.
template <class Done>
bool Transfer::MoveUntil(Done done, DWORD timeOut) {
  if (done() || m_finished) return done();
  const SigPipeGuard guard;
  m_lastMove = std::chrono::steady_clock::now();
  for (;;) {
    int running = 0;
    curl_multi_perform(m_place.multi, &running);
    ReadMessages();
    if (done() || m_finished) return done();
    WaitForMove(timeOut);
    if (m_finished) return false;
  }
}

// A while, until something can move; ends the transfer where it has been silent for the time. A
// connection that isn't made yet has its own time.
void Transfer::WaitForMove(DWORD timeOut) {
  using std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;
  Milliseconds step{1000};
  curl_off_t connected = 0;
  curl_easy_getinfo(m_place.easy, CURLINFO_PRETRANSFER_TIME_T, &connected);
  const bool isEndless = timeOut == 0 || timeOut == INFINITE;
  if (!isEndless && connected > 0) {
    const auto silence = std::chrono::duration_cast<Milliseconds>(steady_clock::now() - m_lastMove);
    if (silence >= Milliseconds(timeOut)) return End(CURLE_OPERATION_TIMEDOUT);
    step = std::min(step, Milliseconds(timeOut) - silence);
  }
  int moved = 0;
  m_isWaiting = true;
  if (m_cancelled) return End(CURLE_ABORTED_BY_CALLBACK);
  curl_multi_poll(m_place.multi, nullptr, 0, static_cast<int>(step.count()), &moved);
  m_isWaiting = false;
  if (m_cancelled) return End(CURLE_ABORTED_BY_CALLBACK);
  if (moved > 0 || connected == 0) m_lastMove = steady_clock::now();
}

void Transfer::End(CURLcode result) {
  m_finished = true;
  m_result = result;
}

void Transfer::Cancel() {
  m_cancelled = true;
  if (m_isWaiting) curl_multi_wakeup(m_place.multi);
}

bool Transfer::Failed() const {
  SetLastError(ErrorOfTransfer(m_place.easy, m_result, m_isSecure));
  return false;
}

void Transfer::Resume() {
  if (!m_paused || m_finished) return;
  m_paused = false;
  const SigPipeGuard guard;
  curl_easy_pause(m_place.easy, CURLPAUSE_CONT);
}

// Whether no other head follows for the same request.
bool Transfer::IsHeadFinal() const {
  if (m_hasBody) return true;
  const int status = m_head.Status();
  if (!m_head.IsComplete() || status < 200) return false;
  if (m_follows && IsRedirect(status) && m_head.Find("Location", 0) != nullptr) return false;
  return !m_hasAccount || !WantsAccount(status);
}

// Whether all that libcurl has taken has gone out.
bool Transfer::IsSent() const {
  curl_off_t sent = 0;
  curl_easy_getinfo(m_place.easy, CURLINFO_SIZE_UPLOAD_T, &sent);
  return static_cast<std::uint64_t>(sent) >= m_allTaken;
}

bool Transfer::SendHead() {
  const auto isOut = [this] {
    long size = 0;
    curl_easy_getinfo(m_place.easy, CURLINFO_REQUEST_SIZE, &size);
    return size > 0 || m_paused;
  };
  return MoveUntil(isOut, m_timeOuts.send) || (m_finished && m_result == CURLE_OK) || Failed();
}

bool Transfer::Write(std::string_view bytes) {
  if (bytes.size() > m_bodyLeft) return Fail(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
  m_bodyLeft -= bytes.size();
  m_body = bytes;
  m_bodyTaken = 0;
  Resume();
  const auto isDone = [this] {
    const bool isRefused = m_head.IsComplete() && m_head.Status() >= 400;
    return isRefused || (m_bodyTaken == m_body.size() && IsSent());
  };
  const bool done = MoveUntil(isDone, m_timeOuts.send);
  m_body = {};
  m_bodyTaken = 0;
  // A server that has answered doesn't want the rest.
  return done || (m_finished && m_result == CURLE_OK) || Failed();
}

bool Transfer::ReceiveHead() {
  if (m_bodyLeft != 0 && !m_finished && !IsHeadFinal()) {
    return Fail(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
  }
  Resume();
  const auto isThere = [this] { return IsHeadFinal(); };
  if (MoveUntil(isThere, m_timeOuts.receive)) return true;
  if (m_result != CURLE_OK) return Failed();
  // libcurl has nothing against a connection that is closed within the head.
  return m_head.IsComplete() || Fail(ERROR_INTERNET_CONNECTION_ABORTED);
}

bool Transfer::ReceiveBody() {
  if (!Received().empty()) return true;
  Resume();
  const auto isThere = [this] { return !Received().empty(); };
  return MoveUntil(isThere, m_timeOuts.receive) || m_result == CURLE_OK || Failed();
}

std::size_t Transfer::OnHeader(char* line, std::size_t size, std::size_t count, void* self) {
  return static_cast<Transfer*>(self)->m_head.AddLine({line, size * count}) ? size * count : 0;
}

std::size_t Transfer::OnBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  transfer.m_hasBody = true;
  if (transfer.Received().size() >= kMostWaiting) {
    transfer.m_paused = true;
    return CURL_WRITEFUNC_PAUSE;
  }
  transfer.m_received.erase(0, transfer.m_taken);
  transfer.m_taken = 0;
  transfer.m_received.append(bytes, size * count);
  return size * count;
}

std::size_t Transfer::OnRead(char* buffer, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  const std::string_view rest = transfer.m_body.substr(transfer.m_bodyTaken);
  if (rest.empty() && !transfer.m_isWhole && transfer.m_bodyLeft != 0) {
    transfer.m_paused = true;
    return CURL_READFUNC_PAUSE;
  }
  const std::size_t taken = std::min(rest.size(), size * count);
  std::copy_n(rest.data(), taken, buffer);
  transfer.m_bodyTaken += taken;
  transfer.m_allTaken += taken;
  return taken;
}

// A body that was written has gone, and can't be sent once more.
int Transfer::OnSeek(void* self, curl_off_t offset, int origin) {
  auto& transfer = *static_cast<Transfer*>(self);
  const bool isWithin = offset >= 0 && static_cast<std::uint64_t>(offset) <= transfer.m_body.size();
  if (!transfer.m_isWhole || origin != SEEK_SET || !isWithin) return CURL_SEEKFUNC_FAIL;
  transfer.m_bodyTaken = static_cast<std::size_t>(offset);
  return CURL_SEEKFUNC_OK;
}

}  // namespace winapi::internet
