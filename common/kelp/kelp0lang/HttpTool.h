// The platform under the HTTP family: how errors are raised, text between the widths, and WinINet.
//
//   using Tool = Dovek::CHttpToolW;
//   HINTERNET connection = Tool::OpenConnection(internet, KTEXT("example.com"), 80, nullptr,
//   nullptr); HINTERNET request = Tool::OpenRequest(connection, KTEXT("GET"), KTEXT("/"), 0,
//   nullptr, 0); Tool::SendRequest(request, nullptr, 0); Tool::CloseInternet(request);
//
// The templates of the family take this class as their policy. All operations are static and hold
// no state, so that any thread may call them. Text that they give is from malloc and the caller's,
// to be released with free. The code pages of UTF-7 and UTF-8 aren't taken where a code page is
// asked for (contract error): the encoder has a switch for UTF-8. A null handle and other arguments
// that can't be are contract errors; a call of the platform that fails has its id of the table.
#pragma once

// windows.h comes before those that need it.
#include <windows.h>
#include <wininet.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <new>

#include "kelp0lang/HttpError.h"

namespace Dovek {
namespace detail {

// The text with a path in the place of its "%ls", as far as it goes into 511 characters.
template <class C>
void PutPath(const C* text, const C* path, C (&buffer)[512]) {
  C* target = buffer;
  C* const end = buffer + 511;
  for (; *text != 0 && target != end; ++text) {
    if (text[0] != '%' || text[1] != 'l' || text[2] != 's') {
      *target++ = *text;
      continue;
    }
    for (const C* unit = path; *unit != 0 && target != end; ++unit) *target++ = *unit;
    text += 2;
  }
  *target = 0;
}

}  // namespace detail

// Raising errors, and the arguments of operations, in either width. None of RaiseError returns.
template <class C>
class CHttpErrorToolT {
 public:
  using Char = C;
  using Text = detail::MallocText<C>;
  using Exception = httpclientexceptionT<C>;

  // The text of the table, into which a path goes unless it is null.
  [[noreturn]] static void RaiseError(std::uint32_t errorId, std::uint32_t win32Error = 0,
                                      const C* path = nullptr) {
    const C* const text = detail::ErrorTextOf<C>(errorId);
    if (path == nullptr) throw Exception(text, errorId, win32Error);
    C message[512];
    detail::PutPath(text, path, message);
    throw Exception(message, errorId, win32Error);
  }
  // That very text.
  [[noreturn]] static void RaiseError(const C* text, std::uint32_t errorId = 0,
                                      std::uint32_t win32Error = 0) {
    throw Exception(text, errorId, win32Error);
  }

  // A breach of the contract of an operation, which is named with its class: "operation: breach".
  [[noreturn]] static void RaiseBreach(const C* operation, const C* breach) {
    RaiseParts({operation, detail::kColon.As<C>(), breach});
  }
  // Refuse an argument.
  static void RequirePointer(const void* argument, const C* operation, const C* name) {
    if (argument == nullptr)
      RaiseParts({operation, detail::kColon.As<C>(), name, detail::kCanNotBeNull.As<C>()});
  }
  static void RequireText(const C* argument, const C* operation, const C* name) {
    RequirePointer(argument, operation, name);
    if (*argument == 0)
      RaiseParts({operation, detail::kColon.As<C>(), name, detail::kCanNotBeEmpty.As<C>()});
  }
  static void RequireCount(std::uint64_t argument, const C* operation, const C* name) {
    if (argument == 0)
      RaiseParts({operation, detail::kColon.As<C>(), name, detail::kCanNotBeZero.As<C>()});
  }
  // What goes into a line of a head must not end it: a line of the value's own would follow.
  static void RequireOneLine(const C* argument, const C* operation, const C* name) {
    for (; argument != nullptr && *argument != 0; ++argument) {
      if (*argument == '\r' || *argument == '\n')
        RaiseParts({operation, detail::kColon.As<C>(), name, detail::kCanNotHaveLineEnd.As<C>()});
    }
  }

