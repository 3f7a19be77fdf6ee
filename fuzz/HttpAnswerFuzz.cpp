// Answers of a server that says anything, and queries for their headers. Before the first zero byte
// stands the name of a header, behind it the answer.
#include <windows.h>
#include <wininet.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// The handles of a request, which end with it.
struct Exchange {
  HINTERNET session = InternetOpenW(nullptr, INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
  HINTERNET connection;
  HINTERNET request;

  explicit Exchange(INTERNET_PORT port)
      : connection(InternetConnectW(session, u"127.0.0.1", port, nullptr, nullptr,
                                    INTERNET_SERVICE_HTTP, 0, 0)),
        request(HttpOpenRequestA(connection, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 INTERNET_FLAG_NO_AUTO_REDIRECT | INTERNET_FLAG_NO_COOKIES, 0)) {
    DWORD silence = 1000;
    InternetSetOptionW(request, INTERNET_OPTION_RECEIVE_TIMEOUT, &silence, sizeof silence);
  }
  ~Exchange() { InternetCloseHandle(session); }
};

// In a buffer of exactly the size that the call asks for.
void Query(HINTERNET request, DWORD level, const std::u16string& name) {
  for (DWORD index = 0; index < 100;) {
    DWORD size = static_cast<DWORD>((name.size() + 1) * sizeof(WCHAR));
    std::vector<WCHAR> buffer(name.c_str(), name.c_str() + name.size() + 1);
    BOOL done = HttpQueryInfoW(request, level, buffer.data(), &size, &index);
    if (!done && GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
      buffer.resize(std::max<std::size_t>(size / sizeof(WCHAR), buffer.size()));
      size = static_cast<DWORD>(buffer.size() * sizeof(WCHAR));
      done = HttpQueryInfoW(request, level, buffer.data(), &size, &index);
      Require(done);
    }
    if (!done || level != HTTP_QUERY_CUSTOM) return;
    Require(buffer[size / sizeof(WCHAR)] == 0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A connection that was given up may still be served.
  static std::mutex mutex;
  static std::string next;
  static ScriptedServer server([](ScriptedServer::Peer& peer) {
    peer.ReadHead();
    const std::string answer = [] {
      const std::lock_guard lock(mutex);
      return next;
    }();
    peer.Send(answer);
  });
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t zero = std::min(input.find('\0'), input.size());
  const std::u16string name(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(zero));
  const std::string answer = input.substr(std::min(zero + 1, input.size()));
  {
    const std::lock_guard lock(mutex);
    next = answer;
  }

  const Exchange exchange(server.Port());
  if (!HttpSendRequestW(exchange.request, nullptr, 0, nullptr, 0)) return 0;
  Query(exchange.request, HTTP_QUERY_CUSTOM, name);
  for (const DWORD level : {HTTP_QUERY_STATUS_CODE, HTTP_QUERY_STATUS_TEXT, HTTP_QUERY_VERSION,
                            HTTP_QUERY_RAW_HEADERS_CRLF, HTTP_QUERY_CONTENT_TYPE}) {
    Query(exchange.request, level, u"");
  }
  std::size_t all = 0;
  char piece[50];
  DWORD read = 0;
  while (InternetReadFile(exchange.request, piece, sizeof piece, &read) && read != 0) all += read;
  Require(all <= answer.size());
  return 0;
}
