// Answers: their headers and their body.
#include <windows.h>
#include <wininet.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "Fail.h"
#include "wininet/InternetObjects.h"

namespace {

using namespace winapi::internet;

struct Level {
  DWORD level;
  const char* header;
};
constexpr Level kHeaderLevels[] = {
    {HTTP_QUERY_CONTENT_TYPE, "Content-Type"},
    {HTTP_QUERY_CONTENT_LENGTH, "Content-Length"},
    {HTTP_QUERY_DATE, "Date"},
    {HTTP_QUERY_LAST_MODIFIED, "Last-Modified"},
    {HTTP_QUERY_LOCATION, "Location"},
    {HTTP_QUERY_SERVER, "Server"},
    {HTTP_QUERY_SET_COOKIE, "Set-Cookie"},
};

// The request whose answer is asked for.
std::shared_ptr<Request> FindAnswered(HINTERNET handle) {
  auto request = Find<Request>(handle);
  if (request == nullptr) return nullptr;
  const bool isAnswered = request->transfer != nullptr && !request->isWriting;
  return isAnswered ? request
                    : Fail<std::shared_ptr<Request>>(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
}

std::optional<std::string> FindHeader(const AnswerHead& head, const std::string& name,
                                      DWORD index) {
  const std::string* const value = head.Find(name, index);
  return value == nullptr ? std::nullopt : std::optional(*value);
}

// What a level asks for; nothing, and the error, where it isn't there.
std::optional<std::string> Query(const AnswerHead& head, DWORD level, LPCWSTR name, DWORD index) {
  std::optional<std::string> found;
  const auto* const header = std::find_if(std::begin(kHeaderLevels), std::end(kHeaderLevels),
                                          [level](const Level& l) { return l.level == level; });
  if (level == HTTP_QUERY_CUSTOM) {
    if (name == nullptr) return Fail<std::optional<std::string>>(ERROR_INVALID_PARAMETER);
    found = FindHeader(head, ToUtf8(name), index);
  } else if (header != std::end(kHeaderLevels)) {
    found = FindHeader(head, header->header, index);
  } else if (level == HTTP_QUERY_STATUS_CODE) {
    found = std::to_string(head.Status());
  } else if (level == HTTP_QUERY_STATUS_TEXT) {
    found = head.StatusText();
  } else if (level == HTTP_QUERY_VERSION) {
    found = head.Version();
  } else if (level == HTTP_QUERY_RAW_HEADERS_CRLF) {
    found = head.Raw();
  } else {
    return Fail<std::optional<std::string>>(ERROR_HTTP_INVALID_QUERY_REQUEST);
  }
  if (!found) SetLastError(ERROR_HTTP_HEADER_NOT_FOUND);
  return found;
}

bool PutNumber(const std::string& text, LPVOID buffer, DWORD& size) {
  if (size < sizeof(DWORD)) {
    size = sizeof(DWORD);
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  DWORD number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return Fail(ERROR_HTTP_INVALID_HEADER);
  size = sizeof number;
  std::memcpy(buffer, &number, size);
  return true;
}

bool PutText(const std::string& text, LPVOID buffer, DWORD& size) {
  const int length = static_cast<int>(text.size());
  const int units =
      length == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
  const DWORD bytes = static_cast<DWORD>(units) * sizeof(WCHAR);
  if (buffer == nullptr || size < bytes + sizeof(WCHAR)) {
    size = bytes + sizeof(WCHAR);
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  auto* const target = static_cast<WCHAR*>(buffer);
  if (units != 0) MultiByteToWideChar(CP_ACP, 0, text.data(), length, target, units);
  target[units] = 0;
  size = bytes;
  return true;
}

}  // namespace

BOOL WINAPI HttpQueryInfoW(HINTERNET handle, DWORD level, LPVOID buffer, LPDWORD size,
                           LPDWORD index) {
  const auto request = FindAnswered(handle);
  if (request == nullptr) return FALSE;
  const bool isNumber = (level & HTTP_QUERY_FLAG_NUMBER) != 0;
  if (size == nullptr || (isNumber && buffer == nullptr)) return Fail(ERROR_INVALID_PARAMETER);
  const DWORD asked = level & ~DWORD{HTTP_QUERY_FLAG_NUMBER};
  const auto found = Query(request->transfer->Head(), asked, static_cast<LPCWSTR>(buffer),
                           index == nullptr ? 0 : *index);
  if (!found) return FALSE;
  if (!(isNumber ? PutNumber(*found, buffer, *size) : PutText(*found, buffer, *size))) return FALSE;
  if (index != nullptr) ++*index;
  return TRUE;
}

BOOL WINAPI InternetReadFile(HINTERNET handle, LPVOID buffer, DWORD size, LPDWORD read) {
  const auto request = FindAnswered(handle);
  if (request == nullptr) return FALSE;
  if (read == nullptr || (buffer == nullptr && size != 0)) return Fail(ERROR_INVALID_PARAMETER);
  *read = 0;
  if (size == 0) return TRUE;
  Transfer& transfer = *request->transfer;
  if (!transfer.ReceiveBody()) return FALSE;
  const std::string_view bytes = transfer.Received().substr(0, size);
  std::memcpy(buffer, bytes.data(), bytes.size());
  *read = static_cast<DWORD>(bytes.size());
  transfer.Take(bytes.size());
  return TRUE;
}

BOOL WINAPI InternetQueryDataAvailable(HINTERNET handle, LPDWORD available, DWORD flags,
                                       ULONG_PTR) {
  const auto request = FindAnswered(handle);
  if (request == nullptr) return FALSE;
  if (available == nullptr || flags != 0) return Fail(ERROR_INVALID_PARAMETER);
  *available = 0;
  if (!request->transfer->ReceiveBody()) return FALSE;
  *available = static_cast<DWORD>(request->transfer->Received().size());
  return TRUE;
}
