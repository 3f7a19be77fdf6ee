#include "fieldbook/web/WebFailure.h"

#include <algorithm>
#include <iterator>

#include "fieldbook/web/WebClient.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

struct Words {
  std::uint32_t number;
  const WChar* text;
};

constexpr Words kIdWords[] = {
    {Dovek::HttpErrorId::kInvalidUrl, KTEXT("this isn't an address of the web")},
    {Dovek::HttpErrorId::kInvalidPort, KTEXT("the port in the address isn't one")},
    {Dovek::HttpErrorId::kOutOfMemory, KTEXT("there isn't enough memory")},
    {Dovek::HttpErrorId::kFileTooShort, KTEXT("the file has become shorter meanwhile")},
    {Dovek::HttpErrorId::kOverflow, KTEXT("4 GiB and more can't be sent at once")},
    {Dovek::HttpErrorId::kReadDisk, KTEXT("the file can't be read")},
    {Dovek::HttpErrorId::kOpenDisk, KTEXT("the file can't be read")},
    {Dovek::HttpErrorId::kDiskSize, KTEXT("the file can't be read")},
};

constexpr std::uint32_t kFileErrors[] = {
    Dovek::HttpErrorId::kFileTooShort, Dovek::HttpErrorId::kOverflow, Dovek::HttpErrorId::kReadDisk,
    Dovek::HttpErrorId::kOpenDisk, Dovek::HttpErrorId::kDiskSize};

constexpr const WChar* kBadCertificate = KTEXT("the server's certificate isn't valid");
constexpr const WChar* kBroken = KTEXT("the connection was broken");

// By the numbers of WinINet; its header has no names for some.
constexpr Words kErrorWords[] = {
    {ERROR_INTERNET_TIMEOUT, KTEXT("the server hasn't answered in time")},
    {ERROR_INTERNET_INVALID_URL, KTEXT("this isn't an address of the web")},
    {ERROR_INTERNET_NAME_NOT_RESOLVED, KTEXT("there is no server of that name")},
    {ERROR_INTERNET_LOGIN_FAILURE, KTEXT("the proxy asks for an account")},
    {ERROR_INTERNET_CANNOT_CONNECT, KTEXT("there is no connection to the server")},
    {ERROR_INTERNET_CONNECTION_ABORTED, kBroken},
    {ERROR_INTERNET_CONNECTION_RESET, kBroken},
    {ERROR_INTERNET_SEC_CERT_DATE_INVALID,
     KTEXT("the server's certificate has expired, or isn't valid yet")},
    {ERROR_INTERNET_SEC_CERT_CN_INVALID, KTEXT("the server's certificate is for another server")},
    {ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR,
     KTEXT("the server leads on to an address that isn't safe")},
    {ERROR_INTERNET_INVALID_CA,
     KTEXT("the server's certificate is by an authority that isn't trusted here")},
    {12057, KTEXT("whether the server's certificate is revoked can't be found out")},
    {ERROR_HTTP_INVALID_SERVER_RESPONSE, KTEXT("what answers isn't a server of the web")},
    {ERROR_HTTP_REDIRECT_FAILED, KTEXT("where the server leads on to can't be reached")},
    {ERROR_INTERNET_SECURITY_CHANNEL_ERROR, KTEXT("there is no safe connection to the server")},
    {ERROR_INTERNET_SEC_INVALID_CERT, kBadCertificate},
    {ERROR_INTERNET_SEC_CERT_REVOKED, KTEXT("the server's certificate is revoked")},
    {12175, kBadCertificate},
};

constexpr Words kStatusWords[] = {
    {401, KTEXT("it asks for an account")},        {403, KTEXT("access is denied")},
    {404, KTEXT("there is no such file")},         {405, KTEXT("it doesn't take that here")},
    {407, KTEXT("the proxy asks for an account")}, {410, KTEXT("there is no such file")},
    {413, KTEXT("the file is too large for it")},  {500, KTEXT("it has failed itself")},
    {503, KTEXT("it has too much to do")},
};

template <std::size_t N>
const WChar* Find(const Words (&words)[N], std::uint32_t number) {
  for (const Words& w : words) {
    if (w.number == number) return w.text;
  }
  return nullptr;
}

WString NumberText(std::uint32_t number) {
  return WString::ValueOf(static_cast<int>(number));
}

}  // namespace

WString WebErrorText(std::uint32_t errorId, std::uint32_t win32Error) {
  // A size that doesn't fit isn't an error of the system's.
  const bool isTooLarge = errorId == Dovek::HttpErrorId::kDiskSize && win32Error == 0;
  const WChar* words = Find(kIdWords, isTooLarge ? Dovek::HttpErrorId::kOverflow : errorId);
  if (words == nullptr) words = Find(kErrorWords, win32Error);
  if (words != nullptr) return kelp::Xlate(words);
  return Message{KTEXT("the request has failed, errors {1} and {2}"),
                 {NumberText(errorId), NumberText(win32Error)}}
      .Text();
}

bool IsWebFileError(std::uint32_t errorId) {
  const auto* const file = std::find(std::begin(kFileErrors), std::end(kFileErrors), errorId);
  return file != std::end(kFileErrors);
}

WString WebStatusText(std::uint32_t status) {
  const WChar* const words = Find(kStatusWords, status);
  if (words == nullptr) {
    return Message{KTEXT("the server answers {1}"), {NumberText(status)}}.Text();
  }
  return Message{KTEXT("the server answers {1}: {2}"), {NumberText(status), kelp::Xlate(words)}}
      .Text();
}

bool IsWebSuccess(std::uint32_t status) {
  return status >= 200 && status < 300;
}

}  // namespace fieldbook
