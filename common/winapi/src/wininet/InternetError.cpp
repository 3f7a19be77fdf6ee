#include "wininet/InternetError.h"

#include <wininet.h>

#include <string_view>

namespace winapi::internet {
namespace {

struct Pair {
  long code;
  DWORD error;
};

constexpr Pair kTransferErrors[] = {
    {CURLE_COULDNT_RESOLVE_HOST, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_RESOLVE_PROXY, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_CONNECT, ERROR_INTERNET_CANNOT_CONNECT},
    {CURLE_OPERATION_TIMEDOUT, ERROR_INTERNET_TIMEOUT},
    {CURLE_GOT_NOTHING, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_PARTIAL_FILE, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_RECV_ERROR, ERROR_INTERNET_CONNECTION_RESET},
    {CURLE_SEND_ERROR, ERROR_INTERNET_CONNECTION_RESET},
    {CURLE_URL_MALFORMAT, ERROR_INTERNET_INVALID_URL},
    {CURLE_WRITE_ERROR, ERROR_HTTP_INVALID_SERVER_RESPONSE},  // a head without end
    {CURLE_WEIRD_SERVER_REPLY, ERROR_HTTP_INVALID_SERVER_RESPONSE},
    {CURLE_BAD_CONTENT_ENCODING, ERROR_HTTP_INVALID_SERVER_RESPONSE},
    {CURLE_TOO_MANY_REDIRECTS, ERROR_HTTP_REDIRECT_FAILED},
    {CURLE_SEND_FAIL_REWIND, ERROR_HTTP_REDIRECT_FAILED},
    {CURLE_LOGIN_DENIED, ERROR_INTERNET_LOGIN_FAILURE},
    {CURLE_SSL_CONNECT_ERROR, ERROR_INTERNET_SECURITY_CHANNEL_ERROR},
    {CURLE_SSL_CACERT_BADFILE, ERROR_INTERNET_INVALID_CA},
    {CURLE_ABORTED_BY_CALLBACK, ERROR_INTERNET_OPERATION_CANCELLED},
    {CURLE_OUT_OF_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
};

// By the numbers that OpenSSL gives for what it found wrong with a certificate.
constexpr Pair kCertificateErrors[] = {
    {1, ERROR_INTERNET_SEC_CERT_CN_INVALID},  // not told: libcurl looks at the name first
    {2, ERROR_INTERNET_INVALID_CA},           // no issuer
    {9, ERROR_INTERNET_SEC_CERT_DATE_INVALID},
    {10, ERROR_INTERNET_SEC_CERT_DATE_INVALID},
    {18, ERROR_INTERNET_INVALID_CA},  // self-signed
    {19, ERROR_INTERNET_INVALID_CA},
    {20, ERROR_INTERNET_INVALID_CA},
    {21, ERROR_INTERNET_INVALID_CA},
    {23, ERROR_INTERNET_SEC_CERT_REVOKED},
    {62, ERROR_INTERNET_SEC_CERT_CN_INVALID},
};

template <std::size_t N>
DWORD Find(const Pair (&pairs)[N], long code, DWORD other) {
  for (const Pair& pair : pairs) {
    if (pair.code == code) return pair.error;
  }
  return other;
}

// What was refused: an answer that is no HTTP, or where a redirect led.
DWORD ErrorOfProtocol(CURL* easy, bool isSecure) {
  const char* url = nullptr;
  curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &url);
  const std::string_view last = url == nullptr ? "" : url;
  if (!last.starts_with("http:")) return ERROR_HTTP_REDIRECT_FAILED;
  return isSecure ? ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR : ERROR_HTTP_INVALID_SERVER_RESPONSE;
}

}  // namespace

DWORD ErrorOfTransfer(CURL* easy, CURLcode result, bool isSecure) {
  if (result == CURLE_PEER_FAILED_VERIFICATION) {
    long found = 0;
    curl_easy_getinfo(easy, CURLINFO_SSL_VERIFYRESULT, &found);
    return Find(kCertificateErrors, found, ERROR_INTERNET_SEC_INVALID_CERT);
  }
  if (result == CURLE_UNSUPPORTED_PROTOCOL) return ErrorOfProtocol(easy, isSecure);
  long proxyStatus = 0;
  curl_easy_getinfo(easy, CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
  constexpr long kProxyWantsAccount = 407;
  if (proxyStatus == kProxyWantsAccount) return ERROR_INTERNET_LOGIN_FAILURE;
  return Find(kTransferErrors, result, ERROR_INTERNET_INTERNAL_ERROR);
}

}  // namespace winapi::internet
