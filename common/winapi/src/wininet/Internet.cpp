// Sessions, connections, options, and the end of handles.
#include <windows.h>
#include <wininet.h>

#include <cstring>
#include <memory>
#include <string>

#include "Fail.h"
#include "wininet/CurlBinding.h"
#include "wininet/InternetObjects.h"

namespace {

using namespace winapi::internet;

struct TimeOutOption {
  DWORD option;
  DWORD TimeOuts::*place;
};
constexpr TimeOutOption kTimeOutOptions[] = {
    {INTERNET_OPTION_CONNECT_TIMEOUT, &TimeOuts::connect},
    {INTERNET_OPTION_SEND_TIMEOUT, &TimeOuts::send},
    {INTERNET_OPTION_RECEIVE_TIMEOUT, &TimeOuts::receive},
};

struct AccountOption {
  DWORD option;
  Account Options::*account;
  std::string Account::*text;
};
constexpr AccountOption kAccountOptions[] = {
    {INTERNET_OPTION_USERNAME, &Options::account, &Account::user},
    {INTERNET_OPTION_PASSWORD, &Options::account, &Account::password},
    {INTERNET_OPTION_PROXY_USERNAME, &Options::proxyAccount, &Account::user},
    {INTERNET_OPTION_PROXY_PASSWORD, &Options::proxyAccount, &Account::password},
};

}  // namespace

HINTERNET WINAPI InternetOpenW(LPCWSTR agent, DWORD accessType, LPCWSTR proxy, LPCWSTR proxyBypass,
                               DWORD flags) {
  const bool hasProxy = accessType == INTERNET_OPEN_TYPE_PROXY;
  const bool known = accessType == INTERNET_OPEN_TYPE_PRECONFIG || hasProxy ||
                     accessType == INTERNET_OPEN_TYPE_DIRECT ||
                     accessType == INTERNET_OPEN_TYPE_PRECONFIG_WITH_NO_AUTOPROXY;
  if (!known || flags != 0) return Fail<HINTERNET>(ERROR_INVALID_PARAMETER);
  if (hasProxy && (proxy == nullptr || *proxy == 0)) {
    return Fail<HINTERNET>(ERROR_INVALID_PARAMETER);
  }
  if (!IsCurlThere()) return Fail<HINTERNET>(ERROR_MOD_NOT_FOUND);
  const auto session = std::make_shared<Session>();
  session->agent = ToUtf8(agent);
  if (hasProxy) {
    session->proxies = ToUtf8(proxy);
    session->bypass = ToUtf8(proxyBypass);
  }
  return AddObject(session);
}

HINTERNET WINAPI InternetConnectW(HINTERNET handle, LPCWSTR server, INTERNET_PORT port,
                                  LPCWSTR user, LPCWSTR password, DWORD service, DWORD, ULONG_PTR) {
  const auto session = Find<Session>(handle);
  if (session == nullptr) return nullptr;
  if (server == nullptr || *server == 0 || service != INTERNET_SERVICE_HTTP) {
    return Fail<HINTERNET>(ERROR_INVALID_PARAMETER);
  }
  const auto connection = std::make_shared<Connection>(handle, session);
  connection->server = ToUtf8(server);
  connection->port = port;
  if (user != nullptr && *user != 0) {
    connection->options.account = {ToUtf8(user), ToUtf8(password)};
  }
  return AddObject(connection);
}

BOOL WINAPI InternetSetOptionW(HINTERNET handle, DWORD option, LPVOID value, DWORD size) {
  const auto object = FindObject(handle);
  if (object == nullptr) return FALSE;
  if (value == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  for (const TimeOutOption& known : kTimeOutOptions) {
    if (known.option != option) continue;
    if (size != sizeof(DWORD)) return Fail(ERROR_INTERNET_BAD_OPTION_LENGTH);
    std::memcpy(&(object->options.timeOuts.*known.place), value, size);
    return TRUE;
  }
  for (const AccountOption& known : kAccountOptions) {
    if (known.option != option) continue;
    // Callers count the terminator or not.
    const std::u16string_view text(static_cast<const WCHAR*>(value), size);
    const std::size_t length = std::min(text.find(u'\0'), text.size());
    object->options.*known.account.*known.text = ToUtf8(text.data(), length);
    return TRUE;
  }
  return Fail(ERROR_INTERNET_INVALID_OPTION);
}

BOOL WINAPI InternetCloseHandle(HINTERNET handle) {
  return CloseObject(handle);
}
