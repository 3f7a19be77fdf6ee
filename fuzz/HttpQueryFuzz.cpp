// Queries for the headers of an answer, with any level, name, index and size of the buffer.
#include <windows.h>
#include <wininet.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "tests/winapi/wininet/ScriptedServer.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// One answer for all queries, with headers that come again, have nothing in them, aren't ASCII, are
// no numbers, and are long.
HINTERNET AnsweredRequest() {
  static ScriptedServer server(ScriptedServer::Answering(
      "HTTP/1.1 200 All right\r\nContent-Length: 4294967296\r\nContent-Type: text/plain\r\n"
      "Set-Cookie: a=1\r\nset-cookie: b=2\r\nSet-Cookie:\r\nX:\r\nX: 5\r\nX:  \t\r\nY: \xC3\xA0\xFF"
      "\r\nDate: Wed, 25 Nov 2026 17:00:00 GMT\r\nLong: " +
      std::string(3000, 'l') + "\r\n\r\n"));
  const HINTERNET session = InternetOpenW(nullptr, INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
  const HINTERNET connection = InternetConnectW(session, u"127.0.0.1", server.Port(), nullptr,
                                                nullptr, INTERNET_SERVICE_HTTP, 0, 0);
  const HINTERNET request =
      HttpOpenRequestA(connection, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0);
  Require(HttpSendRequestW(request, nullptr, 0, nullptr, 0));
  return request;
}

// The front of the input.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}
  bool IsEmpty() const { return m_left == 0; }
  DWORD Byte() { return m_left == 0 ? 0 : (--m_left, *m_data++); }
  // Small, or any.
  DWORD Number() {
    const DWORD first = Byte();
    if (first < 0xF0) return first;
    const DWORD second = Byte() << 8;
    const DWORD third = Byte() << 16;
    return first | second | third | Byte() << 24;
  }
  // Up to a zero.
  std::u16string Name() {
    std::u16string name;
    while (const DWORD unit = Byte()) name += static_cast<char16_t>(unit < 0x80 ? unit : unit << 4);
    return name;
  }

 private:
  const std::uint8_t* m_data;
  std::size_t m_left;
};

void Query(HINTERNET request, Input& input) {
  // Those that are known have one byte.
  static constexpr DWORD kLevels[] = {
      HTTP_QUERY_CUSTOM,     HTTP_QUERY_STATUS_CODE,    HTTP_QUERY_STATUS_TEXT,
      HTTP_QUERY_VERSION,    HTTP_QUERY_CONTENT_LENGTH, HTTP_QUERY_CONTENT_TYPE,
      HTTP_QUERY_SET_COOKIE, HTTP_QUERY_DATE,           HTTP_QUERY_RAW_HEADERS_CRLF};
  const DWORD choice = input.Byte();
  const bool isNumber = (choice & 1) != 0;
  const DWORD known = choice / 2;
  const DWORD level = (known < std::size(kLevels) ? kLevels[known] : input.Number() & 0xFFFFFFF) |
                      (isNumber ? HTTP_QUERY_FLAG_NUMBER : 0);
  const std::u16string name = input.Name();
  const DWORD first = input.Number();
  DWORD index = first;
  // On the heap, and of just that size: what is written behind it is found. The name stands in it.
  DWORD size = input.Number() % 8000;
  std::vector<WCHAR> buffer(std::max<std::size_t>(size / sizeof(WCHAR) + 1, name.size() + 1));
  name.copy(buffer.data(), name.size());
  buffer.shrink_to_fit();
  const DWORD given = size;
  if (HttpQueryInfoW(request, level, buffer.data(), &size, &index)) {
    Require(index == first + 1);
    Require(isNumber ? size == sizeof(DWORD) : size + sizeof(WCHAR) <= given);
    if (!isNumber) Require(buffer[size / sizeof(WCHAR)] == 0);
    return;
  }
  Require(index == first);
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return;
  // What it asks for is more, and is enough.
  Require(size > given);
  buffer.assign(std::max<std::size_t>(size / sizeof(WCHAR), name.size() + 1), 0);
  name.copy(buffer.data(), name.size());
  Require(HttpQueryInfoW(request, level, buffer.data(), &size, &index) ||
          (isNumber && GetLastError() == ERROR_HTTP_INVALID_HEADER));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const HINTERNET request = AnsweredRequest();
  Input input(data, size);
  while (!input.IsEmpty()) Query(request, input);
  return 0;
}
