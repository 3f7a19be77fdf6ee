// The HTTP client: a GET in one call, and posts that go piece by piece, so that a program can show
// how far they are.
//
//   Dovek::CHttpClientT<Dovek::CHttpToolW, Dovek::CHttpEncoderW> client;
//   client.AddParam(KTEXT("points"), KTEXT("C:\\job\\points.csv"), Dovek::ParamFile);
//   client.StartUpload(60'000, KTEXT("https://example.com/jobs"), false);
//   std::unique_ptr<Dovek::CHttpResponseT<Dovek::CHttpToolW>> response;
//   while (response == nullptr) {
//     response.reset(client.Proceed(50'000));
//     if (response == nullptr) Show(client.PostStat().ActualPostedByte());
//   }
//
// Every failure is an httpclientexceptionW, after which no post is under way. A client is for one
// thread at a time, and its requests run on that thread. Where it is used on Windows the program
// links wininet and ole32.
//
// A post whose context is open takes no other parameters and settings (contract error).
#pragma once

#include <windows.h>
// windows.h comes before those that need it.
#include <objbase.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "kelp0lang/HttpClientMap.h"
#include "kelp0lang/HttpEncoder.h"
#include "kelp0lang/HttpPostStat.h"
#include "kelp0lang/HttpResponse.h"
#include "kelp0lang/HttpTool.h"
#include "kelp0lang/HttpUrlAnalyzer.h"

namespace Dovek {

// What a request may be given beside its URL, in the general forms of the client's operations.
struct THttpRequestOptions {
  DWORD flags = 0;                  // INTERNET_FLAG_...
  DWORD timeout = 0;                // milliseconds of silence; 0 leaves the platform's
  HINTERNET hInternet = nullptr;    // lent: the client neither closes it nor passes it on
  HINTERNET hConnection = nullptr;  // lent as well
  const WChar* referer = nullptr;
  const WChar* user = nullptr;
  const WChar* password = nullptr;
};

namespace detail {

// Request flags: ask for fresh content, or take what a cache has.
inline constexpr DWORD kHttpKeptFlags = INTERNET_FLAG_KEEP_CONNECTION |
                                        INTERNET_FLAG_RESYNCHRONIZE | INTERNET_FLAG_HYPERLINK |
                                        INTERNET_FLAG_NO_UI;
inline constexpr DWORD kHttpFreshFlags = kHttpKeptFlags | INTERNET_FLAG_RELOAD |
                                         INTERNET_FLAG_NO_CACHE_WRITE |
                                         INTERNET_FLAG_PRAGMA_NOCACHE;
static_assert(kHttpKeptFlags == 0x00400E00 && kHttpFreshFlags == 0x84400F00);

// The handles of a request under way; those that aren't lent end with it.
template <class Tool>
struct HttpHandles {
  HINTERNET internet = nullptr;
  BOOL internetLent = FALSE;
  HINTERNET connection = nullptr;
  BOOL connectionLent = FALSE;
  HINTERNET request = nullptr;

  HttpHandles() = default;
  HttpHandles(HttpHandles&& other) noexcept { *this = std::move(other); }
  HttpHandles& operator=(HttpHandles&& other) noexcept {
    std::swap(internet, other.internet);
    std::swap(internetLent, other.internetLent);
    std::swap(connection, other.connection);
    std::swap(connectionLent, other.connectionLent);
    std::swap(request, other.request);
    return *this;
  }
  ~HttpHandles() {
    Tool::CloseInternet(request);
    if (!connectionLent) Tool::CloseInternet(connection);
    if (!internetLent) Tool::CloseInternet(internet);
  }
};

// A file that is uploaded.
struct HttpUploadFile {
  HANDLE handle = INVALID_HANDLE_VALUE;
  DWORD length = 0;  // when the post began

  HttpUploadFile(HANDLE file, DWORD size) : handle(file), length(size) {}
  HttpUploadFile(HttpUploadFile&& other) noexcept
      : handle(std::exchange(other.handle, INVALID_HANDLE_VALUE)), length(other.length) {}
  HttpUploadFile& operator=(HttpUploadFile&&) = delete;
  ~HttpUploadFile() {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
};

}  // namespace detail

template <class Tool, class Encoder>
class CHttpClientT {
 public:
  using Response = CHttpResponseT<Tool>;
  using Map = CHttpClientMapT<Tool>;
  using PostStatistics = CHttpPostStatT<Tool>;
  using Text = typename Tool::Text;
  using NarrowText = detail::MallocText<char>;

  CHttpClientT();
  CHttpClientT(const CHttpClientT&) = delete;
  CHttpClientT& operator=(const CHttpClientT&) = delete;
  virtual ~CHttpClientT() { _EndPostContext(); }

  // Settings; null gives back what was there at first. The agent's first is "Dovek HTTP Client
  // Class". The access type is INTERNET_OPEN_TYPE_..., with proxy and bypass as InternetOpenW takes
  // them.
  void SetAgent(const WChar* agent);
  void SetProxy(DWORD accessType, const WChar* proxy, const WChar* proxyBypass);
  void SetProxyAccount(const WChar* user, const WChar* password);
  // Values and names in UTF-8, or else in a code page: 0, the system's, at first.
  void UseUtf8(BOOL useUtf8);
  void SetCodePage(UINT codePage);

  // Headers of all requests that follow. A line end in one is a contract error.
  void AddHeader(const WChar* name, const WChar* value);
  // False where there was none.
  BOOL ClearHeader();

