// Files in memory.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr DWORD kRead = static_cast<DWORD>(GENERIC_READ);
constexpr DWORD kReadWrite = static_cast<DWORD>(GENERIC_READ | GENERIC_WRITE);

class Mapping : public testing::Test {
 protected:
  HANDLE Open(DWORD access) const {
    return CreateFileW(folder.Wide(WTEXT("file")).c_str(), access,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr);
  }
  // The file is open no more when it is mapped.
  HANDLE Map(DWORD access, DWORD protection, unsigned long long size = 0) const {
    const HANDLE file = Open(access);
    const HANDLE mapping =
        CreateFileMappingW(file, nullptr, protection, static_cast<DWORD>(size >> 32),
                           static_cast<DWORD>(size), nullptr);
    const DWORD error = GetLastError();
    CloseHandle(file);
    SetLastError(error);
    return mapping;
  }
  const TempFolder folder;
};

TEST_F(Mapping, AsksForWhatTheFileCanGive) {
  struct Case {
    DWORD access, protection;
    unsigned long long size;
    long error;
  };
  const Case cases[] = {
      {kRead, PAGE_READONLY, 3, ERROR_SUCCESS},
      {kRead, PAGE_READONLY, 6, ERROR_NOT_ENOUGH_MEMORY},
      {kRead, PAGE_READWRITE, 0, ERROR_ACCESS_DENIED},
      {kRead, 0x55, 0, ERROR_INVALID_PARAMETER},
      {static_cast<DWORD>(GENERIC_WRITE), PAGE_READWRITE, 0, ERROR_ACCESS_DENIED},
      {kReadWrite, PAGE_READWRITE, 3, ERROR_SUCCESS},
      {kReadWrite, PAGE_READWRITE, 1ull << 60, ERROR_DISK_FULL},
  };
  folder.Write("file", "12345");
  for (const Case& each : cases) {
    if (UnderWine() && each.error == ERROR_DISK_FULL) continue;  // it tells the disk's own reason
    const HANDLE mapping = Map(each.access, each.protection, each.size);
    EXPECT_EQ(ErrorOf(mapping), each.error) << &each - cases;
    if (mapping != nullptr) CloseHandle(mapping);
    EXPECT_EQ(folder.Read("file"), "12345");
  }
  folder.Write("file", "");
  EXPECT_EQ(ErrorOf(Map(kRead, PAGE_READONLY)), ERROR_FILE_INVALID);
}

TEST_F(Mapping, GrowsTheFileAndOutlivesItsHandles) {
  folder.Write("file", "12345");
  const HANDLE mapping = Map(kReadWrite, PAGE_READWRITE, 100'000);
  auto* const view = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
  ASSERT_NE(view, nullptr);
  CloseHandle(mapping);
  EXPECT_EQ(std::string(view, 6), std::string("12345\0", 6));
  std::memcpy(view + 99'997, "end", 3);

  const HANDLE file = Open(kReadWrite);
  SetFilePointer(file, 10, nullptr, FILE_BEGIN);
  EXPECT_EQ(ErrorOf(SetEndOfFile(file)), ERROR_USER_MAPPED_FILE);
  EXPECT_EQ(ErrorOf(UnmapViewOfFile(view + 1)),
            UnderWine() ? ERROR_SUCCESS : ERROR_INVALID_ADDRESS);
  if (!UnderWine()) {
    EXPECT_TRUE(UnmapViewOfFile(view));
  }
  EXPECT_EQ(folder.Read("file").substr(99'997), "end");
  EXPECT_TRUE(SetEndOfFile(file));
  EXPECT_EQ(std::filesystem::file_size(folder.Path() / "file"), 10u);
  CloseHandle(file);
}

TEST_F(Mapping, ViewsReachNoFurtherThanTheMapping) {
  folder.Write("file", std::string(0x10000, 'a') + "b");
  const HANDLE mapping = Map(kRead, PAGE_WRITECOPY);
  struct Case {
    DWORD access, offset;
    SIZE_T size;
    long error;
  };
  const Case cases[] = {
      {FILE_MAP_READ, 0x10000, 0, ERROR_SUCCESS},
      {FILE_MAP_READ, 0x10000, 0x1001, ERROR_ACCESS_DENIED},
      {FILE_MAP_READ, 0x20000, 0, UnderWine() ? ERROR_INVALID_PARAMETER : ERROR_ACCESS_DENIED},
      {FILE_MAP_READ, 0x1000, 0, ERROR_MAPPED_ALIGNMENT},
      {FILE_MAP_WRITE, 0, 0, ERROR_ACCESS_DENIED},
      {FILE_MAP_COPY, 0x10000, 1, ERROR_SUCCESS},
  };
  for (const Case& each : cases) {
    auto* const view =
        static_cast<char*>(MapViewOfFile(mapping, each.access, 0, each.offset, each.size));
    EXPECT_EQ(ErrorOf(view), each.error) << &each - cases;
    if (view == nullptr) continue;
    EXPECT_EQ(*view, 'b');
    if (each.access == FILE_MAP_COPY) *view = 'c';
    EXPECT_TRUE(UnmapViewOfFile(view));
  }
  CloseHandle(mapping);
  EXPECT_EQ(folder.Read("file").back(), 'b') << "a copy is changed for oneself";
  EXPECT_EQ(ErrorOf(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0)), ERROR_INVALID_HANDLE);
}

TEST_F(Mapping, PagesComeBackAndAreCopiedAsFarAsTheFileGoes) {
  folder.Write("file", std::string(0x3000, 'a'));
  const HANDLE mapping = Map(kReadWrite, PAGE_READWRITE);
  auto* const view = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
  auto* const own = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_COPY, 0, 0, 0));
  CloseHandle(mapping);
  view[0x2000] = 'b';
  own[0x1000] = 'c';
  for (char* const each : {view, own}) {
    EXPECT_EQ(ErrorOf(VirtualUnlock(each + 1, 0x5000)),
              UnderWine() ? ERROR_SUCCESS : ERROR_NOT_LOCKED);
  }
  EXPECT_EQ(own[0x1000], 'c');

  const HANDLE process = OpenProcess(PROCESS_VM_READ, FALSE, GetCurrentProcessId());
  std::string copy(0x3000, 0);
  SIZE_T read = 0;
  EXPECT_TRUE(ReadProcessMemory(process, view, copy.data(), copy.size(), &read));
  EXPECT_EQ(read, copy.size());
  EXPECT_EQ(copy, std::string(0x2000, 'a') + 'b' + std::string(0xFFF, 'a'));
  std::error_code refused;  // as Windows does
  std::filesystem::resize_file(folder.Path() / "file", 0x1000, refused);
  if (!refused) {
    EXPECT_EQ(ErrorOf(ReadProcessMemory(process, view, copy.data(), copy.size(), &read)),
              ERROR_PARTIAL_COPY);
    EXPECT_EQ(read, 0x1000u);
  }
  EXPECT_EQ(ErrorOf(ReadProcessMemory(mapping, view, copy.data(), 1, nullptr)),
            ERROR_INVALID_HANDLE);
  CloseHandle(process);
  UnmapViewOfFile(own);
  UnmapViewOfFile(view);
}

}  // namespace
