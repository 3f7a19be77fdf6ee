// HTTP requests, on libcurl.
//
// A session (InternetOpenW) has connections, those have requests; closing a handle closes those
// under it. All work is done on the thread of the caller, within its call; a handle is for one
// thread at a time. A request goes open, headers, send, queries, reads:
//
//   HINTERNET session = InternetOpenW(agent, INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
//   HINTERNET connection = InternetConnectW(session, u"example.com", 80, nullptr, nullptr,
//                                           INTERNET_SERVICE_HTTP, 0, 0);
//   HINTERNET request = HttpOpenRequestA(connection, "GET", "/", nullptr, nullptr, nullptr, 0, 0);
//   if (HttpSendRequestW(request, nullptr, 0, nullptr, 0)) InternetReadFile(request, ...);
//
// Kept connections and cookies are those of the process. Redirects are followed, but not from HTTPS
// to HTTP, and not where a body would have to be written twice. Chunked answers are decoded.
// Nothing is cached, so the flags about the cache only make the headers that ask a server for fresh
// data. Certificates and host names are always verified (winapi_host.h names another store). There
// is no proxy but the one that InternetOpenW names.
//
// Failures give FALSE or null and the last error, of which these are the layer's:
#pragma once

#include "windef.h"

typedef LPVOID HINTERNET;
typedef WORD INTERNET_PORT;

#define ERROR_INTERNET_TIMEOUT 12002L
#define ERROR_INTERNET_INTERNAL_ERROR 12004L
#define ERROR_INTERNET_INVALID_URL 12005L
#define ERROR_INTERNET_NAME_NOT_RESOLVED 12007L
#define ERROR_INTERNET_INVALID_OPTION 12009L
#define ERROR_INTERNET_BAD_OPTION_LENGTH 12010L
#define ERROR_INTERNET_LOGIN_FAILURE 12015L
#define ERROR_INTERNET_OPERATION_CANCELLED 12017L  // the handle was closed meanwhile
#define ERROR_INTERNET_INCORRECT_HANDLE_TYPE 12018L
#define ERROR_INTERNET_INCORRECT_HANDLE_STATE 12019L
#define ERROR_INTERNET_CANNOT_CONNECT 12029L
#define ERROR_INTERNET_CONNECTION_ABORTED 12030L  // the answer ended too early, or didn't begin
#define ERROR_INTERNET_CONNECTION_RESET 12031L
#define ERROR_INTERNET_SEC_CERT_DATE_INVALID 12037L
#define ERROR_INTERNET_SEC_CERT_CN_INVALID 12038L
#define ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR 12040L
#define ERROR_INTERNET_INVALID_CA 12045L
#define ERROR_HTTP_HEADER_NOT_FOUND 12150L
#define ERROR_HTTP_INVALID_SERVER_RESPONSE 12152L
#define ERROR_HTTP_INVALID_HEADER 12153L
#define ERROR_HTTP_INVALID_QUERY_REQUEST 12154L
#define ERROR_HTTP_REDIRECT_FAILED 12156L
#define ERROR_INTERNET_SECURITY_CHANNEL_ERROR 12157L
#define ERROR_INTERNET_SEC_INVALID_CERT 12169L
#define ERROR_INTERNET_SEC_CERT_REVOKED 12170L

// The agent may be null: no such header then. With OPEN_TYPE_PROXY the proxy is "host:port", or a
// list of "http=host:port" and "https=host:port"; the bypass is a list of host names with "*" as a
// joker, and "<local>" for names without a dot; both lists are separated by blanks or semicolons.
// The other types go without a proxy. Without libcurl on the machine it is ERROR_MOD_NOT_FOUND.
// There are no flags: asynchronous sessions and such give ERROR_INVALID_PARAMETER.
#define INTERNET_OPEN_TYPE_PRECONFIG 0
#define INTERNET_OPEN_TYPE_DIRECT 1
#define INTERNET_OPEN_TYPE_PROXY 3
#define INTERNET_OPEN_TYPE_PRECONFIG_WITH_NO_AUTOPROXY 4
WINAPI_EXPORT HINTERNET WINAPI InternetOpenW(LPCWSTR agent, DWORD accessType, LPCWSTR proxy,
                                             LPCWSTR proxyBypass, DWORD flags);

// Nothing goes out yet. User and password, unless null or empty, answer a server that asks for
// them; a body that is written piece by piece takes them along from the start.
#define INTERNET_SERVICE_HTTP 3
WINAPI_EXPORT HINTERNET WINAPI InternetConnectW(HINTERNET session, LPCWSTR server,
                                                INTERNET_PORT port, LPCWSTR user, LPCWSTR password,
                                                DWORD service, DWORD flags, ULONG_PTR context);

// The verb, object, version and accepted types may be null: "GET", "/", "HTTP/1.1", none. Of the
// object's characters those that can't stand in a request line are sent as "%XX", its bytes as they
// are. Other flags make no difference.
#define INTERNET_FLAG_RELOAD 0x80000000
#define INTERNET_FLAG_NO_CACHE_WRITE 0x04000000
#define INTERNET_FLAG_SECURE 0x00800000           // HTTPS
#define INTERNET_FLAG_KEEP_CONNECTION 0x00400000  // for the next request; else closed behind this
#define INTERNET_FLAG_NO_AUTO_REDIRECT 0x00200000
#define INTERNET_FLAG_NO_COOKIES 0x00080000
#define INTERNET_FLAG_NO_AUTH 0x00040000
#define INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTP 0x00008000  // from HTTPS
#define INTERNET_FLAG_RESYNCHRONIZE 0x00000800
#define INTERNET_FLAG_HYPERLINK 0x00000400
#define INTERNET_FLAG_NO_UI 0x00000200
#define INTERNET_FLAG_PRAGMA_NOCACHE 0x00000100
WINAPI_EXPORT HINTERNET WINAPI HttpOpenRequestA(HINTERNET connection, LPCSTR verb, LPCSTR object,
                                                LPCSTR version, LPCSTR referer, LPCSTR* acceptTypes,
                                                DWORD flags, ULONG_PTR context);

