// Paths as text beside std::filesystem::path, and a mapped file beside mmap by hand.
#include "kelp0lang/File.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/BenchTable.h"
#include "kelp0lang/MemoryMappedFile.h"

namespace bench {
namespace {

constexpr std::size_t kMappedBytes = 200'000'000;

// Paths as a program of surveys meets them; the peer's have its own separator.
std::vector<std::string> Paths(char separator) {
  const std::vector<std::string> folders = {"C:", "Users", "Maria Rossi", "Rilievi 2026", "Comune"};
  const std::vector<std::string> names = {"survey.dat", "piano quotato.dxf", "report.txt",
                                          "grid.tar.gz"};
  std::vector<std::string> paths;
  for (std::size_t depth = 1; depth <= folders.size(); ++depth) {
    for (const std::string& name : names) {
      std::string path;
      for (std::size_t i = 0; i < depth; ++i) path += folders[i] + separator;
      paths.push_back(path + name);
    }
  }
  return paths;
}

std::vector<kelp::CFile> OurFiles() {
  std::vector<kelp::CFile> files;
  for (const std::string& path : Paths('\\'))
    files.emplace_back(kelp::WString::ConvertFromUtf8(path.c_str()));
  return files;
}

std::vector<std::filesystem::path> StdPaths() {
  const std::vector<std::string> paths = Paths('/');
  return {paths.begin(), paths.end()};
}

// Bytes in words of 8, as fast as memory gives them.
std::uint64_t Sum(const char* data, std::size_t size) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i + 8 <= size; i += 8) {
    std::uint64_t word;
    std::memcpy(&word, data + i, sizeof word);
    sum += word;
  }
  return sum;
}

std::uint64_t SumByHand(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  void* const data = mmap(nullptr, kMappedBytes, PROT_READ, MAP_SHARED, file, 0);
  const std::uint64_t sum = Sum(static_cast<const char*>(data), kMappedBytes);
  munmap(data, kMappedBytes);
  close(file);
  return sum;
}

}  // namespace

void AddFileWorks(const std::filesystem::path& folder) {
  using kelp::CFile;
  using Path = std::filesystem::path;
  const auto compare = [](const char* work, auto ours, auto theirs) {
    Compare(work, Over(OurFiles(), ours),
            {{"std::filesystem::path", 0.5, Over(StdPaths(), theirs)}});
  };
  compare(
      "parent of a path", [](const CFile& f) { return f.GetParent(); },
      [](const Path& p) { return p.parent_path(); });
  compare(
      "name in a path", [](const CFile& f) { return f.GetName(); },
      [](const Path& p) { return p.filename(); });
  compare(
      "extension of a path", [](const CFile& f) { return f.GetExt(); },
      [](const Path& p) { return p.extension(); });
  // A path as users type it, into the form that is kept.
  std::vector<kelp::WString> typed;
  std::vector<std::string> typedBytes = Paths('/');
  for (std::string& path : typedBytes)
    typed.emplace_back(kelp::WString::ConvertFromUtf8((path += '/').c_str()));
  Compare("normalise a path", Over(typed, [](const kelp::WString& p) { return CFile(p); }),
          {{"std::filesystem::path", 0.5,
            Over(typedBytes, [](const std::string& p) { return Path(p).lexically_normal(); })}});

  const std::string path = folder / "mapped";
  std::filesystem::remove(path);
  const auto wide = Path(path).u16string();
  {
    const CMemoryMappedFile made(wide.c_str(), true, true, kMappedBytes);
    std::memset(const_cast<char*>(made.getData()), 1, made.getLength());
  }
  Compare(
      "map and sum 200 MB",
      [=](benchmark::State& state) {
        for (auto _ : state) {
          const CMemoryMappedFile file(wide.c_str(), false, false, 0);
          if (!file.isLoaded()) return state.SkipWithError("not mapped");
          benchmark::DoNotOptimize(Sum(file.getData(), file.getLength()));
        }
        state.SetItemsProcessed(state.iterations());
      },
      {{"mmap", 1.05,
        [=](benchmark::State& state) {
          for (auto _ : state) benchmark::DoNotOptimize(SumByHand(path));
          state.SetItemsProcessed(state.iterations());
        }}},
      Clock::kWall);
}

}  // namespace bench
