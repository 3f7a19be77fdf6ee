// A disk that fails when it is to keep what was written. What couldn't be flushed isn't in place of
// what was there before.
#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "kelp0lang/IniFile.h"
#include "kelp0lang/MeasUnitSystem.h"
#include "kelptext/Compiler.h"
#include "tests/MeasureTestFolders.h"
#include "tests/TestText.h"

namespace {

namespace fs = std::filesystem;

bool s_flushesFail = false;

class FailingFlushes {
 public:
  FailingFlushes() { s_flushesFail = true; }
  ~FailingFlushes() { s_flushesFail = false; }
  FailingFlushes(const FailingFlushes&) = delete;
  FailingFlushes& operator=(const FailingFlushes&) = delete;
};

}  // namespace

// A symbol of the program goes before that of the C library, in the libraries too.
extern "C" KELP_VISIBLE int fsync(int file) {
  if (!s_flushesFail) return static_cast<int>(syscall(SYS_fsync, file));
  errno = EIO;
  return -1;
}

namespace {

class Flush : public testing::Test {
 protected:
  // The content of every file of the folder.
  std::string Files(const fs::path& folder) const {
    std::string content;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
      if (entry.is_regular_file()) content += Folders().Read(entry.path()) + '|';
    }
    return content;
  }

  const TempFolder m_folder;
};

TEST_F(Flush, UnitSettingsStayAsTheyWere) {
  Folders().Write(DataSupportFolder() / "flush.dat", "old");
  const std::string before = Files(DataSupportFolder());
  CMeasUnitSystem system(kelp::WString(), KTEXT("flush.dat"));
  {
    const FailingFlushes failing;
    EXPECT_FALSE(system.SaveConfig());
    EXPECT_EQ(GetLastError(), DWORD{ERROR_WRITE_FAULT});
  }
  EXPECT_EQ(Files(DataSupportFolder()), before);
  EXPECT_TRUE(system.SaveConfig());
  EXPECT_NE(Files(DataSupportFolder()), before);
  fs::remove(DataSupportFolder() / "flush.dat");
}

TEST_F(Flush, SettingsStayAsTheyWere) {
  const std::string old = "[S]\r\na=1\r\n";
  m_folder.Write("old.ket", old);
  const kelp::WString path = m_folder.Wide(KTEXT("old.ket")).c_str();
  const FailingFlushes failing;
  EXPECT_FALSE(WritePrivateProfileStringW(KTEXT("S"), KTEXT("a"), KTEXT("2"), path.c_str()));
  EXPECT_EQ(Files(m_folder.Path()), old + '|');

  // Nor are they converted; what they say is read all the same.
  const CIniFile settings(m_folder.Wide(KTEXT("old")).c_str());
  EXPECT_EQ(Files(m_folder.Path()), old + '|');
  EXPECT_EQ(settings.GetLong(KTEXT("S"), KTEXT("a"), 0), 1);
  EXPECT_FALSE(settings.WriteLong(KTEXT("S"), KTEXT("a"), 2));
  EXPECT_EQ(Files(m_folder.Path()), old + '|');
}

}  // namespace
