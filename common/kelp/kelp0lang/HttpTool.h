// The platform under the HTTP family: how errors are raised, and text between the widths.
//
//   using Tool = Dovek::CHttpToolW;
//   const auto narrow = Dovek::detail::MallocText<char>(Tool::Unicode2Ansi(name, 1252));
//
// The templates of the family take this class as their policy. All operations are static and hold
// no state, so that any thread may call them. Text that they give is from malloc and the caller's,
// to be released with free. The code pages of UTF-7 and UTF-8 aren't taken where a code page is
// asked for (contract error): the encoder has a switch for UTF-8.
#pragma once

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
  static auto Guard(Work work) {
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
  // Null for null.
  static Text Copy(const C* text) {
    Text copy = detail::TryCopy(text);
    if (text != nullptr && copy == nullptr) RaiseError(HttpErrorId::kOutOfMemory);
    return copy;
  }

 private:
  [[noreturn]] static void RaiseParts(std::initializer_list<const C*> parts) {
    std::size_t length = 1;
    for (const C* const part : parts) length += detail::LengthOf(part);
    const Text text = Allocate(length);
    C* target = text.get();
    for (const C* part : parts) {
      while (*part != 0) *target++ = *part++;
    }
    *target = 0;
    RaiseError(text.get());
  }
};

// The calls of the platform that are made with narrow text.
class CHttpToolA : public CHttpErrorToolT<char> {};

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
};

}  // namespace Dovek
