#include "kelp0lang/MemoryMappedFile.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <utility>

#include "tests/TempFolder.h"

namespace {

TEST(MemoryMappedFile, MapsAllOfTheFileOrNothing) {
  constexpr const char* kNone = nullptr;
  struct Case {
    const char* before;
    bool create, write;
    std::int64_t size;
    unsigned long length;  // 0: not loaded
    bool fileBehind = true;
  };
  const Case cases[] = {{kNone, false, true, 100, 0, false}, {kNone, true, true, 100, 100},
                        {kNone, true, false, 0, 0},          {"12345", true, true, 0, 5},
                        {"12345", false, true, 9, 9},        {"12345", false, true, 3, 5},
                        {"12345", false, false, 3, 5},       {"12345", false, false, 6, 0},
                        {"12345", false, true, -1, 0},       {"", false, false, 0, 0}};
  for (const Case& each : cases) {
    const TempFolder folder;
    if (each.before != kNone) folder.Write("file", each.before);
    std::string expected = each.before == kNone ? "" : each.before;
    {
      const CMemoryMappedFile file(folder.Wide(KTEXT("file")).c_str(), each.create, each.write,
                                   each.size);
      ASSERT_EQ(file.isLoaded(), each.length > 0) << &each - cases;
      EXPECT_EQ(file.isCreated(), each.before == kNone && file.isLoaded());
      EXPECT_EQ(file.getLength(), each.length);
      EXPECT_EQ(file.getData() == nullptr, !file.isLoaded());
      if (file.isLoaded()) expected.resize(each.length);
      EXPECT_EQ(std::string(file.getData(), file.getData() + each.length),
                file.isLoaded() ? expected : "");
      if (file.isLoaded() && each.write) {
        const_cast<char*>(file.getData())[each.length - 1] = expected.back() = 'e';
      }
    }
    EXPECT_EQ(folder.Read("file"), expected) << &each - cases;
    EXPECT_EQ(std::filesystem::exists(folder.Path() / "file"), each.fileBehind);
  }
}

TEST(MemoryMappedFile, HoldsItsFileAndHandsItOn) {
  constexpr std::uintmax_t kSize = 0x1'0000'0005;
  const TempFolder folder;
  folder.Write("big", "begin");
  std::filesystem::resize_file(folder.Path() / "big", kSize);
  folder.Write("two", "22");
  const auto path = folder.Wide(KTEXT("big"));
  CMemoryMappedFile one(path.c_str(), false, false, 0);
  CMemoryMappedFile two(folder.Wide(KTEXT("two")).c_str(), false, true, 0);
  two = std::move(one);
  EXPECT_TRUE(DeleteFileW(folder.Wide(KTEXT("two")).c_str())) << "it was let go";
  EXPECT_FALSE(one.isLoaded());
  EXPECT_EQ(two.getLength(), 5u);
  EXPECT_EQ(two.getData()[0], 'b');
  EXPECT_EQ(two.getData()[kSize - 1], '\0');
  EXPECT_FALSE(DeleteFileW(path.c_str()));
  { const CMemoryMappedFile last = std::move(two); }
  EXPECT_TRUE(DeleteFileW(path.c_str()));
}

}  // namespace
