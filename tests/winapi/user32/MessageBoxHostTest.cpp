// Who answers a message box.
#include <gtest/gtest.h>
#include <winapi_host.h>
#include <windows.h>

#include <string>

#include "tests/winapi/ErrorOf.h"

namespace {

std::u16string shown;

TEST(MessageBoxHost, TheHostAnswersOrTheTextGoesToStandardError) {
  WinapiSetMessageBox([](HWND, LPCWSTR text, LPCWSTR caption, UINT type) {
    shown = std::u16string(caption) + u"|" + text;
    return static_cast<int>(type);
  });
  EXPECT_EQ(MessageBoxW(nullptr, u"text", u"caption", 5), 5);
  EXPECT_EQ(shown, u"caption|text");
  WinapiSetMessageBox(nullptr);
  testing::internal::CaptureStderr();
  EXPECT_EQ(MessageBoxW(GetForegroundWindow(), u"\u00E8 text", nullptr, MB_ICONEXCLAMATION), IDOK);
  EXPECT_EQ(ErrorOf(MessageBoxW(nullptr, u"what now?", u"", 4)), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), ": \u00E8 text\n");
}

}  // namespace
