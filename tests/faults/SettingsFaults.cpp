// What becomes of a settings file when writers are killed, race, or find the disk full: prints a
// line of figures for each fault and gives 1 if anything was lost. Runs for a minute or two, on
// POSIX; the full disk needs root, which may mount.
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kelp0lang/IniFile.h"
#include "kelp0lang/SpecialFolder.h"
#include "tests/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using kelp::WString;

constexpr const WChar* kSection = KTEXT("S");
bool failed = false;

void Report(const char* fault, bool good, const std::string& figures) {
  std::printf("%-34s %s  %s\n", fault, good ? "ok  " : "LOST", figures.c_str());
  std::fflush(stdout);
  failed |= !good;
}

WString Key(int process, int number) {
  return WString(KTEXT("k")).Concat(WString::ValueOf(process)) + KTEXT("_") +
         WString::ValueOf(number).c_str();
}

pid_t Start(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  return child;
}

int ResultOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The number that the writer has reached, or -1 for a file that isn't whole.
long ReachedIn(const TempFolder& folder, int keys) {
  const std::string bytes = folder.Read("kill.ket");
  const CIniFile file(folder.Wide(u"kill").c_str());
  const long first = file.GetLong(kSection, KTEXT("first"), -1);
  for (int i = 0; i < keys; ++i) {
    if (file.GetLong(kSection, Key(0, i).c_str(), -1) != i) return -1;
  }
  return bytes.ends_with(std::string("\n\0", 2)) ? first : -1;
}

void KillWriters() {
  constexpr int kKills = 1000;
  constexpr int kKeys = 200;
  const TempFolder folder;
  {
    const CIniFile file(folder.Wide(u"kill").c_str());
    file.WriteLong(kSection, KTEXT("first"), 0);
    for (int i = 0; i < kKeys; ++i) file.WriteLong(kSection, Key(0, i).c_str(), i);
  }
  std::mt19937 random(1);
  int whole = 0;
  long reached = 0;
  for (int i = 0; i < kKills; ++i) {
    const pid_t child = Start([&folder, reached] {
      const CIniFile file(folder.Wide(u"kill").c_str());
      for (long n = reached + 1;; ++n) file.WriteLong(kSection, KTEXT("first"), n);
      return 0;
    });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
    kill(child, SIGKILL);
    ResultOf(child);
    const long now = ReachedIn(folder, kKeys);
    if (now >= reached) ++whole;
    reached = now;
  }
  const auto entries = std::distance(fs::directory_iterator(folder.Path()), {});
  Report("writers killed at random", whole == kKills && entries <= 2,
         std::to_string(whole) + " of " + std::to_string(kKills) + " whole after " +
             std::to_string(reached) + " writes, " + std::to_string(entries) +
             " files in the folder");
}

void Race(const char* fault, const char* old) {
  constexpr int kProcesses = 8;
  constexpr int kWrites = 500;
  const TempFolder folder;
  if (old != nullptr) folder.Write("race.ket", old);
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    children.push_back(Start([&folder, p] {
      const CIniFile file(folder.Wide(u"race").c_str());
      int refused = 0;
      for (int i = 0; i < kWrites; ++i) refused += !file.WriteLong(kSection, Key(p, i).c_str(), i);
      return refused == 0 ? 0 : 1;
    }));
  }
  bool all = true;
  for (const pid_t child : children) all &= ResultOf(child) == 0;
  const CIniFile file(folder.Wide(u"race").c_str());
  int found = 0;
  for (int p = 0; p < kProcesses; ++p) {
    for (int i = 0; i < kWrites; ++i) found += file.GetLong(kSection, Key(p, i).c_str(), -1) == i;
  }
  const bool oldKept = old == nullptr || file.GetLong(kSection, KTEXT("old"), 0) == 1;
  Report(fault, all && oldKept && found == kProcesses * kWrites,
         std::to_string(found) + " of " + std::to_string(kProcesses * kWrites) + " keys" +
             (all ? "" : ", writes refused"));
}

