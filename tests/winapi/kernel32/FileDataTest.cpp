// What is read from and written to open files, their places, sizes, times and attributes.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

namespace {

constexpr DWORD kRead = static_cast<DWORD>(GENERIC_READ);
constexpr DWORD kWrite = static_cast<DWORD>(GENERIC_WRITE);
constexpr long long kBig = 0x1'0000'0003;

unsigned long long Ticks(const FILETIME& time) {
  return static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

class FileData : public testing::Test {
 protected:
  FileData() : file(Open(kRead | kWrite)) {}
  ~FileData() override { CloseHandle(file); }
  HANDLE Open(DWORD access) const {
    return CreateFileW(folder.Wide(WTEXT("file")).c_str(), access,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr);
  }
  long MoveTo(long long place, DWORD from = FILE_BEGIN) const {
    LARGE_INTEGER distance;
    distance.QuadPart = place;
    return ErrorOf(SetFilePointerEx(file, distance, nullptr, from));
  }
  std::string Read(DWORD size) const {
    std::string bytes(size, '?');
    DWORD count = 99;
    EXPECT_TRUE(ReadFile(file, bytes.data(), size, &count, nullptr));
    return bytes.substr(0, count);
  }

  const TempFolder folder;
  const HANDLE file;
};

TEST_F(FileData, IsReadWhereItWasWritten) {
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(Read(4), "") << "at the end";
  EXPECT_EQ(MoveTo(-3, FILE_END), ERROR_SUCCESS);
  EXPECT_EQ(Read(2), "78");
  EXPECT_EQ(Read(9), "9") << "as far as the file goes";
  EXPECT_EQ(MoveTo(-99, FILE_CURRENT), ERROR_NEGATIVE_SEEK);
  EXPECT_EQ(MoveTo(4), ERROR_SUCCESS);
  EXPECT_EQ(MoveTo(1, 7), ERROR_INVALID_PARAMETER);
  EXPECT_TRUE(SetEndOfFile(file));
  EXPECT_EQ(folder.Read("file"), "0123");
}

TEST_F(FileData, PlacesAndSizesGoBeyond32Bits) {
  EXPECT_EQ(MoveTo(kBig), ERROR_SUCCESS);
  ASSERT_TRUE(SetEndOfFile(file));
  DWORD high = 0;
  EXPECT_EQ(GetFileSize(file, &high), DWORD{3});
  EXPECT_EQ(high, 1u);
  LONG half = 0;
  EXPECT_EQ(ErrorOf(SetFilePointer(file, 0, nullptr, FILE_END), INVALID_SET_FILE_POINTER),
            UnderWine() ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER)
      << "a place that the result can't tell";
  EXPECT_EQ(SetFilePointer(file, 0, &half, FILE_END), DWORD{3});
  EXPECT_EQ(half, 1);
  half = -1;
  EXPECT_EQ(SetFilePointer(file, -4, &half, FILE_CURRENT), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), DWORD{NO_ERROR}) << "a place as good as any";
  EXPECT_EQ(half, 0);
}

TEST_F(FileData, AHandleDoesWhatItWasOpenedFor) {
  const HANDLE reader = Open(kRead);
  const HANDLE writer = Open(kWrite);
  DWORD count = 7;
  char byte = 0;
  EXPECT_EQ(ErrorOf(WriteFile(reader, "x", 1, &count, nullptr)), ERROR_ACCESS_DENIED);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(ErrorOf(ReadFile(writer, &byte, 1, &count, nullptr)), ERROR_ACCESS_DENIED);
  if (!UnderWine()) {
    EXPECT_EQ(ErrorOf(SetEndOfFile(reader)), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ErrorOf(SetFileTime(reader, nullptr, nullptr, nullptr)), ERROR_ACCESS_DENIED);
  }
  CloseHandle(reader);
  CloseHandle(writer);
  EXPECT_EQ(ErrorOf(ReadFile(reader, &byte, 1, &count, nullptr)), ERROR_INVALID_HANDLE);
  EXPECT_EQ(ErrorOf(GetFileSize(writer, nullptr), INVALID_FILE_SIZE), ERROR_INVALID_HANDLE);
}

TEST_F(FileData, KeepsTimesAndAttributes) {
  const FILETIME written = {0x9ABCDE80, 0x01C12345};
  const FILETIME none = {0, 0};
  FILETIME before, accessed;
  DWORD count = 0;
  const Wide path = folder.Wide(WTEXT("FILE"));
  EXPECT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_TRUE(WriteFile(file, "12345", 5, &count, nullptr)) << "the handle was there before";
  ASSERT_TRUE(GetFileTime(file, nullptr, &before, nullptr));
  ASSERT_TRUE(SetFileTime(file, nullptr, &none, &written));
  ASSERT_TRUE(GetFileTime(file, nullptr, &accessed, nullptr));
  EXPECT_EQ(Ticks(accessed), Ticks(before));
  WIN32_FILE_ATTRIBUTE_DATA data;
  ASSERT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(Ticks(data.ftLastWriteTime), Ticks(written));
  EXPECT_NE(data.dwFileAttributes & FILE_ATTRIBUTE_READONLY, 0u);
  EXPECT_EQ(data.nFileSizeLow, 5u);
  EXPECT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL));
  const HANDLE writer = Open(kWrite);
  EXPECT_NE(writer, INVALID_HANDLE_VALUE);
  CloseHandle(writer);
}

}  // namespace
