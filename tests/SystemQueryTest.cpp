#include "kelp0lang/SystemQuery.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <vector>

namespace {

TEST(SystemQuery, TheVersionIsTheSystems) {
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof info;
  ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
  unsigned long major = 99, minor = 99, servicePack = 99, again = 0;
  bool isServer = true;
  EXPECT_TRUE(GetOSVersion(major, minor, servicePack, isServer));
  EXPECT_TRUE(GetOSVersion(again));
  EXPECT_GE(major, 6u);
  EXPECT_EQ(major, info.dwMajorVersion);
  EXPECT_EQ(minor, info.dwMinorVersion);
  EXPECT_EQ(servicePack, info.wServicePackMajor);
  EXPECT_EQ(isServer, info.wProductType != VER_NT_WORKSTATION);
  EXPECT_EQ(again, major);
  EXPECT_TRUE(kelp::Is64bitOS());
  EXPECT_FALSE(kelp::Is32on64bitOS());
}

TEST(SystemQuery, ThisProgramIsNoneOfTheFamily) {
  std::vector<int> ids = {-7};
  GetRunningInstances(ids, false, false);
  EXPECT_EQ(ids, std::vector<int>{-7});
  GetRunningInstances(ids, true, true);
  EXPECT_EQ(ids.front(), -7);
  for (const int id : ids) EXPECT_NE(id, static_cast<int>(GetCurrentProcessId()));
}

}  // namespace
