// Works of the library, each measured beside the peers that do the same in the same run.
//
//   bench::Compare("IndexOf unit", ours, {{"QString", 1.0, theirs}});
//
// Over gives the measuring functions; the table shows the time of one item.
#pragma once

#include <benchmark/benchmark.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

using Measure = std::function<void(benchmark::State&)>;

// The ratio that is asked where a peer is only shown beside.
inline constexpr double kOnlyShown = 0.0;

// The processor time of the measuring thread; by the clock on the wall where it waits for others.
enum class Clock { kProcessor, kWall };

struct Peer {
  std::string name;
  double asked;  // our time divided by the peer's is to be no more
  Measure measure;
};

// Registers our side and each peer's as the benchmarks "work/kelp0lang" and "work/<peer>".
void Compare(const std::string& work, const Measure& ours, const std::vector<Peer>& peers,
             Clock clock = Clock::kProcessor);

// Gives every item to call and keeps what it returns.
template <class Items, class Call>
void OverAll(benchmark::State& state, const Items& items, Call call) {
  for (auto _ : state) {
    for (const auto& item : items) benchmark::DoNotOptimize(call(item));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(items.size()));
}

// Measures a call for each of the items.
template <class Items, class Call>
Measure Over(const Items& items, Call call) {
  return [=](benchmark::State& state) { OverAll(state, items, call); };
}

// Each file's works.
void AddStringWorks();
void AddNumberWorks();
void AddAngleWorks();
void AddUnitWorks();
void AddTimeWorks();
void AddCellWorks();
void AddChangeWorks();
void AddThreadWorks();
void AddValueWorks();
void AddBitWorks();
void AddDigestWorks();
void AddPipeWorks();
// The folder is where the unit settings are saved, and the rows of text.
void AddSettingsWorks(const std::filesystem::path& folder);
void AddProfileWorks(const std::filesystem::path& folder);
void AddFileWorks(const std::filesystem::path& folder);
// The folder holds the file that is sent.
void AddHttpWorks(const std::filesystem::path& folder);
void AddLineWorks(const std::filesystem::path& folder);

// The folder holds the files that are read and written. The memory of a tree isn't measured by time
// and stands below the table.
void AddXmlWorks(const std::filesystem::path& folder);
void PrintTreeMemory(const std::filesystem::path& folder);

// Prints, when all have run, one row for each work and peer: the medians of the repetitions, in
// nanoseconds for one item, and their ratio.
class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  std::map<std::string, std::vector<double>> m_times;
};

}  // namespace bench
