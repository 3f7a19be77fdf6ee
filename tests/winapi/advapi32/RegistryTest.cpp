// The registry.
#include <gtest/gtest.h>
#include <windows.h>
#include <winreg.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/winapi/WideText.h"

namespace {

std::vector<BYTE> Bytes(const Wide& text) {
  std::vector<BYTE> bytes(text.size() * sizeof(WCHAR));
  std::memcpy(bytes.data(), text.data(), bytes.size());
  return bytes;
}

// A key of its own below HKEY_CURRENT_USER\Software, gone with the keys that the test lists.
class Registry : public testing::Test {
 protected:
  Registry() : m_path(WTEXT("Software\\kelp0lang-test-")) {
    std::random_device random;
    for (int i = 0; i < 12; ++i) m_path += static_cast<WCHAR>('a' + random() % 26);
    const LSTATUS status = RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0,
                                           KEY_ALL_ACCESS, nullptr, &m_key, nullptr);
    EXPECT_EQ(status, ERROR_SUCCESS);
  }
  ~Registry() override {
    for (const WCHAR* below : {WTEXT("\\A\\B"), WTEXT("\\A"), WTEXT("")}) {
      RegDeleteKeyW(HKEY_CURRENT_USER, (m_path + below).c_str());
    }
    RegDeleteKeyW(HKEY_CURRENT_USER, WTEXT("Software"));  // only where it is empty
    RegCloseKey(m_key);
  }

  LSTATUS Open(const WCHAR* name, REGSAM access, HKEY* key) {
    return RegOpenKeyExW(m_key, name, 0, access, key);
  }
  LSTATUS Create(const WCHAR* name, REGSAM access, HKEY* key, DWORD* disposition) {
    return RegCreateKeyExW(m_key, name, 0, nullptr, 0, access, nullptr, key, disposition);
  }
  static LSTATUS Look(HKEY key, const WCHAR* name) {
    return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr);
  }
  LSTATUS Set(const WCHAR* name, DWORD type, const std::vector<BYTE>& data) {
    return RegSetValueExW(m_key, name, 0, type, data.data(), static_cast<DWORD>(data.size()));
  }
  std::vector<BYTE> Get(const WCHAR* name, DWORD* type = nullptr) {
    std::vector<BYTE> data(100000);
    DWORD size = static_cast<DWORD>(data.size());
    EXPECT_EQ(RegQueryValueExW(m_key, name, nullptr, type, data.data(), &size), ERROR_SUCCESS);
    data.resize(size);
    return data;
  }

  Wide m_path;
  HKEY m_key = nullptr;
};

