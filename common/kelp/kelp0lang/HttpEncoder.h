// Text as the HTTP family puts it on the wire: in a code page, in UTF-8, or URL-encoded.
//
//   using Encoder = Dovek::CHttpEncoderW;
//   std::vector<char> text(Encoder::UrlEncodeLen(name, true, 0) + 1);
//   Encoder::UrlEncodeA(text.data(), name, true, 0);  // "a b" is "a+b"
//
// An operation that fills a buffer has a companion that tells the length, without the terminator;
// the buffer has room for that and the terminator. What the platform can't convert has the id 600.
#pragma once

#include "kelp0lang/HttpTool.h"

namespace Dovek {
namespace detail {

// What a byte becomes URL-encoded; 0 stands for "%XX".
struct UrlForms {
  char of[256] = {};
  constexpr UrlForms() {
    for (int c = '0'; c <= '9'; ++c) of[c] = static_cast<char>(c);
    for (int c = 'A'; c <= 'Z'; ++c) of[c] = static_cast<char>(c);
    for (int c = 'a'; c <= 'z'; ++c) of[c] = static_cast<char>(c);
    of[static_cast<int>(' ')] = '+';
  }
};
inline constexpr UrlForms kUrlForms{};

}  // namespace detail

class CHttpEncoderW {
 public:
  using Tool = CHttpToolW;

  // In a code page, other than UTF-8 and UTF-7. Null and empty text have the length 0.
  static DWORD AnsiEncodeLen(const WChar* text, UINT codePage) {
    Tool::RefuseUtf(codePage, KTEXT("CHttpEncoderW::AnsiEncodeLen"));
    return EncodeLen(text, codePage);
  }
  static void AnsiEncode(char* buffer, const WChar* text, UINT codePage) {
    Tool::RequirePointer(buffer, KTEXT("CHttpEncoderW::AnsiEncode"), KTEXT("szBuff"));
    Tool::RefuseUtf(codePage, KTEXT("CHttpEncoderW::AnsiEncode"));
    Encode(buffer, text, codePage);
  }
  static DWORD Utf8EncodeLen(const WChar* text) { return EncodeLen(text, CP_UTF8); }
  static void Utf8Encode(char* buffer, const WChar* text) {
    Tool::RequirePointer(buffer, KTEXT("CHttpEncoderW::Utf8Encode"), KTEXT("szBuff"));
    Encode(buffer, text, CP_UTF8);
  }

  // URL-encoded: ASCII letters and digits stay, a blank is "+", and any other byte "%XX". Each unit
  // is converted by itself, by UTF-8 or else the code page; one that the code page lacks becomes
  // the platform's substitute, and the two of a surrogate pair become two. Null text is a contract
  // error.
  static DWORD UrlEncodeLen(const WChar* text, bool useUtf8, UINT codePage) {
    return Tool::Guard([&] {
      std::uint64_t length = 0;
      ForEachByte(text, useUtf8, codePage,
                  [&](unsigned char byte) { length += detail::kUrlForms.of[byte] == 0 ? 3 : 1; });
      return detail::CheckedCast<DWORD>(length);
    });
  }
  static void UrlEncodeA(char* buffer, const WChar* text, bool useUtf8, UINT codePage) {
    Tool::RequirePointer(buffer, KTEXT("CHttpEncoderW::UrlEncodeA"), KTEXT("szBuff"));
    UrlEncode(buffer, text, useUtf8, codePage);
  }
  static void UrlEncodeW(WChar* buffer, const WChar* text, bool useUtf8, UINT codePage) {
    Tool::RequirePointer(buffer, KTEXT("CHttpEncoderW::UrlEncodeW"), KTEXT("szBuff"));
    UrlEncode(buffer, text, useUtf8, codePage);
  }

 private:
  static DWORD EncodeLen(const WChar* text, UINT codePage) {
    if (text == nullptr || *text == 0) return 0;
    const int bytes = WideCharToMultiByte(codePage, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (bytes == 0) Tool::RaiseError(HttpErrorId::kToMultiByte, GetLastError());
    return static_cast<DWORD>(bytes) - 1;
  }
  static void Encode(char* buffer, const WChar* text, UINT codePage) {
    *buffer = 0;
    const DWORD length = EncodeLen(text, codePage);
    if (length == 0) return;
    if (WideCharToMultiByte(codePage, 0, text, -1, buffer, static_cast<int>(length + 1), nullptr,
                            nullptr) == 0) {
      Tool::RaiseError(HttpErrorId::kToMultiByte, GetLastError());
    }
  }

  template <class Put>
  static void ForEachByte(const WChar* text, bool useUtf8, UINT codePage, Put put) {
    Tool::RequirePointer(text, KTEXT("_UrlEncodeLen"), KTEXT("szStr"));
    if (useUtf8) codePage = CP_UTF8;
    for (; *text != 0; ++text) {
      // ASCII is the same in UTF-8; most text is.
      if (codePage == CP_UTF8 && *text < 0x80) {
        put(static_cast<unsigned char>(*text));
        continue;
      }
      const WChar units[] = {*text, 0};
      char bytes[7];
      const int count = WideCharToMultiByte(codePage, 0, units, 2, bytes, 7, nullptr, nullptr);
      if (count == 0) Tool::RaiseError(HttpErrorId::kToMultiByte, GetLastError());
      for (int i = 0; i + 1 < count; ++i) put(static_cast<unsigned char>(bytes[i]));
    }
  }
  template <class C>
  static void UrlEncode(C* target, const WChar* text, bool useUtf8, UINT codePage) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    ForEachByte(text, useUtf8, codePage, [&target](unsigned char byte) {
      const char form = detail::kUrlForms.of[byte];
      if (form != 0) {
        *target++ = static_cast<C>(form);
        return;
      }
      *target++ = '%';
      *target++ = static_cast<C>(kDigits[byte >> 4]);
      *target++ = static_cast<C>(kDigits[byte & 0xF]);
    });
    *target = 0;
  }
};

}  // namespace Dovek
