// New identifiers.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h comes before those that need it.
#include <objbase.h>

#include <cstring>
#include <set>
#include <string>

namespace {

TEST(Guid, EachIsAnotherOfRandomBits) {
  std::set<std::string> ids;
  for (int i = 0; i < 1000; ++i) {
    GUID id{};
    ASSERT_EQ(CoCreateGuid(&id), S_OK);
    EXPECT_EQ(id.Data3 >> 12, 4);
    EXPECT_EQ(id.Data4[0] >> 6, 2);
    ids.insert(std::string(reinterpret_cast<const char*>(&id), sizeof id));
  }
  EXPECT_EQ(ids.size(), 1000u);
}

}  // namespace