// One or more lines "Name: value", separated by CR LF, of a length or, with -1, terminated. A line
// that is none gives ERROR_HTTP_INVALID_HEADER and adds nothing.
#define HTTP_ADDREQ_FLAG_ADD_IF_NEW 0x10000000
#define HTTP_ADDREQ_FLAG_ADD 0x20000000
#define HTTP_ADDREQ_FLAG_REPLACE 0x80000000
WINAPI_EXPORT BOOL WINAPI HttpAddRequestHeadersA(HINTERNET request, LPCSTR headers, DWORD length,
                                                 DWORD flags);

// Sends the request with its whole body, and returns when the head of the answer is there, of
// whatever status.
WINAPI_EXPORT BOOL WINAPI HttpSendRequestW(HINTERNET request, LPCWSTR headers, DWORD headersLength,
                                           LPVOID body, DWORD bodySize);

// Sends the head of a request whose body of dwBufferTotal bytes follows by InternetWriteFile, which
// returns when its bytes have gone out; HttpEndRequestW then waits for the head of the answer. A
// server may answer before it has the body: the rest of it goes nowhere then. The buffers have no
// data of their own; of those of HttpEndRequestW nothing is used.
typedef struct _INTERNET_BUFFERSW {
  DWORD dwStructSize;
  struct _INTERNET_BUFFERSW* Next;
  LPCWSTR lpcszHeader;
  DWORD dwHeadersLength;
  DWORD dwHeadersTotal;
  LPVOID lpvBuffer;
  DWORD dwBufferLength;
  DWORD dwBufferTotal;
  DWORD dwOffsetLow;
  DWORD dwOffsetHigh;
} INTERNET_BUFFERSW, *LPINTERNET_BUFFERSW;
WINAPI_EXPORT BOOL WINAPI HttpSendRequestExW(HINTERNET request, LPINTERNET_BUFFERSW in,
                                             LPINTERNET_BUFFERSW out, DWORD flags,
                                             ULONG_PTR context);
WINAPI_EXPORT BOOL WINAPI InternetWriteFile(HINTERNET request, const void* data, DWORD size,
                                            LPDWORD written);
WINAPI_EXPORT BOOL WINAPI HttpEndRequestW(HINTERNET request, LPINTERNET_BUFFERSW out, DWORD flags,
                                          ULONG_PTR context);

// A header of the answer: one of these levels, or QUERY_CUSTOM, for which the buffer holds the
// name. The index, 0 where null, tells which of several headers of that name, and is then one more.
// size is in bytes: on success that of the text without its terminator, with
// ERROR_INSUFFICIENT_BUFFER that of the buffer needed. With FLAG_NUMBER the buffer gets a DWORD.
// Text is decoded from CP_ACP.
#define HTTP_QUERY_CONTENT_TYPE 1
#define HTTP_QUERY_CONTENT_LENGTH 5
#define HTTP_QUERY_DATE 9
#define HTTP_QUERY_LAST_MODIFIED 11
#define HTTP_QUERY_VERSION 18
#define HTTP_QUERY_STATUS_CODE 19
#define HTTP_QUERY_STATUS_TEXT 20
#define HTTP_QUERY_RAW_HEADERS_CRLF 22
#define HTTP_QUERY_LOCATION 33
#define HTTP_QUERY_SERVER 36
#define HTTP_QUERY_SET_COOKIE 43
#define HTTP_QUERY_CUSTOM 65535
#define HTTP_QUERY_FLAG_NUMBER 0x20000000
WINAPI_EXPORT BOOL WINAPI HttpQueryInfoW(HINTERNET request, DWORD level, LPVOID buffer,
                                         LPDWORD size, LPDWORD index);

// Body of the answer, as it comes: waits until there is some, and gives what has come. TRUE and 0
// bytes is its end.
WINAPI_EXPORT BOOL WINAPI InternetReadFile(HINTERNET request, LPVOID buffer, DWORD size,
                                           LPDWORD read);
// How much of it can be read without waiting; waits until there is some. 0 is the end.
WINAPI_EXPORT BOOL WINAPI InternetQueryDataAvailable(HINTERNET request, LPDWORD available,
                                                     DWORD flags, ULONG_PTR context);

// A session hands its options to the connections that are opened later, a connection to requests.
// Time-outs are milliseconds of silence, 30,000 from the start and 60,000 for connecting; as long
// as bytes move nothing is cut. 0xFFFFFFFF, and 0, are without end. The length of a text is in
// characters.
#define INTERNET_OPTION_CONNECT_TIMEOUT 2
#define INTERNET_OPTION_SEND_TIMEOUT 5
#define INTERNET_OPTION_RECEIVE_TIMEOUT 6
#define INTERNET_OPTION_USERNAME 28
#define INTERNET_OPTION_PASSWORD 29
#define INTERNET_OPTION_PROXY_USERNAME 43
#define INTERNET_OPTION_PROXY_PASSWORD 44
WINAPI_EXPORT BOOL WINAPI InternetSetOptionW(HINTERNET handle, DWORD option, LPVOID value,
                                             DWORD size);

// Ends what is under the handle too, and calls of other threads that wait for something of either:
// with ERROR_INTERNET_OPERATION_CANCELLED.
WINAPI_EXPORT BOOL WINAPI InternetCloseHandle(HINTERNET handle);