  // Runs a public operation: arithmetic without a result and memory that can't be had leave it as
  // the family's exception.
  template <class Work>
  static auto Guard(Work work) -> decltype(work()) {
    try {
      return work();
    } catch (const SafeIntException& error) {
      RaiseError(error.ErrorId());
    } catch (const std::bad_alloc&) {
      RaiseError(HttpErrorId::kOutOfMemory);
    }
  }
  // Room for count characters, the terminator among them.
  static Text Allocate(std::size_t count) {
    Text text(static_cast<C*>(std::malloc(detail::CheckedMultiply(count, sizeof(C)))));
    if (text == nullptr) RaiseError(HttpErrorId::kOutOfMemory);
    return text;
  }
  static Text Join(std::initializer_list<const C*> parts) {
    std::size_t length = 1;
    for (const C* const part : parts) {
      length = detail::CheckedAdd(length, detail::LengthOf(part));
    }
    Text text = Allocate(length);
    C* target = text.get();
    for (const C* part : parts) {
      while (*part != 0) *target++ = *part++;
    }
    *target = 0;
    return text;
  }
  // Null for null.
  static Text Copy(const C* text) {
    Text copy = detail::TryCopy(text);
    if (text != nullptr && copy == nullptr) RaiseError(HttpErrorId::kOutOfMemory);
    return copy;
  }

 private:
  [[noreturn]] static void RaiseParts(std::initializer_list<const C*> parts) {
    RaiseError(Join(parts).get());
  }
};

// The calls of the platform that are made with narrow text.
class CHttpToolA : public CHttpErrorToolT<char> {
 public:
  // HTTP/1.1, for any type of answer. Id 404.
  static HINTERNET OpenRequest(HINTERNET hConnection, const char* verb, const char* objectName,
                               DWORD flags, const char* referer) {
    RequirePointer(hConnection, "CHttpToolA::OpenRequest", "hConnection");
    RequireText(objectName, "CHttpToolA::OpenRequest", "szObjectName");
    RequireOneLine(objectName, "CHttpToolA::OpenRequest", "szObjectName");
    RequireOneLine(referer, "CHttpToolA::OpenRequest", "szReferer");
    const char* accepted[] = {"*/*", nullptr};
    const HINTERNET request =
        HttpOpenRequestA(hConnection, verb, objectName, "HTTP/1.1", referer, accepted, flags, 0);
    if (request == nullptr) RaiseError(HttpErrorId::kOpenRequest, GetLastError());
    return request;
  }
  // "name: value" beside the headers that are there; null for an empty value. Id 405.
  static void AddHeader(HINTERNET hRequest, const char* name, const char* value) {
    RequirePointer(hRequest, "CHttpToolA::AddHeader", "hRequest");
    RequirePointer(name, "CHttpToolA::AddHeader", "szName");
    RequireOneLine(name, "CHttpToolA::AddHeader", "szName");
    RequireOneLine(value, "CHttpToolA::AddHeader", "szValue");
    const Text line = Join({name, ": ", value == nullptr ? "" : value, "\r\n"});
    const DWORD length = detail::CheckedCast<DWORD>(detail::LengthOf(line.get()));
    if (!HttpAddRequestHeadersA(hRequest, line.get(), length, HTTP_ADDREQ_FLAG_ADD)) {
      RaiseError(HttpErrorId::kAddHeaders, GetLastError());
    }
  }
};

// The platform, and the policy of the templates.
class CHttpToolW : public CHttpErrorToolT<WChar> {
 public:
  using CHttpErrorToolT<WChar>::RaiseError;

  // A narrow text, such as that of a std::exception.
  [[noreturn]] static void RaiseError(const char* text, std::uint32_t errorId = 0,
                                      std::uint32_t win32Error = 0) {
    const Text wide(Ansi2Unicode(text, 0));
    RaiseError(wide.get(), errorId, win32Error);
  }

