#include <windows.h>

#include <QApplication>
#include <clocale>
#include <filesystem>

#include "bench/BenchTable.h"
#include "kelp0lang/SpecialFolder.h"
#include "tests/TempFolder.h"

int main(int argc, char** argv) {
  // The unit settings, and what Qt wants a folder for.
  const TempFolder folder;
  const std::filesystem::path support = folder.Path() / "data" / "Support";
  std::filesystem::create_directories(support);
  kelp::FInitializeSpecialFolder(folder.Wide(KTEXT("program")).c_str(), -1,
                                 folder.Wide(KTEXT("data")).c_str(), folder.Wide().c_str());

  // What a program of Qt's has, with nothing to see. Qt takes over the locale of the environment,
  // which the numbers of both sides would follow.
  std::filesystem::permissions(folder.Path(), std::filesystem::perms::owner_all);
  qputenv("XDG_RUNTIME_DIR", folder.Path().c_str());
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  std::setlocale(LC_ALL, "C");

  bench::AddStringWorks();
  bench::AddNumberWorks();
  bench::AddAngleWorks();
  bench::AddUnitWorks();
  bench::AddTimeWorks();
  bench::AddCellWorks();
  bench::AddChangeWorks();
  bench::AddThreadWorks();
  bench::AddValueWorks();
  bench::AddBitWorks();
  bench::AddDigestWorks();
  bench::AddPipeWorks();
  bench::AddSettingsWorks(support);
  bench::AddProfileWorks(support);
  bench::AddFileWorks(support);
  bench::AddHttpWorks(support);
  bench::AddLineWorks(support);
  bench::AddXmlWorks(folder.Path());
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  bench::TableReporter table;
  benchmark::RunSpecifiedBenchmarks(&table);
  bench::PrintTreeMemory(folder.Path());
  benchmark::Shutdown();
  return 0;
}
