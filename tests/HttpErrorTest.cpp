// Exceptions, the table of errors, and how the tool raises them.
#include "kelp0lang/HttpTool.h"
#include "tests/HttpTest.h"

namespace {

using namespace Dovek;
using Tool = CHttpToolW;

TEST(HttpError, IdsHaveTheirTexts) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0, "Not specified"},
      {1, "Not specified"},
      {100, "Unexpected error occurred."},
      {113, "An interger divide by zero exception has been occurred."},
      {115, "Not specified"},
      {200, ""},
      {300, "Not specified"},
      {410, "::InternetSetOption failed."},
      {603, "OpenFile (::CreateFile) failed (\"%ls\")."},
      {700, "Not specified"},
      {1000, "user-defined error message"},
      {1500, "user-defined error message"},
      {0xFFFFFFFF, "user-defined error message"},
  };
  for (const auto& [id, text] : cases) {
    EXPECT_EQ(FailureOf([id = id] { Tool::RaiseError(id, 5); }),
              std::to_string(id) + " 5: " + text);
    try {
      CHttpToolA::RaiseError(id);
    } catch (const httpclientexceptionA& error) {
      EXPECT_STREQ(error.what(), text);
      EXPECT_EQ(error.ErrorId(), id);
    }
  }
}

TEST(HttpError, APathGoesIntoItsTextAsFarAsThereIsRoom) {
  EXPECT_EQ(FailureOf([] { Tool::RaiseError(605, 2, KTEXT("C:\\%ls")); }),
            "605 2: ::GetFileSize failed (\"C:\\%ls\").");
  const WideText path(1000, 'p');
  const std::string message = FailureOf([&] { Tool::RaiseError(114, 80, path.c_str()); });
  EXPECT_EQ(message, "114 80: The file (" + std::string(511 - 10, 'p'));
}

TEST(HttpError, MessagesAreCopiedAndReplaced) {
  errmsg_exceptionW none;
  EXPECT_EQ(Narrow(none.GetMessage()), "NULL");
  EXPECT_STREQ(none.what(), "errmsg_exceptionW");
  httpclientexceptionW error(KTEXT("first"), 7, 8);
  const httpclientexceptionW copy = error;
  error.SetMessage(error.GetMessage() + 2);
  EXPECT_EQ(Narrow(error.GetMessage()), "rst");
  EXPECT_EQ(Narrow(copy.GetMessage()), "first");
  EXPECT_EQ(copy.Win32Error(), 8u);
  error = copy;
  error = *&error;
  EXPECT_EQ(Narrow(error.GetMessage()), "first");
  error.SetMessage(nullptr);
  EXPECT_EQ(Narrow(error.GetMessage()), "NULL");
  const std::exception& base = error;
  EXPECT_STREQ(base.what(), "httpclientexceptionW");
}

TEST(HttpError, ArithmeticWithoutResultIsOfTheFamily) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0xC0000094, "113 0: An interger divide by zero exception has been occurred."},
      {534, "112 0: An arithmetic overflow error has been occurred."},
      {1, "111 0: An unexpected arithmetic error has been occurred."}};
  for (const auto& [code, text] : cases) {
    const auto raise = [code = code]() -> int { throw SafeIntException(code); };
    EXPECT_EQ(FailureOf([&] { Tool::Guard(raise); }), text);
  }
  EXPECT_EQ(FailureOf([] { Tool::Guard([]() -> int { throw std::bad_alloc(); }); }),
            "102 0: Out of memory.");
  EXPECT_EQ(detail::CheckedAdd(0xFFFFFFFEu, 1), 0xFFFFFFFF);
  EXPECT_THROW(detail::CheckedAdd(0xFFFFFFFFu, 1), SafeIntException);
  EXPECT_THROW(detail::CheckedMultiply(std::uint64_t{1} << 63, 2), SafeIntException);
  EXPECT_THROW(detail::CheckedDecrement(0u), SafeIntException);
  EXPECT_EQ(detail::CheckedCast<std::uint32_t>(0xFFFFFFFF), 0xFFFFFFFF);
  EXPECT_THROW(detail::CheckedCast<std::uint32_t>(0x100000000), SafeIntException);
}

TEST(HttpTool, ConvertsTextOfCodePages) {
  const detail::MallocText<WChar> wide(Tool::Ansi2Unicode("\xE0\x80", 1252));
  EXPECT_EQ(WideText(wide.get()), KTEXT("\xE0\x20AC"));
  const detail::MallocText<char> narrow(Tool::Unicode2Ansi(KTEXT("\xE0\x20AC"), 1252));
  EXPECT_STREQ(narrow.get(), "\xE0\x80");
  EXPECT_EQ(Tool::Ansi2Unicode(nullptr, 1252), nullptr);
  EXPECT_EQ(Tool::Unicode2Ansi(nullptr, 1252), nullptr);

  const std::string refusal = ": CP_UTF8 and CP_UTF7 can not be used for the CodePage parameter.";
  for (const UINT codePage : {65000u, 65001u}) {
    EXPECT_EQ(FailureOf([&] { Tool::Ansi2Unicode(nullptr, codePage); }),
              "0 0: CHttpToolW::Ansi2Unicode" + refusal);
    EXPECT_EQ(FailureOf([&] { Tool::Unicode2Ansi(nullptr, codePage); }),
              "0 0: CHttpToolW::Unicode2Ansi" + refusal);
  }
  EXPECT_EQ(FailureOf([] { Tool::Ansi2Unicode("a", 12345); }),
            "601 87: ::MultiByteToWideChar failed.");
  EXPECT_EQ(FailureOf([] { Tool::Unicode2Ansi(KTEXT("a"), 12345); }),
            "600 87: ::WideCharToMultiByte failed.");
  EXPECT_EQ(FailureOf([] { Tool::RaiseError("narrow", 108); }), "108 0: narrow");
}

}  // namespace
