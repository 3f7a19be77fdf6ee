// The file behind the registry, which only the layer has.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>
#include <winreg.h>

#include <cerrno>
#include <filesystem>

#include <string>
#include <thread>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/Variable.h"

namespace {

// Reads that work, each of half of what was asked, before all fail; -1 for no fault.
int readsLeft = -1;

// The disk fails at a later read, for a scope.
class DiskFault {
 public:
  explicit DiskFault(int readsBefore) { readsLeft = readsBefore; }
  ~DiskFault() { readsLeft = -1; }
  DiskFault(const DiskFault&) = delete;
  DiskFault& operator=(const DiskFault&) = delete;
};

}  // namespace

// In place of the C library's, for the layer too.
extern "C" __attribute__((visibility("default"))) ssize_t read(int file, void* bytes,
                                                               std::size_t size) {
  if (readsLeft == 0) {
    errno = EIO;
    return -1;
  }
  if (readsLeft > 0) {
    --readsLeft;
    size = (size + 1) / 2;
  }
  return syscall(SYS_read, file, bytes, size);
}

namespace {

class RegistryHost : public testing::Test {
 protected:
  RegistryHost() : m_data("XDG_DATA_HOME", m_folder.Path().c_str()) {}

  bool HasFile() const {
    return std::filesystem::exists(m_folder.Path() / "winapi" / "registry.txt");
  }
  static HKEY Create(const WCHAR* path) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                              nullptr),
              ERROR_SUCCESS);
    return key;
  }

  TempFolder m_folder;
  Variable m_data;
};

TEST_F(RegistryHost, TheFileStandsAsLongAsThereAreKeys) {
  HKEY key = nullptr;
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"K", 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path())) << "reading makes nothing";
  RegCloseKey(Create(u"K\\L"));
  EXPECT_TRUE(HasFile());
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, u"K\\L"), ERROR_SUCCESS);
  EXPECT_TRUE(HasFile());
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, u"K"), ERROR_SUCCESS);
  EXPECT_FALSE(HasFile());
}

TEST_F(RegistryHost, ADamagedFileIsLeftAlone) {
  std::filesystem::create_directories(m_folder.Path() / "winapi");
  for (const char* text :
       {"[HKEY_CURRENT_USER\\\\K\n", "\"v\"=1:00\n", "[K]\n\"v\"=x:00\n", "[K]\n\"v\"=1:0\n",
        "[K]\n\"v\"=1:0g\n", "[K]\n\"v=1:00\n", "\n", "[K]\n\"v\"=1:00"}) {
    m_folder.Write("winapi/registry.txt", text);
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"K", 0, KEY_READ, &key), ERROR_BADDB) << text;
    EXPECT_EQ(
        RegCreateKeyExW(HKEY_CURRENT_USER, u"K", 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr),
        ERROR_BADDB);
    EXPECT_EQ(m_folder.Read("winapi/registry.txt"), text);
  }
}

TEST_F(RegistryHost, AFileThatCannotBeReadWholeIsLeftAlone) {
  HKEY key = Create(u"K");
  for (WCHAR name[] = u"a"; name[0] <= u'z'; ++name[0]) {
    EXPECT_EQ(RegSetValueExW(key, name, 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
  }
  const std::string whole = m_folder.Read("winapi/registry.txt");
  for (const int readsBeforeFault : {0, 1}) {
    const DiskFault fault(readsBeforeFault);
    EXPECT_EQ(RegSetValueExW(key, u"new", 0, REG_BINARY, nullptr, 0), ERROR_REGISTRY_IO_FAILED);
    EXPECT_EQ(RegQueryValueExW(key, u"z", nullptr, nullptr, nullptr, nullptr),
              ERROR_REGISTRY_IO_FAILED);
  }
  EXPECT_EQ(m_folder.Read("winapi/registry.txt"), whole);
  RegCloseKey(key);

  std::filesystem::remove(m_folder.Path() / "winapi/registry.txt");
  std::filesystem::create_directory(m_folder.Path() / "winapi/registry.txt");
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"K", 0, KEY_READ, &key), ERROR_ACCESS_DENIED);
  std::filesystem::remove(m_folder.Path() / "winapi/registry.txt");
  std::filesystem::create_symlink("registry.txt", m_folder.Path() / "winapi/registry.txt");
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"K", 0, KEY_READ, &key), ERROR_REGISTRY_IO_FAILED);
}

void SetMany(WCHAR head) {
  HKEY key = nullptr;
  RegOpenKeyExW(HKEY_CURRENT_USER, u"K", 0, KEY_WRITE, &key);
  for (WCHAR tail = 'a'; tail <= 't'; ++tail) {
    const WCHAR name[] = {head, tail, 0};
    RegSetValueExW(key, name, 0, REG_BINARY, nullptr, 0);
  }
  RegCloseKey(key);
}

TEST_F(RegistryHost, ThreadsAndProgramsLoseNoChange) {
  const HKEY key = Create(u"K");
  const pid_t child = fork();
  if (child == 0) {
    SetMany(u'1');
    _exit(0);
  }
  { const std::jthread second(SetMany, u'2'), third(SetMany, u'3'); }
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  for (const WCHAR head : {u'1', u'2', u'3'}) {
    for (WCHAR tail = 'a'; tail <= 't'; ++tail) {
      const WCHAR name[] = {head, tail, 0};
      EXPECT_EQ(RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    }
  }
  RegCloseKey(key);
}

}  // namespace