  // Parameters of the next requests, with flags of enumHttpParam; in the URL of a GET, in the body
  // of a post. They are sent in the order of the map.
  void AddParam(const WChar* name, const WChar* value, std::uint32_t flags);
  BOOL ClearParam();

  // The response is the caller's. Without the cache fresh content is asked for. A post that is
  // under way ends.
  Response* SendGet(const WChar* url, BOOL useCache);
  Response* SendGet(const WChar* url, const THttpRequestOptions& options);

  // Begin a post: URL-encoded, or as multipart, where a parameter with ParamFile is a file. Its
  // files are open and their sizes known from here on; below 4 GiB in all.
  void StartPost(DWORD timeout, const WChar* url, BOOL useCache);
  void StartPost(const WChar* url, const THttpRequestOptions& options);
  void StartUpload(DWORD timeout, const WChar* url, BOOL useCache);
  void StartUpload(const WChar* url, const THttpRequestOptions& options);
  // Moves the post on, by at most desired bytes of values. Null until the response is there, which
  // is the caller's. Id 104 where no post is under way.
  Response* Proceed(DWORD desired);
  // How far the post is.
  const PostStatistics& PostStat() const { return m_postStat; }

  // The steps of these operations.
  HINTERNET OpenInternet();
  HINTERNET OpenConnection(HINTERNET hInternet, const WChar* url, const WChar* user,
                           const WChar* password);
  void ApplyProxyAccount(HINTERNET hConnection);
  HINTERNET OpenRequest(HINTERNET hConnection, const WChar* verb, const WChar* url, DWORD flags,
                        const WChar* referer);
  void AddRequestHeader(HINTERNET hRequest);
  // The URL with the parameters in it; the length is without the terminator.
  void MakeGetUrl(WChar* buffer, const WChar* url);
  DWORD GetUrlLen(const WChar* url);
  void _WritePost(const void* buffer, DWORD bytes, BOOL isValue);
  void _EndPostContext();
  // Null for a handle that is lent; the others are the caller's.
  void _ReleasePostResponse(HINTERNET& hInternet, HINTERNET& hConnection, HINTERNET& hRequest);

 private:
  using Analyzer = CHttpUrlAnalyzerT<Tool>;
  using Handles = detail::HttpHandles<Tool>;
  using Parameter = typename Map::Entries::const_iterator;
  static constexpr DWORD kFileBuffer = 57'344;

  // A public operation: what comes out of it is of the family.
  template <class Work>
  static auto Run(Work work);
  void RefuseWhilePosting(const WChar* operation) const;
  void MakeBoundary();

  static bool IsHttps(const WChar* url, const Analyzer& parts);
  static INTERNET_PORT PortOf(const WChar* url, const Analyzer& parts);
  static THttpRequestOptions OptionsOf(DWORD timeout, BOOL useCache);
  Handles Open(const WChar* verb, const WChar* url, const THttpRequestOptions& options);
  static Response* MakeResponse(Handles& handles);
  template <class Copy, class Encode>
  void WalkGetUrl(const WChar* url, Copy copy, Encode encode);

  // One step of a post; null until the response is there.
  Response* _ProceedPostContext(DWORD desired);
  Response* _ProceedUploadContext(DWORD desired);
  void RequirePost(DWORD desired, const WChar* operation) const;
  Response* FinishPost();
  void StartContext(Handles handles, std::uint64_t actualTotal, std::uint64_t total,
                    std::uint32_t fileCount);
  void WriteText(const char* text) { _WritePost(text, Size(text), FALSE); }
  void WriteValue(DWORD desired);
  Parameter NextParameter() { return m_next++; }
  static const WChar* ValueOf(Parameter parameter) { return Map::ValueOf(parameter->second).value; }

  // A part of a URL-encoded body.
  NarrowText FormEncoded(const WChar* text, bool isEncoded) const;
  std::uint64_t FormLength(const WChar* text, bool isEncoded) const;
  // Text of a multipart body.
  NarrowText PlainEncoded(const WChar* text) const;
  const char* Boundary() const;
  NarrowText PartHead(Parameter parameter, std::uint32_t file) const;
  NarrowText ClosingLine() const;
  bool IsFile(Parameter parameter) const { return (parameter->second.flags & ParamFile) != 0; }
  void OpenFiles();
  std::uint64_t ValueLength(Parameter parameter, std::uint32_t file) const;
  void StartUploadEntry();
  void WriteFilePiece(DWORD desired);
  static DWORD Size(const char* text) { return detail::CheckedCast<DWORD>(detail::LengthOf(text)); }

  Text m_boundary;  // null: the fixed one
  NarrowText m_narrowBoundary;
  Text m_multipartType;
  BOOL m_useUtf8 = FALSE;
  UINT m_codePage = 0;
  Map m_headers;
  Map m_params;
  Text m_agent;
  DWORD m_accessType = INTERNET_OPEN_TYPE_PRECONFIG;
  Text m_proxy;
  Text m_proxyBypass;
  DWORD m_openFlags = 0;
  Text m_proxyUser;
  Text m_proxyPassword;
  PostStatistics m_postStat;
  std::vector<detail::HttpUploadFile> m_files;
  std::vector<NarrowText> m_mediaTypes;
  NarrowText m_value;  // of the parameter under way, encoded
  Handles m_post;
  BOOL m_isForm = TRUE;
  std::unique_ptr<BYTE[]> m_fileBuffer;
  Parameter m_next;  // the parameter that the post comes to next
};

}  // namespace Dovek

#include "kelp0lang/HttpClientPost.inc"
#include "kelp0lang/HttpClientRequest.inc"
