// Requests, up to the head of their answer.
#include <tchar.h>
#include <windows.h>
#include <wininet.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fail.h"
#include "wininet/InternetObjects.h"
#include "wininet/ProxyChoice.h"

namespace {

using namespace winapi::internet;
using Lines = std::vector<std::string>;

// The object as it can stand in a request line.
std::string ToTarget(std::string_view object) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string target;
  target.reserve(object.size() + 1);
  if (!object.starts_with('/')) target = "/";
  for (const char c : object) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > ' ' && byte < 0x7F) {
      target += c;
    } else {
      target.append({'%', kDigits[byte >> 4], kDigits[byte & 0xF]});
    }
  }
  return target;
}

// "host:port", an address of IPv6 in brackets; empty where it is no host's name.
std::string ToAuthority(const Connection& connection) {
  const std::string& name = connection.server;
  const bool isBad = std::any_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) <= ' ' || std::strchr("/\\?#@%", c) != nullptr;
  });
  if (isBad) return {};
  const bool isIpV6 = name.find(':') != std::string::npos && name.front() != '[';
  return (isIpV6 ? "[" + name + "]" : name) + ":" + std::to_string(connection.port);
}

std::string_view NameOf(std::string_view line) {
  return line.substr(0, line.find(':'));
}

bool HaveSameName(std::string_view a, std::string_view b) {
  const std::string_view name = NameOf(a);
  return name.size() == NameOf(b).size() && _strnicmp(a.data(), b.data(), name.size()) == 0;
}

// The lines of a block of headers; none where one of them isn't a header.
std::optional<Lines> ToLines(std::string_view block) {
  Lines lines;
  while (!block.empty()) {
    const std::size_t end = block.find("\r\n");
    const std::string_view line = block.substr(0, end);
    block.remove_prefix(end == std::string_view::npos ? block.size() : end + 2);
    if (line.empty()) continue;
    const std::string_view name = NameOf(line);
    const bool isGood = !name.empty() && name.size() < line.size() &&
                        name.find_first_of(" \t") == std::string_view::npos &&
                        line.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
    if (!isGood) return std::nullopt;
    lines.emplace_back(line);
  }
  return lines;
}

void AddLine(Lines& lines, std::string line, DWORD flags) {
  const auto isSame = [&line](const std::string& other) { return HaveSameName(line, other); };
  if ((flags & HTTP_ADDREQ_FLAG_REPLACE) != 0) {
    std::erase_if(lines, isSame);
  } else if ((flags & HTTP_ADDREQ_FLAG_ADD_IF_NEW) != 0 &&
             std::any_of(lines.begin(), lines.end(), isSame)) {
    return;
  }
  lines.push_back(std::move(line));
}

// The headers that a request has from its start.
Lines OwnHeaders(LPCSTR referer, LPCSTR* acceptTypes, DWORD flags) {
  Lines lines;
  lines.reserve(8);
  std::string accepted;
  for (; acceptTypes != nullptr && *acceptTypes != nullptr; ++acceptTypes) {
    accepted += (accepted.empty() ? "" : ", ") + std::string(*acceptTypes);
  }
  if (!accepted.empty()) lines.push_back("Accept: " + accepted);
  if (referer != nullptr && *referer != 0) lines.push_back("Referer: " + std::string(referer));
  const bool keeps = (flags & INTERNET_FLAG_KEEP_CONNECTION) != 0;
  lines.emplace_back(keeps ? "Connection: Keep-Alive" : "Connection: Close");
  if ((flags & INTERNET_FLAG_PRAGMA_NOCACHE) != 0) lines.emplace_back("Pragma: no-cache");
  return lines;
}

bool HasLineEnd(LPCSTR text) {
  return text != nullptr && std::strpbrk(text, "\r\n") != nullptr;
}

bool AddHeaders(Request& request, std::string_view block, DWORD flags) {
  std::optional<Lines> lines = ToLines(block);
  if (!lines) return Fail(ERROR_HTTP_INVALID_HEADER);
  for (std::string& line : *lines) AddLine(request.plan.headers, std::move(line), flags);
  return true;
}

// The request of a call of sending, with the headers that the call brings along.
std::shared_ptr<Request> FindToSend(HINTERNET handle, LPCWSTR headers, DWORD length) {
  auto request = Find<Request>(handle);
  if (request == nullptr || headers == nullptr) return request;
  constexpr DWORD kTerminated = static_cast<DWORD>(-1);
  const std::string block = length == kTerminated ? ToUtf8(headers) : ToUtf8(headers, length);
  return AddHeaders(*request, block, HTTP_ADDREQ_FLAG_ADD) ? request : nullptr;
}

}  // namespace

