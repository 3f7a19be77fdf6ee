// Unit settings to a file and back, beside the C library with as many bytes.
#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/BenchTable.h"
#include "kelp0lang/MeasUnitSystem.h"

namespace bench {
namespace {

using Bytes = std::array<char, 135>;

bool WriteFile(const std::string& path, const Bytes& bytes) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && written;
}

bool ReadFile(const std::string& path, Bytes& bytes) {
  std::FILE* const file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  const bool read = std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && read;
}

// One call for each iteration; the comparison holds only as long as all succeed.
template <class Call>
Measure Repeated(Call call) {
  return [call](benchmark::State& state) mutable {
    for (auto _ : state) {
      if (call()) continue;
      state.SkipWithError("the file wasn't written or read");
      break;
    }
    state.SetItemsProcessed(state.iterations());
  };
}

}  // namespace

void AddSettingsWorks(const std::filesystem::path& folder) {
  const std::string path = (folder / "by_hand.dat").string();
  const std::string written = path + ".new";
  const Bytes bytes{'x'};
  CMeasUnitSystem system(kelp::WString(), KTEXT("settings.dat"));
  // Neither side makes the file: settings are saved over older ones.
  system.SaveConfig();
  WriteFile(path, bytes);

  Compare("save unit settings", Repeated([system]() mutable { return system.SaveConfig(); }),
          {{"stdio", 1.5, Repeated([=] { return WriteFile(path, bytes); })},
           {"stdio and rename", 1.5, Repeated([=] {
              return WriteFile(written, bytes) && std::rename(written.c_str(), path.c_str()) == 0;
            })}});
  Compare("load unit settings", Repeated([system]() mutable { return system.LoadConfig(); }),
          {{"stdio", 1.5, Repeated([path, read = Bytes()]() mutable {
              const bool ok = ReadFile(path, read);
              benchmark::DoNotOptimize(read);
              return ok;
            })}});
}

}  // namespace bench
