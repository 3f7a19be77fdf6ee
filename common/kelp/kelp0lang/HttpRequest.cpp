#include "kelp0lang/HttpRequest.h"

#include <winsock2.h>
// winsock2.h comes before windows.h.
#include <tchar.h>
#include <windows.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "kelp0lang/HttpClient.h"

using kelp::String;
using kelp::WString;

namespace {

using Client = Dovek::CHttpClientT<Dovek::CHttpToolW, Dovek::CHttpEncoderW>;
using Response = Client::Response;

std::unique_ptr<Response> Request(Client& client, bool post, const WChar* url) {
  constexpr DWORD kTimeOut = 60'000;
  constexpr DWORD kStep = 1024;
  if (!post) return std::unique_ptr<Response>(client.SendGet(url, FALSE));
  client.StartPost(kTimeOut, url, FALSE);
  std::unique_ptr<Response> response;
  while (response == nullptr) response.reset(client.Proceed(kStep));
  return response;
}

bool IsText(Response& response) {
  constexpr std::size_t kLength = 5;
  const WChar* const type = response.GetHeader(KTEXT("Content-Type"), 0);
  return type != nullptr && _wcsnicmp(type, KTEXT("text/"), kLength) == 0;
}

void ReadContent(Response& response, String& text, unsigned int& size) {
  constexpr DWORD kPiece = 10'239;
  BYTE piece[kPiece + 1];
  const bool isText = IsText(response);
  size = 0;
  int room = 0;
  while (const DWORD bytes = response.ReadContent(piece, kPiece)) {
    const unsigned int total = Dovek::detail::CheckedAdd(size, bytes);
    if (isText) {
      const int length = Dovek::detail::CheckedCast<int>(total);
      // The capacity of a text is exact; it grows by half so that long texts aren't copied each
      // time.
      if (length > room) {
        room = length < INT_MAX / 2 ? length + length / 2 : length;
        text.GetBufferAsCString(room);
      }
      std::memcpy(text.GetBufferSetLength(length) + size, piece, bytes);
    }
    size = total;
  }
}

}  // namespace

bool ExecuteHttpRequest(bool post, const WString& url, const THttpParams& params, String& text,
                        unsigned int& size) {
  try {
    const auto client = std::make_unique<Client>();
    for (const auto& [name, value] : params.params) {
      client->AddParam(name.c_str(), value.c_str(), 0);
    }
    const std::unique_ptr<Response> response = Request(*client, post, url.c_str());
    ReadContent(*response, text, size);
    return true;
  } catch (...) {
    return false;
  }
}

namespace {

constexpr int kDone = 0;
constexpr int kOtherScheme = -1;
constexpr int kNoSocket = -2;
constexpr int kUnknownHost = -3;
constexpr int kNotConnected = -4;

// The parts of a URL that a request on a socket takes.
struct Target {
  std::string scheme;  // in upper case, as the host is
  std::string host;
  int port = 80;
  std::string path;
};

bool IsOfHost(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '.' || c == ':';
}

Target ParseUrl(const std::string& url) {
  constexpr std::size_t kScheme = 19;
  constexpr std::size_t kHost = 255;
  constexpr std::size_t kPath = 1023;
  std::string upper = url;
  _strupr(upper.data());
  Target target;
  std::size_t at = upper.find(':');
  target.scheme = at == std::string::npos ? "HTTP" : upper.substr(0, std::min(at, kScheme));
  at = at == std::string::npos ? 0 : at + 1;
  if (upper.compare(at, 2, "//") == 0) at += 2;

  const auto begin = upper.begin() + static_cast<std::ptrdiff_t>(at);
  const auto end = std::find_if_not(begin, upper.end(), IsOfHost);
  target.host.assign(begin, end);
  at += target.host.size();
  const std::size_t colon = target.host.find(':');
  if (colon != std::string::npos) {
    target.port = std::atoi(target.host.c_str() + colon + 1);
    target.host.resize(colon);
  }
  target.host.resize(std::min(target.host.size(), kHost));

  // A line end would end the request's line, and what follows be a header.
  const std::size_t lineEnd = std::min(url.find_first_of("\r\n", at), url.size());
  target.path = url.substr(at, std::min(lineEnd - at, kPath));
  if (target.path.empty()) target.path = "/";
  return target;
}

// Sockets are started while it lives.
class SocketUse {
 public:
  SocketUse() {
    constexpr WORD kVersion = 0x101;
    WSADATA data;
    m_isStarted = WSAStartup(kVersion, &data) == 0;
  }
  ~SocketUse() {
    if (m_isStarted) WSACleanup();
  }
  SocketUse(const SocketUse&) = delete;
  SocketUse& operator=(const SocketUse&) = delete;
  bool IsStarted() const { return m_isStarted; }

