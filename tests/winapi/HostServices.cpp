// Elsewhere than on Windows the services of tests are kept in a folder of their own, and the
// programs that a test starts find it too.
#include <stdlib.h>
#include <windows.h>

#include <optional>

#include "tests/TempFolder.h"
#include "winapi_host.h"

namespace {

constexpr const char* kVariable = "KELP_TEST_SERVICES";

struct HostServices {
  HostServices() {
    if (getenv(kVariable) == nullptr) {
      own.emplace();
      setenv(kVariable, own->Path().c_str(), 1);
    }
    const std::string folder = getenv(kVariable);
    WinapiSetServiceFolder(std::u16string(folder.begin(), folder.end()).c_str());
  }
  std::optional<TempFolder> own;
};

[[maybe_unused]] const HostServices services;

}  // namespace