HINTERNET WINAPI HttpOpenRequestA(HINTERNET handle, LPCSTR verb, LPCSTR object, LPCSTR version,
                                  LPCSTR referer, LPCSTR* acceptTypes, DWORD flags, ULONG_PTR) {
  const auto connection = Find<Connection>(handle);
  if (connection == nullptr) return nullptr;
  const std::string authority = ToAuthority(*connection);
  if (authority.empty()) return Fail<HINTERNET>(ERROR_INTERNET_INVALID_URL);
  const std::string_view method = verb == nullptr || *verb == 0 ? "GET" : verb;
  const bool isGood = std::all_of(method.begin(), method.end(), [](char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '-';
  });
  if (!isGood || HasLineEnd(referer)) return Fail<HINTERNET>(ERROR_INVALID_PARAMETER);

  const auto request = std::make_shared<Request>(handle, connection->options);
  RequestPlan& plan = request->plan;
  const std::string scheme = (flags & INTERNET_FLAG_SECURE) != 0 ? "https" : "http";
  plan.server = scheme + "://" + authority;
  plan.url = plan.server + ToTarget(object == nullptr ? "" : object);
  plan.verb = method;
  std::transform(plan.verb.begin(), plan.verb.end(), plan.verb.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  const Session& session = *connection->session;
  plan.agent = session.agent;
  plan.proxy = ChooseProxy(session.proxies, session.bypass, scheme, connection->server);
  plan.http10 = version != nullptr && std::strcmp(version, "HTTP/1.0") == 0;
  plan.flags = flags;
  plan.headers = OwnHeaders(referer, acceptTypes, flags);
  return AddObject(request);
}

BOOL WINAPI HttpAddRequestHeadersA(HINTERNET handle, LPCSTR headers, DWORD length, DWORD flags) {
  constexpr DWORD kKnown =
      HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_ADD_IF_NEW | HTTP_ADDREQ_FLAG_REPLACE;
  const auto request = Find<Request>(handle);
  if (request == nullptr) return FALSE;
  if (headers == nullptr || (flags & ~kKnown) != 0) return Fail(ERROR_INVALID_PARAMETER);
  const std::size_t size = length == static_cast<DWORD>(-1) ? std::strlen(headers) : length;
  return AddHeaders(*request, {headers, size}, flags);
}

BOOL WINAPI HttpSendRequestW(HINTERNET handle, LPCWSTR headers, DWORD headersLength, LPVOID body,
                             DWORD bodySize) {
  const auto request = FindToSend(handle, headers, headersLength);
  if (request == nullptr) return FALSE;
  const std::string_view bytes(static_cast<const char*>(body), body == nullptr ? 0 : bodySize);
  request->isWriting = false;
  request->Begin(std::make_unique<Transfer>(request->plan, request->options, std::string(bytes)));
  return request->transfer->ReceiveHead();
}

BOOL WINAPI HttpSendRequestExW(HINTERNET handle, LPINTERNET_BUFFERSW in, LPINTERNET_BUFFERSW out,
                               DWORD flags, ULONG_PTR) {
  const bool isGood = in == nullptr || (in->dwStructSize == sizeof *in && in->dwBufferLength == 0);
  if (!isGood || out != nullptr || flags != 0) return Fail(ERROR_INVALID_PARAMETER);
  const auto request = FindToSend(handle, in == nullptr ? nullptr : in->lpcszHeader,
                                  in == nullptr ? 0 : in->dwHeadersLength);
  if (request == nullptr) return FALSE;
  const std::uint64_t size = in == nullptr ? 0 : in->dwBufferTotal;
  request->Begin(std::make_unique<Transfer>(request->plan, request->options, size));
  request->isWriting = request->transfer->SendHead();
  return request->isWriting;
}

BOOL WINAPI InternetWriteFile(HINTERNET handle, const void* data, DWORD size, LPDWORD written) {
  const auto request = Find<Request>(handle);
  if (request == nullptr) return FALSE;
  if (written == nullptr || (data == nullptr && size != 0)) return Fail(ERROR_INVALID_PARAMETER);
  *written = 0;
  if (!request->isWriting) return Fail(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
  if (!request->transfer->Write({static_cast<const char*>(data), size})) return FALSE;
  *written = size;
  return TRUE;
}

BOOL WINAPI HttpEndRequestW(HINTERNET handle, LPINTERNET_BUFFERSW, DWORD flags, ULONG_PTR) {
  const auto request = Find<Request>(handle);
  if (request == nullptr) return FALSE;
  if (flags != 0) return Fail(ERROR_INVALID_PARAMETER);
  if (!request->isWriting) return Fail(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
  request->isWriting = false;
  return request->transfer->ReceiveHead();
}
