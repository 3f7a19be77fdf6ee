#include <gtest/gtest.h>
#include <windows.h>
// It needs the one before.
#include <shlwapi.h>

#include "tests/winapi/WideText.h"

namespace {

TEST(RegistryValue, IsReadThroughItsKey) {
  const Wide name = WTEXT("Software\\kelp_shlwapi_test");
  HKEY key;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, name.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                            &key, nullptr),
            ERROR_SUCCESS);
  const DWORD stored = 7;
  RegSetValueExW(key, WTEXT("number"), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&stored),
                 sizeof stored);
  DWORD type = 0, value = 0, size = sizeof value;
  EXPECT_EQ(SHGetValueW(HKEY_CURRENT_USER, name.c_str(), WTEXT("number"), &type, &value, &size),
            ERROR_SUCCESS);
  EXPECT_EQ(type, DWORD{REG_DWORD});
  EXPECT_EQ(value, 7u);
  EXPECT_EQ(SHGetValueW(HKEY_CURRENT_USER, name.c_str(), WTEXT("none"), nullptr, nullptr, nullptr),
            ERROR_FILE_NOT_FOUND);
  RegCloseKey(key);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, name.c_str()), ERROR_SUCCESS);
  EXPECT_EQ(SHGetValueW(HKEY_CURRENT_USER, name.c_str(), WTEXT("number"), &type, &value, &size),
            ERROR_FILE_NOT_FOUND);
}

}  // namespace
