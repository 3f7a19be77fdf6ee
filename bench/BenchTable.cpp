#include "bench/BenchTable.h"

#include <fmt/ostream.h>

#include <algorithm>
#include <optional>

namespace bench {
namespace {

constexpr const char* kOurs = "kelp0lang";
constexpr const char* kNone = "—";

struct Row {
  std::string work;
  std::string peer;
  double asked;
};

std::vector<Row>& Rows() {
  static std::vector<Row> rows;
  return rows;
}

std::string NameOf(const std::string& work, const std::string& side) {
  return work + "/" + side;
}

double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  const std::size_t middle = times.size() / 2;
  return times.size() % 2 == 1 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
}

std::string Shown(std::optional<double> value, int decimals) {
  return value ? fmt::format("{:.{}f}", *value, decimals) : kNone;
}

}  // namespace

void Compare(const std::string& work, const Measure& ours, const std::vector<Peer>& peers,
             Clock clock) {
  const auto add = [&](const std::string& side, const Measure& measure) {
    auto* const added = benchmark::RegisterBenchmark(NameOf(work, side).c_str(), measure);
    if (clock == Clock::kWall) added->UseRealTime();
  };
  add(kOurs, ours);
  for (const Peer& peer : peers) {
    add(peer.name, peer.measure);
    Rows().push_back({work, peer.name, peer.asked});
  }
}

bool TableReporter::ReportContext(const Context&) {
  return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration) continue;
    if (run.error_occurred) {
      GetErrorStream() << run.benchmark_name() << ": " << run.error_message << '\n';
      continue;
    }
    m_times[run.run_name.function_name].push_back(1e9 / run.counters.at("items_per_second"));
  }
}

void TableReporter::Finalize() {
  const auto median = [this](const std::string& name) -> std::optional<double> {
    const auto times = m_times.find(name);
    if (times == m_times.end()) return std::nullopt;
    return Median(times->second);
  };
  constexpr const char* kLine = "{:<32} {:>12} {:<26} {:>12} {:>7} {:>6}  {}\n";
  std::ostream& out = GetOutputStream();
  fmt::print(out, kLine, "work", "ours (ns)", "peer", "peer (ns)", "ratio", "asked", "");
  for (const Row& row : Rows()) {
    const auto ours = median(NameOf(row.work, kOurs));
    const auto theirs = median(NameOf(row.work, row.peer));
    if (!ours && !theirs) continue;
    const auto ratio = ours && theirs ? std::optional(*ours / *theirs) : std::nullopt;
    const auto asked = row.asked == kOnlyShown ? std::nullopt : std::optional(row.asked);
    fmt::print(out, kLine, row.work, Shown(ours, 2), row.peer, Shown(theirs, 2), Shown(ratio, 3),
               Shown(asked, 2),
               !asked                      ? ""
               : ratio && *ratio <= *asked ? "ok"
                                           : kNone);
  }
}

}  // namespace bench
