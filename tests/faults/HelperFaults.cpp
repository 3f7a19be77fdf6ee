// What a thousand commands to the elevated helper leave behind, and what 10 MB of garbage from it
// cost: prints a line of figures for each fault and gives 1 if anything came out otherwise than it
// should. Runs for ten minutes, since the pipes are looked at twice a second; on POSIX.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include "kelp0lang/IniFile.h"
#include "kelp0lang/SpecialFolder.h"
#include "kelp0lang/StubCaller.h"
#include "tests/TempFolder.h"

namespace {

namespace fs = std::filesystem;

fs::path helperProgram;
bool failed = false;

void Report(const char* fault, bool good, const std::string& figures) {
  std::printf("%-30s %s  %s\n", fault, good ? "ok  " : "LOST", figures.c_str());
  std::fflush(stdout);
  failed |= !good;
}

bool Command(const WChar* name) {
  CServiceStubCaller caller;
  return caller.InstallService(name, KTEXT("name"), KTEXT("path"), true);
}

int EntriesOf(const fs::path& folder) {
  int count = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder)) ++count;
  return count;
}

// The process of the helper. One that has ended and waits to be reaped has no program any more.
std::string HelperFolder() {
  std::error_code ignored;
  for (const auto& process : fs::directory_iterator("/proc")) {
    if (fs::read_symlink(process.path() / "exe", ignored) == helperProgram) return process.path();
  }
  return {};
}

struct Held {
  int handles, threads, helpers;
  bool operator==(const Held&) const = default;
};

Held HeldNow() {
  const std::string helper = HelperFolder();
  return {EntriesOf("/proc/self/fd"), EntriesOf("/proc/self/task"),
          helper.empty() ? 0 : EntriesOf(helper + "/fd")};
}

std::string Text(const Held& held) {
  return std::to_string(held.handles) + " open, " + std::to_string(held.threads) + " threads, " +
         std::to_string(held.helpers) + " open in the helper";
}

// In a process of its own, which ends as programs do: its pipes and its helper end with it.
void InAChild(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    CStubAdminCaller::GetInstance()->SetParams(KTEXT("talk"), KTEXT("pipes"));
    work();
    std::exit(failed ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  failed |= status != 0;
}

void Flood() {
  Command(KTEXT("0"));
  const auto start = std::chrono::steady_clock::now();
  rusage before, after;
  getrusage(RUSAGE_SELF, &before);
  const bool good = Command(KTEXT("flood"));
  getrusage(RUSAGE_SELF, &after);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  const double more = static_cast<double>(after.ru_maxrss - before.ru_maxrss) / 1024;
  constexpr double kMost = 4;
  char figures[80];
  std::snprintf(figures, sizeof figures, "%.1f MB more, %.0f s", more, took.count());
  Report("10 MB of garbage", good && more <= kMost, figures);
}

void ManyCommands() {
  constexpr int kCommands = 1000;
  Command(KTEXT("0"));
  const Held before = HeldNow();
  int good = 0;
  for (int i = 0; i < kCommands; ++i) good += Command(KTEXT("0")) ? 1 : 0;
  const Held after = HeldNow();
  Report("1,000 commands", good == kCommands && after == before,
         std::to_string(good) + " well; before " + Text(before) + "; after " + Text(after));
}

// The helper sees its pipes break, and ends.
void NothingIsLeft(const fs::path& runtime) {
  for (int i = 0; i < 100 && !HelperFolder().empty(); ++i) usleep(100'000);
  int sockets = 0;
  for (const auto& entry : fs::recursive_directory_iterator(runtime)) sockets += entry.is_socket();
  Report("after the program's end", HelperFolder().empty() && sockets == 0,
         std::string(HelperFolder().empty() ? "no helper, " : "a helper, ") +
             std::to_string(sockets) + " sockets");
}

}  // namespace

int main() {
  const TempFolder folder;
  const fs::path runtime = folder.Path() / "runtime";
  const fs::path program = folder.Path() / "program";
  for (const fs::path& each : {runtime, program, folder.Path() / "data" / "Support"}) {
    fs::create_directories(each);
  }
  fs::permissions(runtime, fs::perms::owner_all);
  setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
  helperProgram = fs::canonical(program) / "OstrandAdmin.exe";
  fs::copy_file(TEST_HELPER, helperProgram);
  kelp::FInitializeSpecialFolder(folder.Wide(u"program").c_str(), -1, folder.Wide(u"data").c_str(),
                                 folder.Wide().c_str());
  CIniFile().WriteShort(KTEXT("CATASTO"), KTEXT("TimeOutPdf"), 20);
  InAChild(&Flood);
  NothingIsLeft(runtime);
  InAChild(&ManyCommands);
  NothingIsLeft(runtime);
  return failed ? 1 : 0;
}