void FillTheDisk() {
  const TempFolder folder;
  if (mount("tmpfs", folder.Path().c_str(), "tmpfs", 0, "size=64k") != 0) {
    return Report("a full disk", true, "not tried: no right to mount");
  }
  const CIniFile file(folder.Wide(u"full").c_str());
  int written = 0;
  const std::u16string text(1000, u'x');
  while (written < 100 && file.WriteString(kSection, Key(0, written).c_str(), text.c_str()))
    ++written;
  const DWORD error = GetLastError();
  int found = 0;
  for (int i = 0; i < written; ++i) {
    found += file.GetKelpString(kSection, Key(0, i).c_str(), KTEXT("")).Length() == 1000;
  }
  const auto entries = std::distance(fs::directory_iterator(folder.Path()), {});
  Report("a full disk", error == ERROR_DISK_FULL && found == written && entries == 1,
         std::to_string(found) + " of " + std::to_string(written) + " kept, error " +
             std::to_string(error));
  umount(folder.Path().c_str());
}

// Root may write in any folder, so it is somebody else who tries.
void WriteWhereNobodyMay() {
  const TempFolder folder;
  folder.Write("kept.ket", std::string("\xFF\xFE[\0S\0]\0", 8));
  const std::string before = folder.Read("kept.ket");
  fs::permissions(folder.Path() / "kept.ket", fs::perms(0666));
  fs::permissions(folder.Path(), fs::perms(0555));
  const int result = ResultOf(Start([&folder] {
    if (getuid() == 0 && setuid(65534) != 0) return 100;
    const CIniFile file(folder.Wide(u"kept").c_str());
    const bool refused = !file.WriteLong(kSection, KTEXT("a"), 1);
    return refused ? static_cast<int>(GetLastError()) : 0;
  }));
  fs::permissions(folder.Path(), fs::perms(0755));
  Report("a folder that can't be written",
         result == ERROR_ACCESS_DENIED && folder.Read("kept.ket") == before,
         "error " + std::to_string(result));
}

// A file of any content takes one more key and keeps all that it had.
void WriteInto(const char* fault, const std::string& bytes) {
  const TempFolder folder;
  folder.Write("odd.ket", bytes);
  const auto begin = std::chrono::steady_clock::now();
  const CIniFile file(folder.Wide(u"odd").c_str());
  const std::string converted = folder.Read("odd.ket");
  const bool written = file.WriteLong(KTEXT("New"), KTEXT("a"), 1);
  const bool read = file.GetLong(KTEXT("New"), KTEXT("a"), 0) == 1;
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  const bool kept =
      folder.Read("odd.ket").starts_with(converted) && converted.size() >= 2 * bytes.size();
  Report(fault, written && read && kept, std::to_string(time.count()) + " s");
}

std::string BigFile(std::size_t size) {
  std::string bytes;
  for (int i = 0; bytes.size() < size; ++i) {
    if (i % 100 == 0) bytes += "[Section" + std::to_string(i / 100) + "]\r\n";
    bytes += "key" + std::to_string(i) + "=value of some length\r\n";
  }
  return bytes;
}

}  // namespace

int main() {
  kelp::FInitializeSpecialFolder(nullptr, -1, KTEXT(""), nullptr);
  KillWriters();
  Race("eight that make a file", nullptr);
  Race("eight that convert a file", "[S]\r\nold=1\r\n");
  FillTheDisk();
  WriteWhereNobodyMay();
  WriteInto("one byte", "x");
  WriteInto("no end of the last line", "[A]\r\nb=1");
  WriteInto("NULs", std::string("[A]\r\nb\0c=1\0\r\n\0", 15));
  WriteInto("a line of 1 MB", "[A]\r\nb=" + std::string(1 << 20, 'x') + "\r\n");
  WriteInto("100 MB", BigFile(100'000'000));
  return failed ? 1 : 0;
}
