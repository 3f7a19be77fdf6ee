// A request by the calls of WinINet, for the tests of them.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>
#include <wininet.h>

#include <string>

#include "tests/winapi/WideText.h"

// The three handles of a request to this machine, which end with it.
class HttpExchange {
 public:
  static constexpr DWORD kFlags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE |
                                  INTERNET_FLAG_KEEP_CONNECTION | INTERNET_FLAG_NO_UI |
                                  INTERNET_FLAG_PRAGMA_NOCACHE;

  explicit HttpExchange(INTERNET_PORT port, const char* verb = "GET", const char* object = "/",
                        DWORD flags = kFlags, const WCHAR* proxy = nullptr)
      : session(InternetOpenW(
            WTEXT("test"), proxy == nullptr ? INTERNET_OPEN_TYPE_DIRECT : INTERNET_OPEN_TYPE_PROXY,
            proxy, nullptr, 0)),
        connection(InternetConnectW(session,
                                    proxy == nullptr ? WTEXT("127.0.0.1") : WTEXT("far.example"),
                                    port, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0)),
        request(
            HttpOpenRequestA(connection, verb, object, "HTTP/1.1", nullptr, nullptr, flags, 0)) {
    EXPECT_NE(request, nullptr);
  }
  HttpExchange(const HttpExchange&) = delete;
  HttpExchange& operator=(const HttpExchange&) = delete;
  ~HttpExchange() {
    InternetCloseHandle(request);
    InternetCloseHandle(connection);
    InternetCloseHandle(session);
  }

  void SetTimeOut(DWORD milliseconds) {
    for (const DWORD option : {INTERNET_OPTION_RECEIVE_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT}) {
      EXPECT_TRUE(InternetSetOptionW(request, option, &milliseconds, sizeof milliseconds));
    }
  }
  bool Send(std::string body = "") {
    return HttpSendRequestW(request, nullptr, 0, body.empty() ? nullptr : body.data(),
                            static_cast<DWORD>(body.size()));
  }
  // The head of a body that is written, its pieces, and its end.
  bool Begin(DWORD size) {
    INTERNET_BUFFERSW buffers{};
    buffers.dwStructSize = sizeof buffers;
    buffers.dwBufferTotal = size;
    return HttpSendRequestExW(request, &buffers, nullptr, 0, 0);
  }
  bool Write(const std::string& bytes) {
    DWORD written = 0;
    return InternetWriteFile(request, bytes.data(), static_cast<DWORD>(bytes.size()), &written) &&
           written == bytes.size();
  }
  bool End() { return HttpEndRequestW(request, nullptr, 0, 0); }
  // "200 body"; where it fails, the error behind what was read.
  std::string Answer() {
    std::string answer = Query(HTTP_QUERY_STATUS_CODE) + " ";
    char bytes[5000];
    DWORD count = 0;
    do {
      if (!InternetReadFile(request, bytes, sizeof bytes, &count)) {
        return answer + "error " + std::to_string(GetLastError());
      }
      answer.append(bytes, count);
    } while (count != 0);
    return answer;
  }
  std::string SendAndAnswer(const std::string& body = "") {
    return Send(body) ? Answer() : "error " + std::to_string(GetLastError());
  }
  // A header by its level or name; the error's number where it isn't there.
  std::string Query(DWORD level, const char* name = "", DWORD index = 0) {
    WCHAR buffer[2000];
    DWORD size = sizeof buffer;
    std::copy_n(name, std::char_traits<char>::length(name) + 1, buffer);
    if (!HttpQueryInfoW(request, level, buffer, &size, &index))
      return std::to_string(GetLastError());
    return std::string(buffer, buffer + size / sizeof(WCHAR));
  }

  const HINTERNET session;
  const HINTERNET connection;
  const HINTERNET request;
};
