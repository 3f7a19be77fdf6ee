// The unit settings in force are read from the run's own folders at first use.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/SpecialFolder.h"
#include "tests/MeasureTestFolders.h"

namespace {

class FolderEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    m_folders = std::make_unique<TempFolder>();
    std::filesystem::create_directories(DataSupportFolder());
    kelp::FInitializeSpecialFolder(m_folders->Wide(KTEXT("program")).c_str(), -1,
                                   m_folders->Wide(KTEXT("data")).c_str(),
                                   m_folders->Wide().c_str());
  }
  void TearDown() override { m_folders.reset(); }

  const TempFolder& Folders() const { return *m_folders; }

 private:
  std::unique_ptr<TempFolder> m_folders;
};

// GoogleTest owns it.
auto* const environment = new FolderEnvironment;

}  // namespace

const TempFolder& Folders() {
  return environment->Folders();
}

std::filesystem::path DataSupportFolder() {
  return Folders().Path() / "data" / "Support";
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::AddGlobalTestEnvironment(environment);
  const int result = RUN_ALL_TESTS();
  // The instance goes well at exit, whatever a host has put in place of the settings in force.
  CMeasUnitSystem& current = *CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem();
  current = CMeasUnitSystem();
  current.SetContext(nullptr);
  return result;
}
