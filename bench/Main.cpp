#include "bench/BenchTable.h"

int main(int argc, char** argv) {
  bench::AddStringWorks();
  bench::AddNumberWorks();
  bench::AddAngleWorks();
  bench::AddUnitWorks();
  bench::AddTimeWorks();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  bench::TableReporter table;
  benchmark::RunSpecifiedBenchmarks(&table);
  benchmark::Shutdown();
  return 0;
}
