// The response to a request: its headers, and its content piece by piece.
//
//   std::unique_ptr<Dovek::CHttpResponseT<Dovek::CHttpToolW>> response(client.SendGet(url, false));
//   const WChar* type = response->GetHeader(KTEXT("Content-Type"), 0);
//   BYTE piece[10'000];
//   while (const DWORD bytes = response->ReadContent(piece, sizeof piece)) Take(piece, bytes);
//
// It owns the handles behind it and may outlive the client. Content is read forward only.
#pragma once

#include <memory>

#include "kelp0lang/HttpClientMap.h"
#include "kelp0lang/HttpTool.h"

namespace Dovek {

template <class Tool>
class CHttpResponseT {
 public:
  // Takes the handles over; null for those that are another's.
  CHttpResponseT(HINTERNET internet, HINTERNET connection, HINTERNET request)
      : m_hInternet(internet), m_hConnection(connection), m_hRequest(request) {}
  CHttpResponseT(const CHttpResponseT&) = delete;
  CHttpResponseT& operator=(const CHttpResponseT&) = delete;
  virtual ~CHttpResponseT() {
    Tool::CloseInternet(m_hRequest);
    Tool::CloseInternet(m_hConnection);
    Tool::CloseInternet(m_hInternet);
  }

  // What the server says that the content has, in bytes; false where it doesn't say. Id 400.
  BOOL GetContentLength(DWORD& length) {
    Tool::RequirePointer(m_hRequest, KTEXT("CHttpResponseT::GetContentLength"),
                         KTEXT("m_hRequest"));
    return QueryNumber(HTTP_QUERY_CONTENT_LENGTH, length);
  }
  // The status of the answer, such as 200 or 404. Id 400.
  DWORD GetStatus() {
    Tool::RequirePointer(m_hRequest, KTEXT("CHttpResponseT::GetStatus"), KTEXT("m_hRequest"));
    DWORD status = 0;
    QueryNumber(HTTP_QUERY_STATUS_CODE, status);
    return status;
  }
  // The header of that name, in any case, at an index among those of the name; null where there is
  // none. It lives as long as the response. Id 400.
  const WChar* GetHeader(const WChar* name, std::uint32_t index) {
    Tool::RequirePointer(m_hRequest, KTEXT("CHttpResponseT::GetHeader"), KTEXT("m_hRequest"));
    Tool::RequirePointer(name, KTEXT("CHttpResponseT::GetHeader"), KTEXT("szName"));
    if (m_headers.Count(name) == 0 && _LoadHeader(name) == 0) return nullptr;
    return m_headers.Get(name, index).value;
  }
  // The next bytes of the content, as many as have come; 0 at its end. Id 401.
  DWORD ReadContent(BYTE* buffer, DWORD bytes) {
    Tool::RequirePointer(m_hRequest, KTEXT("CHttpResponseT::ReadContent"), KTEXT("m_hRequest"));
    Tool::RequirePointer(buffer, KTEXT("CHttpResponseT::ReadContent"), KTEXT("pbyBuff"));
    Tool::RequireCount(bytes, KTEXT("CHttpResponseT::ReadContent"), KTEXT("cbBuff"));
    DWORD read = 0;
    if (!InternetReadFile(m_hRequest, buffer, bytes, &read)) {
      Tool::RaiseError(HttpErrorId::kReadFile, GetLastError());
    }
    return read;
  }
  // Fetches all headers of a name from the platform; gives how many there are.
  DWORD _LoadHeader(const WChar* name) {
    Tool::RequirePointer(m_hRequest, KTEXT("CHttpResponseT::_LoadHeader"), KTEXT("m_hRequest"));
    Tool::RequirePointer(name, KTEXT("CHttpResponseT::_LoadHeader"), KTEXT("szName"));
    DWORD index = 0;
    DWORD count = 0;
    while (WChar* const value = Tool::GetHeader(m_hRequest, name, &index)) {
      typename Tool::Text ownValue(value);
      typename Tool::Text ownName = Tool::Copy(name);
      m_headers.AddPointerDirectly(ownName.release(), ownValue.release(), 0);
      ++count;
    }
    return count;
  }

 private:
  bool QueryNumber(DWORD level, DWORD& number) {
    DWORD value = 0;
    DWORD size = sizeof value;
    if (HttpQueryInfoW(m_hRequest, level | HTTP_QUERY_FLAG_NUMBER, &value, &size, nullptr)) {
      number = value;
      return true;
    }
    const DWORD error = GetLastError();
    if (error != ERROR_HTTP_HEADER_NOT_FOUND) Tool::RaiseError(HttpErrorId::kQueryInfo, error);
    return false;
  }

  CHttpClientMapT<Tool> m_headers;  // those that were asked for
  HINTERNET m_hInternet;
  HINTERNET m_hConnection;
  HINTERNET m_hRequest;
};

}  // namespace Dovek
