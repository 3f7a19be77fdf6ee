// Text in code pages, in UTF-8 and URL-encoded.
#include "kelp0lang/HttpEncoder.h"
#include "tests/HttpTest.h"

namespace {

using Encoder = Dovek::CHttpEncoderW;

// By both widths and the length, which agree.
std::string UrlEncoded(const WideText& text, bool useUtf8, UINT codePage) {
  const DWORD length = Encoder::UrlEncodeLen(text.c_str(), useUtf8, codePage);
  std::string narrow(length + 2, '#');
  WideText wide(length + 2, '#');
  Encoder::UrlEncodeA(narrow.data(), text.c_str(), useUtf8, codePage);
  Encoder::UrlEncodeW(wide.data(), text.c_str(), useUtf8, codePage);
  EXPECT_EQ(narrow, Narrow(wide.c_str()) + std::string("\0#", 2));
  EXPECT_EQ(wide[length], 0);
  EXPECT_EQ(wide[length + 1], '#');
  return narrow.c_str();
}

TEST(HttpEncoder, UrlEncodesByteByByte) {
  struct Case {
    WideText text;
    bool useUtf8;
    UINT codePage;
    const char* encoded;
  };
  const Case cases[] = {
      {KTEXT(""), true, 0, ""},
      {KTEXT("a b+c"), false, 1252, "a+b%2Bc"},
      {KTEXT("azAZ09@[`{/:-_.~*"), true, 0, "azAZ09%40%5B%60%7B%2F%3A%2D%5F%2E%7E%2A"},
      {KTEXT("\x7F\x80\x7FF\x800\xFFFD"), true, 1252, "%7F%C2%80%DF%BF%E0%A0%80%EF%BF%BD"},
      {KTEXT("\xE0\x20AC"), true, 1252, "%C3%A0%E2%82%AC"},
      {KTEXT("\xE0\x20AC"), false, 1252, "%E0%80"},
      {KTEXT("\x30BD"), false, 932, "%83%5C"},
      {KTEXT("a\x4E2Dz"), false, 1252, "a%3Fz"},
      // The two units of a pair are two characters.
      {KTEXT("\xD83D\xDE00"), true, 0, "%EF%BF%BD%EF%BF%BD"},
      {KTEXT("\xD83D\xDE00"), false, 1252, "%3F%3F"},
  };
  for (const auto& [text, useUtf8, codePage, encoded] : cases) {
    EXPECT_EQ(UrlEncoded(text, useUtf8, codePage), encoded);
  }
}

TEST(HttpEncoder, EncodesWholeText) {
  const WideText text = KTEXT("\xE0\xD83D\xDE00");
  ASSERT_EQ(Encoder::Utf8EncodeLen(text.c_str()), 6u);
  char buffer[8] = "#######";
  Encoder::Utf8Encode(buffer, text.c_str());
  EXPECT_EQ(std::string(buffer, 8), std::string("\xC3\xA0\xF0\x9F\x98\x80\0\0", 8));
  ASSERT_EQ(Encoder::AnsiEncodeLen(KTEXT("\xE0z"), 1252), 2u);
  Encoder::AnsiEncode(buffer, KTEXT("\xE0z"), 1252);
  EXPECT_STREQ(buffer, "\xE0z");
  for (const WChar* const none : {static_cast<const WChar*>(nullptr), KTEXT("")}) {
    EXPECT_EQ(Encoder::AnsiEncodeLen(none, 1252), 0u);
    Encoder::AnsiEncode(buffer, none, 1252);
    EXPECT_STREQ(buffer, "");
  }
}

TEST(HttpEncoder, RefusesWhatItCantDo) {
  const WChar* const text = KTEXT("a");
  char buffer[4];
  const auto refused = [](const char* what) { return std::string("0 0: ") + what; };
  EXPECT_EQ(FailureOf([&] { Encoder::AnsiEncode(nullptr, text, 1252); }),
            refused("CHttpEncoderW::AnsiEncode: szBuff can not be NULL."));
  EXPECT_EQ(FailureOf([&] { Encoder::Utf8Encode(nullptr, text); }),
            refused("CHttpEncoderW::Utf8Encode: szBuff can not be NULL."));
  EXPECT_EQ(FailureOf([&] { Encoder::UrlEncodeA(nullptr, text, true, 0); }),
            refused("CHttpEncoderW::UrlEncodeA: szBuff can not be NULL."));
  EXPECT_EQ(FailureOf([&] { Encoder::UrlEncodeW(nullptr, text, true, 0); }),
            refused("CHttpEncoderW::UrlEncodeW: szBuff can not be NULL."));
  EXPECT_EQ(FailureOf([&] { Encoder::UrlEncodeLen(nullptr, true, 0); }),
            refused("_UrlEncodeLen: szStr can not be NULL."));
  const std::string utf = ": CP_UTF8 and CP_UTF7 can not be used for the CodePage parameter.";
  EXPECT_EQ(FailureOf([&] { Encoder::AnsiEncode(buffer, text, 65001); }),
            refused("CHttpEncoderW::AnsiEncode") + utf);
  EXPECT_EQ(FailureOf([&] { Encoder::AnsiEncodeLen(text, 65000); }),
            refused("CHttpEncoderW::AnsiEncodeLen") + utf);
  EXPECT_EQ(FailureOf([&] { Encoder::UrlEncodeLen(text, false, 12345); }),
            "600 87: ::WideCharToMultiByte failed.");
}

}  // namespace