 private:
  bool m_isStarted;
};

class Connection {
 public:
  Connection() : m_socket(socket(AF_INET, SOCK_STREAM, 0)) {}
  ~Connection() {
    if (IsOpen()) closesocket(m_socket);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  bool IsOpen() const { return m_socket != INVALID_SOCKET; }

  int Connect(const Target& target) const {
    const hostent* const host = target.host.empty() ? nullptr : gethostbyname(target.host.c_str());
    if (host == nullptr) return kUnknownHost;
    constexpr int kLastPort = 65'535;
    if (target.port < 0 || target.port > kLastPort) return kNotConnected;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(target.port));
    std::memcpy(&address.sin_addr, host->h_addr_list[0], sizeof address.sin_addr);
    const auto* const any = reinterpret_cast<const sockaddr*>(&address);
    return connect(m_socket, any, sizeof address) == 0 ? kDone : kNotConnected;
  }
  // What can't be sent isn't noticed: the answer tells.
  void Send(std::string_view bytes) const {
    constexpr std::size_t kMost = 1 << 30;
    while (!bytes.empty()) {
      const int sent =
          send(m_socket, bytes.data(), static_cast<int>(std::min(bytes.size(), kMost)), 0);
      if (sent <= 0) return;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
  }
  // Up to and with the empty line, or to the end of what comes.
  std::string ReceiveHead() const {
    std::string head;
    bool isEmptyLine = true;
    for (char c; recv(m_socket, &c, 1, 0) > 0;) {
      head += c;
      if (c == '\n') {
        if (isEmptyLine) break;
        isEmptyLine = true;
      } else if (c != '\r') {
        isEmptyLine = false;
      }
    }
    return head;
  }
  std::string ReceiveRest() const {
    constexpr int kPiece = 511;
    std::string rest;
    char piece[kPiece];
    for (int count; (count = recv(m_socket, piece, kPiece, 0)) > 0;) {
      rest.append(piece, static_cast<std::size_t>(count));
    }
    return rest;
  }

 private:
  SOCKET m_socket;
};

void SendAll(const Connection& connection, bool post, const Target& target, std::string_view body) {
  connection.Send((post ? "POST " : "GET ") + target.path + " HTTP/1.0\r\n");
  connection.Send(
      "Accept: image/gif, image/x-xbitmap, image/jpeg, image/pjpeg, application/vnd.ms-excel, "
      "application/msword, application/vnd.ms-powerpoint, */*\r\n");
  connection.Send("Accept-Language: en-us\r\n");
  connection.Send("Accept-Encoding: gzip, deflate\r\n");
  connection.Send("User-Agent: Mozilla/4.0\r\n");
  if (!body.empty()) {
    connection.Send("Content-Length: " + std::to_string(body.size()) + "\r\n");
  }
  connection.Send("Host: " + target.host + "\r\n");
  if (post) connection.Send("Content-Type: application/x-www-form-urlencoded\r\n");
  connection.Send("\r\n");
  if (post) connection.Send(body);
}

WString ToWide(const std::string& bytes) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
  if (bytes.size() > INT_MAX) throw std::bad_alloc();  // as any text of that length
  const int length = static_cast<int>(bytes.size());
  if (!bytes.starts_with(kUtf8Mark)) return WString::AcceptString(bytes.c_str(), length);
  const int mark = static_cast<int>(kUtf8Mark.size());
  return String(bytes.c_str(), mark, length - mark).FromUtf8();
}

int Exchange(bool post, const Target& target, std::string_view body, std::string& head,
             std::string& content) {
  if (target.scheme != "HTTP") return kOtherScheme;
  const SocketUse use;
  if (!use.IsStarted()) return kNoSocket;
  const Connection connection;
  if (!connection.IsOpen()) return kNoSocket;
  const int result = connection.Connect(target);
  if (result != kDone) return result;
  SendAll(connection, post, target, body);
  head = connection.ReceiveHead();
  content = connection.ReceiveRest();
  return kDone;
}

}  // namespace

int SendRequest(bool post, const WChar* url, const WString& body, WString& headers,
                WString& content) {
  const String narrowUrl = url == nullptr ? String() : String::AcceptString(url);
  const String narrowBody = String::AcceptString(body.c_str(), body.Length());
  std::string head;
  std::string rest;
  const int result =
      Exchange(post, ParseUrl(narrowUrl.c_str()),
               {narrowBody.c_str(), static_cast<std::size_t>(narrowBody.Length())}, head, rest);
  headers = ToWide(head);
  content = ToWide(rest);
  return result;
}