  // A copy in the other width; null for null. Id 601 or 600 where the platform can't convert.
  static WChar* Ansi2Unicode(const char* text, UINT codePage) {
    RefuseUtf(codePage, KTEXT("CHttpToolW::Ansi2Unicode"));
    if (text == nullptr) return nullptr;
    return Guard([&] {
      const int count = MultiByteToWideChar(codePage, 0, text, -1, nullptr, 0);
      Text wide = Allocate(static_cast<std::size_t>(count) + 1);
      if (count == 0 || MultiByteToWideChar(codePage, 0, text, -1, wide.get(), count) == 0) {
        RaiseError(HttpErrorId::kToWide, GetLastError());
      }
      return wide.release();
    });
  }
  static char* Unicode2Ansi(const WChar* text, UINT codePage) {
    RefuseUtf(codePage, KTEXT("CHttpToolW::Unicode2Ansi"));
    return Guard([&] { return ToNarrow(text, codePage).release(); });
  }
  // The same, in any code page.
  static detail::MallocText<char> ToNarrow(const WChar* text, UINT codePage) {
    if (text == nullptr) return nullptr;
    const int count = WideCharToMultiByte(codePage, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (count == 0) RaiseError(HttpErrorId::kToMultiByte, GetLastError());
    detail::MallocText<char> narrow(
        static_cast<char*>(std::malloc(static_cast<std::size_t>(count))));
    if (narrow == nullptr) RaiseError(HttpErrorId::kOutOfMemory);
    if (WideCharToMultiByte(codePage, 0, text, -1, narrow.get(), count, nullptr, nullptr) == 0) {
      RaiseError(HttpErrorId::kToMultiByte, GetLastError());
    }
    return narrow;
  }
  static void RefuseUtf(UINT codePage, const WChar* operation) {
    constexpr UINT kUtf7 = 65000;
    if (codePage != kUtf7 && codePage != CP_UTF8) return;
    RaiseBreach(operation,
                KTEXT("CP_UTF8 and CP_UTF7 can not be used for the CodePage parameter."));
  }

  // A connection for HTTP; user and password may be null. Id 403.
  static HINTERNET OpenConnection(HINTERNET hInternet, const WChar* server, INTERNET_PORT port,
                                  const WChar* user, const WChar* password) {
    RequirePointer(hInternet, KTEXT("CHttpToolW::OpenConnection"), KTEXT("hInternet"));
    RequireText(server, KTEXT("CHttpToolW::OpenConnection"), KTEXT("szServerAddr"));
    const HINTERNET connection =
        InternetConnectW(hInternet, server, port, user, password, INTERNET_SERVICE_HTTP, 0, 0);
    if (connection == nullptr) RaiseError(HttpErrorId::kConnect, GetLastError());
    return connection;
  }
  // The flags are INTERNET_FLAG_...; verb and referer may be null. Id 404.
  static HINTERNET OpenRequest(HINTERNET hConnection, const WChar* verb, const WChar* objectName,
                               DWORD flags, const WChar* referer, UINT codePage) {
    RequirePointer(hConnection, KTEXT("CHttpToolW::OpenRequest"), KTEXT("hConnection"));
    RequireText(objectName, KTEXT("CHttpToolW::OpenRequest"), KTEXT("szObjectName"));
    RefuseUtf(codePage, KTEXT("CHttpToolW::OpenRequest"));
    return GuardNarrow([&] {
      const auto narrowVerb = ToNarrow(verb, codePage);
      const auto narrowName = ToNarrow(objectName, codePage);
      const auto narrowReferer = ToNarrow(referer, codePage);
      return CHttpToolA::OpenRequest(hConnection, narrowVerb.get(), narrowName.get(), flags,
                                     narrowReferer.get());
    });
  }
  // A null value is an empty one; a line end in name or value is a contract error. Id 405.
  static void AddHeader(HINTERNET hRequest, const WChar* name, const WChar* value, UINT codePage) {
    RequirePointer(hRequest, KTEXT("CHttpToolW::AddHeader"), KTEXT("hRequest"));
    RequirePointer(name, KTEXT("CHttpToolW::AddHeader"), KTEXT("szName"));
    RefuseUtf(codePage, KTEXT("CHttpToolW::AddHeader"));
    GuardNarrow([&] {
      const auto narrowName = ToNarrow(name, codePage);
      const auto narrowValue = ToNarrow(value, codePage);
      CHttpToolA::AddHeader(hRequest, narrowName.get(), narrowValue.get());
    });
  }
  // Returns when the head of the answer is there. Null is no body. Id 406.
  static void SendRequest(HINTERNET hRequest, const WChar* body, UINT codePage) {
    RequirePointer(hRequest, KTEXT("CHttpToolW::SendRequest"), KTEXT("hRequest"));
    RefuseUtf(codePage, KTEXT("CHttpToolW::SendRequest"));
    Guard([&] {
      const auto narrow = ToNarrow(body, codePage);
      const std::size_t length = narrow == nullptr ? 0 : detail::LengthOf(narrow.get());
      if (!HttpSendRequestW(hRequest, nullptr, 0, narrow.get(),
                            detail::CheckedCast<DWORD>(length))) {
        RaiseError(HttpErrorId::kSendRequest, GetLastError());
      }
    });
  }
  // The head of a request whose body of that size follows. Id 407.
  static void SendRequestEx(HINTERNET hRequest, DWORD totalBytes) {
    RequirePointer(hRequest, KTEXT("CHttpToolW::SendRequestEx"), KTEXT("hRequest"));
    INTERNET_BUFFERSW buffers{};
    buffers.dwStructSize = sizeof buffers;
    buffers.dwBufferTotal = totalBytes;
    if (!HttpSendRequestExW(hRequest, &buffers, nullptr, 0, 0)) {
      RaiseError(HttpErrorId::kSendRequestEx, GetLastError());
    }
  }
  // All of it. Id 408, also where the platform says that it has taken nothing.
  static void InternetWriteFile(HINTERNET hRequest, const void* buffer, DWORD bytes) {
    RequirePointer(hRequest, KTEXT("CHttpToolW::InternetWriteFile"), KTEXT("hRequest"));
    RequirePointer(buffer, KTEXT("CHttpToolW::InternetWriteFile"), KTEXT("pbyBuff"));
    RequireCount(bytes, KTEXT("CHttpToolW::InternetWriteFile"), KTEXT("cbyBuff"));
    const char* rest = static_cast<const char*>(buffer);
    while (bytes != 0) {
      DWORD written = 0;
      SetLastError(ERROR_SUCCESS);
      if (!::InternetWriteFile(hRequest, rest, bytes, &written) || written == 0) {
        RaiseError(HttpErrorId::kWriteFile, GetLastError());
      }
      rest += written;
      bytes -= written;
    }
  }
  // The body has been written: waits for the head of the answer. Id 409.
  static void EndRequest(HINTERNET hRequest) {
    RequirePointer(hRequest, KTEXT("CHttpToolW::EndRequest"), KTEXT("hRequest"));
    if (!HttpEndRequestW(hRequest, nullptr, 0, 0)) {
      RaiseError(HttpErrorId::kEndRequest, GetLastError());
    }
  }
  // The header of that name at the index, which then is one more; null, and the index as it was,
  // where there is none. A null index is the first. Id 400.
  static WChar* GetHeader(HINTERNET hRequest, const WChar* name, DWORD* index) {
    RequirePointer(hRequest, KTEXT("CHttpToolW::GetHeader"), KTEXT("hRequest"));
    RequirePointer(name, KTEXT("CHttpToolW::GetHeader"), KTEXT("szName"));
    return Guard([&]() -> WChar* {
      const DWORD before = index == nullptr ? 0 : *index;
      const std::size_t nameSize =
          detail::CheckedMultiply(detail::LengthOf(name) + 1, sizeof(WChar));
      DWORD size = detail::CheckedCast<DWORD>(nameSize);
      for (int attempt = 0; attempt < 2; ++attempt) {
        // The query reads the name from the buffer that it fills.
        const DWORD room = std::max(size, detail::CheckedCast<DWORD>(nameSize));
        Text value = Allocate(room / sizeof(WChar) + 1);
        std::memcpy(value.get(), name, nameSize);
        size = room;
        if (HttpQueryInfoW(hRequest, HTTP_QUERY_CUSTOM, value.get(), &size, index)) {
          return value.release();
        }
        const DWORD error = GetLastError();
        if (index != nullptr) *index = before;
        if (error == ERROR_HTTP_HEADER_NOT_FOUND) return nullptr;
        if (error != ERROR_INSUFFICIENT_BUFFER || attempt == 1) {
          RaiseError(HttpErrorId::kQueryInfo, error);
        }
      }
      return nullptr;
    });
  }
  // Below 4 GiB; a larger file, as one whose size can't be had, has id 605 with the path.
  static DWORD GetFileSize(HANDLE hFile, const WChar* path) {
    RequirePointer(hFile, KTEXT("CHttpToolW::GetFileSize"), KTEXT("hFile"));
    RequirePointer(path, KTEXT("CHttpToolW::GetFileSize"), KTEXT("szFilePath"));
    constexpr DWORD kFailed = 0xFFFFFFFF;
    DWORD high = 0;
    SetLastError(ERROR_SUCCESS);
    const DWORD size = ::GetFileSize(hFile, &high);
    if (size == kFailed || high != 0) {
      RaiseError(HttpErrorId::kDiskSize, GetLastError(), path);
    }
    return size;
  }
  // Closes a handle unless it is null, and makes it null.
  static void CloseInternet(HINTERNET& handle) {
    if (handle != nullptr) InternetCloseHandle(handle);
    handle = nullptr;
  }

 private:
  // The failure of a narrow form leaves in the wide one, with the same text and numbers.
  template <class Work>
  static auto GuardNarrow(Work work) -> decltype(work()) {
    return Guard([&] {
      try {
        return work();
      } catch (const httpclientexceptionA& error) {
        RaiseError(error.GetMessage(), error.ErrorId(), error.Win32Error());
      }
    });
  }
};

}  // namespace Dovek