TEST_F(Registry, GivesValuesBackByteForByte) {
  const Wide text = WTEXT("C:\\Program Data \u20AC\n\"x\"");
  const struct {
    const WCHAR* name;
    DWORD type;
    std::vector<BYTE> data;
  } values[] = {
      {WTEXT("Common AppData"), REG_SZ, Bytes(text + WCHAR{0})},
      {WTEXT("b\\\"\n\r\u00E9"), REG_BINARY, {0, 255, 10, 13, 34, 92}},
      {WTEXT("none"), REG_NONE, {}},
      {WTEXT("number"), REG_DWORD, {1, 2, 3, 4}},
      {nullptr, REG_EXPAND_SZ, Bytes(Wide(WTEXT("unnamed")) + WCHAR{0})},
      {WTEXT("large"), REG_BINARY, std::vector<BYTE>(50000, 0x5A)},
  };
  for (const auto& v : values) ASSERT_EQ(Set(v.name, v.type, v.data), ERROR_SUCCESS);
  for (const auto& value : values) {
    DWORD type = 99;
    EXPECT_EQ(Get(value.name, &type), value.data);
    EXPECT_EQ(type, value.type);
  }
  EXPECT_EQ(Get(WTEXT("")), values[4].data) << "the empty name is the unnamed value";
  Set(WTEXT("NUMBER"), REG_DWORD, {9, 9, 9, 9});
  EXPECT_EQ(Get(WTEXT("number")), (std::vector<BYTE>{9, 9, 9, 9}));
  EXPECT_EQ(RegDeleteValueW(m_key, WTEXT("Number")), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteValueW(m_key, WTEXT("number")), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, TellsTheSizeThatAValueNeeds) {
  Set(WTEXT("v"), REG_BINARY, {1, 2, 3});
  DWORD size = 77, type = 99;
  BYTE data[3] = {7, 7, 7};
  const auto query = [&](const WCHAR* name, BYTE* buffer, DWORD* room) {
    return RegQueryValueExW(m_key, name, nullptr, &type, buffer, room);
  };
  EXPECT_EQ(query(WTEXT("v"), nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(size, 3u);
  size = 2;
  EXPECT_EQ(query(WTEXT("v"), data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(type, DWORD{REG_BINARY});
  EXPECT_EQ(data[0], 7);
  EXPECT_EQ(query(WTEXT("v"), data, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(query(WTEXT("w"), nullptr, &size), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, KeysAreMadeOpenedAndDeleted) {
  HKEY key = nullptr;
  DWORD disposition = 0;
  ASSERT_EQ(Create(WTEXT("A\\B"), KEY_WRITE, &key, &disposition), ERROR_SUCCESS);
  EXPECT_EQ(disposition, DWORD{REG_CREATED_NEW_KEY});
  EXPECT_EQ(RegSetValueExW(key, WTEXT("v"), 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
  EXPECT_EQ(Look(key, WTEXT("v")), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);

  ASSERT_EQ(Open(WTEXT("a\\b"), KEY_READ, &key), ERROR_SUCCESS);
  EXPECT_EQ(Look(key, WTEXT("v")), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExW(key, WTEXT("v"), 0, REG_BINARY, nullptr, 0), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteValueW(key, WTEXT("v")), ERROR_ACCESS_DENIED);

  EXPECT_EQ(RegDeleteKeyW(m_key, WTEXT("A")), ERROR_ACCESS_DENIED) << "it has a subkey";
  EXPECT_EQ(RegDeleteKeyW(m_key, WTEXT("A\\B")), ERROR_SUCCESS);
  EXPECT_EQ(Look(key, WTEXT("v")), ERROR_KEY_DELETED);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  EXPECT_EQ(Open(WTEXT("A\\B"), KEY_READ, &key), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteKeyW(m_key, WTEXT("A\\B")), ERROR_FILE_NOT_FOUND);

  ASSERT_EQ(Create(WTEXT("A"), KEY_READ, &key, &disposition), ERROR_SUCCESS);
  EXPECT_EQ(disposition, DWORD{REG_OPENED_EXISTING_KEY});
  RegCloseKey(key);

  ASSERT_EQ(Open(nullptr, KEY_READ, &key), ERROR_SUCCESS) << "the same key again";
  Set(WTEXT("v"), REG_DWORD, {1, 2, 3, 4});
  EXPECT_EQ(Look(key, WTEXT("v")), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST_F(Registry, GenericRightsAreThoseOfKeys) {
  Set(WTEXT("v"), REG_DWORD, {1, 2, 3, 4});
  const struct {
    DWORD access;
    bool reads, writes;
  } cases[] = {{static_cast<DWORD>(GENERIC_READ), true, false},
               {GENERIC_WRITE, false, true},
               {static_cast<DWORD>(GENERIC_READ | GENERIC_WRITE), true, true},
               {GENERIC_ALL, true, true},
               {MAXIMUM_ALLOWED, true, true}};
  for (const auto& c : cases) {
    HKEY key = nullptr;
    ASSERT_EQ(Open(nullptr, c.access, &key), ERROR_SUCCESS) << c.access;
    EXPECT_EQ(Look(key, WTEXT("v")) == ERROR_SUCCESS, c.reads) << c.access;
    EXPECT_EQ(RegSetValueExW(key, WTEXT("w"), 0, REG_BINARY, nullptr, 0) == ERROR_SUCCESS, c.writes)
        << c.access;
    RegCloseKey(key);
  }
}

TEST_F(Registry, CallsLeaveTheLastErrorAlone) {
  HKEY key = nullptr;
  SetLastError(77);
  Set(nullptr, REG_BINARY, {1});
  Set(WTEXT(""), REG_BINARY, {});
  EXPECT_EQ(Look(m_key, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(Look(m_key, WTEXT("none")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Open(WTEXT(""), KEY_READ, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteValueW(key, nullptr), ERROR_ACCESS_DENIED);
  RegCloseKey(key);
  EXPECT_EQ(RegDeleteValueW(m_key, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(Open(WTEXT("none"), KEY_READ, &key), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegCloseKey(nullptr), ERROR_INVALID_HANDLE);
  EXPECT_EQ(GetLastError(), 77u);
}

TEST(RegistryHandle, WhatIsNotAKey) {
  HKEY key = reinterpret_cast<HKEY>(0x123456);
  EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, WTEXT("SOFTWARE\\kelp0lang-no"), 0, KEY_READ, &key),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(key, nullptr);
  EXPECT_EQ(RegCloseKey(nullptr), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegQueryValueExW(nullptr, WTEXT("v"), nullptr, nullptr, nullptr, nullptr),
            ERROR_INVALID_HANDLE);
}

}  // namespace
