// What becomes of layouts, diff files and outputs when files are broken, huge or hostile, writers
// are killed, or the disk is full: prints a line of figures for each fault and gives 1 if anything
// came out otherwise than it should. Runs for some minutes, on POSIX; the full disk needs root,
// which may mount.
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kelp0lang/XmlDiffManager.h"
#include "tests/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using kelp::CXmlDiffManager;
using kelp::WString;

bool failed = false;

void Report(const std::string& fault, bool good, const std::string& figures) {
  std::printf("%-44s %s  %s\n", fault.c_str(), good ? "ok  " : "LOST", figures.c_str());
  std::fflush(stdout);
  failed |= !good;
}

// Files by their names.
class Files : public TempFolder {
 public:
  WString At(const std::string& name) const {
    return Wide(std::u16string(name.begin(), name.end()).c_str()).c_str();
  }
  std::size_t Count() const { return std::distance(fs::directory_iterator(Path()), {}); }
};

// What ends a process, as a shell shows it, and what it took.
struct Ended {
  int status;
  double megabytes;
  double seconds;
};

Ended Run(const std::function<int()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  rusage usage = {};
  wait4(child, &status, 0, &usage);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
          static_cast<double>(usage.ru_maxrss) / 1024, time.count()};
}

std::string Rounded(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

const std::string kLayout =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Settings><NormalLayout><CommandBars><CommandBars>"
    "<CommandBar BarID='7' Visible='1'><Control Id='1'/><Control Id='2' Caption='\xC3\xA8'/>"
    "</CommandBar></CommandBars></CommandBars></NormalLayout></Settings>";
const std::string kBar = "Settings -1 NormalLayout -1 CommandBars -1 CommandBars -1 CommandBar 7";

std::string Rule(const std::string& type, const std::string& path, const std::string& rest) {
  return "<Rule type='" + type + "'><ParentTags>" + path + "</ParentTags>" + rest + "</Rule>";
}
std::string Visible(const std::string& path, const std::string& value) {
  return Rule("edit_attrib", path,
              "<AttribLabel>Visible</AttribLabel><AttribValue>" + value + "</AttribValue>");
}
std::string Diff(const std::string& rules) {
  return "<RibbonDiffRules version=\"1.0\"><OrigFile>o</OrigFile><Rules>" + rules +
         "</Rules></RibbonDiffRules>";
}
const std::string kOld = "<Settings old=\"\"/>";

// Whether a layout is refused by all that reads it, and the outputs stay as they were.
bool IsRefused(const Files& files, const std::string& layout) {
  files.Write("layout.xml", layout);
  files.Write("good.xml", kLayout);
  files.Write("rules.xml", Diff(""));
  files.Write("out.xml", kOld);
  CXmlDiffManager manager;
  return !manager.GenerateDiffFile(files.At("layout.xml"), files.At("good.xml"),
                                   files.At("out.xml")) &&
         !manager.GenerateDiffFile(files.At("good.xml"), files.At("layout.xml"),
                                   files.At("out.xml")) &&
         !manager.ApplyDiffFile(files.At("layout.xml"), files.At("rules.xml"),
                                files.At("out.xml")) &&
         files.Read("out.xml") == kOld;
}

// The layout with the rules of a diff file applied; empty where nothing was written.
std::string Applied(const Files& files, const std::string& layout, const std::string& diff) {
  files.Write("layout.xml", layout);
  files.Write("rules.xml", diff);
  fs::remove(files.Path() / "out.xml");
  const bool done = CXmlDiffManager().ApplyDiffFile(files.At("layout.xml"), files.At("rules.xml"),
                                                    files.At("out.xml"));
  return done ? files.Read("out.xml") : std::string();
}

void CutLayouts() {
  const Files files;
  std::size_t refused = 0;
  for (std::size_t size = 0; size < kLayout.size(); ++size) {
    refused += IsRefused(files, kLayout.substr(0, size));
  }
  Report("a layout cut at each byte", refused == kLayout.size() && files.Count() == 4,
         std::to_string(refused) + " of " + std::to_string(kLayout.size()) + " refused");
}

// Those rules count that are whole.
void CutDiffFiles() {
  const Files files;
  const std::string rules[] = {
      Visible(kBar, "0"), Rule("delete_child", kBar, "<ChildTag>Control</ChildTag>"),
      Rule("insert_child", kBar, "<Element><G><Control Id='2'/></G></Element>"),
      Rule("sort_children", kBar, "<SortedChildren>-1 2</SortedChildren>")};
  std::string all;
  std::vector<std::string> results = {Applied(files, kLayout, Diff(""))};
  for (const std::string& rule : rules) {
    all += rule;
    results.push_back(Applied(files, kLayout, Diff(all)));
  }
  const std::string diff = Diff(all);
  std::size_t good = 0;
  for (std::size_t size = 0; size <= diff.size(); ++size) {
    const std::string cut = diff.substr(0, size);
    std::size_t whole = 0;
    for (std::size_t at = 0; (at = cut.find("</Rule>", at)) != cut.npos; ++at) ++whole;
    good += Applied(files, kLayout, cut) == results[whole];
  }
  Report("a diff file cut at each byte", good == diff.size() + 1 && results[3] != results[4],
         std::to_string(good) + " of " + std::to_string(diff.size() + 1) +
             " apply the rules before the cut");
}

void RefuseLayouts() {
  const std::string body = kLayout.substr(kLayout.find('\n') + 1);
  std::string bomb = "<!DOCTYPE Settings [<!ENTITY a0 \"aaaaaaaaaa\">";
  for (int i = 1; i <= 9; ++i) {
    std::string refs;
    for (int j = 0; j < 10; ++j) refs += "&a" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY a" + std::to_string(i) + " \"" + refs + "\">";
  }
  bomb += "]><Settings>&a9;</Settings>";
  std::string deep = "<Settings>";
  for (int i = 0; i < 1'000'000; ++i) deep += "<a>";
  std::string closed = deep;
  for (int i = 0; i < 1'000'000; ++i) closed += "</a>";
  const std::pair<std::string, std::string> kFaults[] = {
      {"an entity bomb", bomb},
      {"an entity of another file",
       "<!DOCTYPE Settings [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><Settings>&a;</Settings>"},
      {"a depth of a million, open", deep},
      {"a depth of a million, closed", closed + "</Settings>"},
      {"an encoding that isn't known", "<?xml version='1.0' encoding='windows-12'?>" + body},
      {"UTF-16 by its head, UTF-8 by its bytes", "<?xml version='1.0' encoding='UTF-16'?>" + body},
      {"bytes that aren't UTF-8", "<Settings a='\xE8'/>"},
      {"a NUL in an attribute", std::string("<Settings a='b\0c'/>", 19)},
      {"a NUL behind the end", std::string("<Settings/>\0", 12)},
      {"a second root", "<Settings/><Settings/>"},
      {"an attribute twice", "<Settings a='1' a='2'/>"},
  };
  for (const auto& [fault, layout] : kFaults) {
    const Files files;
    const double idle = Run([] { return 0; }).megabytes;
    const Ended ended = Run([&] { return IsRefused(files, layout) ? 0 : 1; });
    // What the C++ library and Expat take of any file comes on top.
    const double limit = idle + 8 + 20 * static_cast<double>(layout.size()) / 1e6;
    Report(fault, ended.status == 0 && ended.megabytes <= limit && files.Count() == 4,
           "refused with " + Rounded(ended.megabytes - idle) + " MB in " + Rounded(ended.seconds) +
               " s, a file of " + Rounded(static_cast<double>(layout.size()) / 1e6) + " MB");
  }
}

void OtherRoots() {
  const Files files;
  files.Write("other.xml", "<Other><a/></Other>");
  files.Write("layout.xml", kLayout);
  files.Write("rules.xml", Diff(Visible(kBar, "0")));
  CXmlDiffManager manager;
  const bool first =
      !manager.GenerateDiffFile(files.At("other.xml"), files.At("layout.xml"), files.At("out.xml"));
  const bool layout =
      !manager.ApplyDiffFile(files.At("other.xml"), files.At("rules.xml"), files.At("out.xml"));
  const bool absent = files.Count() == 3;
  // The first layout is then compared with itself.
  const bool second = manager.GenerateDiffFile(files.At("layout.xml"), files.At("other.xml"),
                                               files.At("out.xml")) &&
                      files.Read("out.xml").find("<Rule ") == std::string::npos;
  Report("a root of another name", first && layout && absent && second,
         "refused as first layout and as layout, no rules as second");
}

// Root may read any file, so it is somebody else who tries.
void FilesThatCannotBeRead() {
  const Files files;
  files.Write("layout.xml", kLayout);
  files.Write("rules.xml", Diff(""));
  files.Write("closed.xml", kLayout);
  files.Write("out.xml", kOld);
  fs::permissions(files.Path() / "closed.xml", fs::perms::none);
  fs::permissions(files.Path(), fs::perms::all);
  fs::create_directory(files.Path() / "folder.xml");
  for (const char* name : {"none.xml", "closed.xml", "folder.xml"}) {
    const Ended ended = Run([&] {
      if (getuid() == 0 && setuid(65534) != 0) return 100;
      CXmlDiffManager manager;
      WString origin = KTEXT("kept");
      if (manager.GenerateDiffFile(files.At(name), files.At("layout.xml"), files.At("out.xml")))
        return 1;
      if (manager.GenerateDiffFile(files.At("layout.xml"), files.At(name), files.At("out.xml")))
        return 2;
      if (manager.ApplyDiffFile(files.At(name), files.At("rules.xml"), files.At("out.xml")))
        return 3;
      if (manager.GetOrigName(files.At(name), origin) || origin != KTEXT("kept")) return 4;
      // Without rules the layout is written again.
      return manager.ApplyDiffFile(files.At("layout.xml"), files.At(name), files.At("new.xml")) ? 0
                                                                                                : 5;
    });
    Report("a file that can't be read: " + std::string(name),
           ended.status == 0 && files.Read("out.xml") == kOld,
           "step " + std::to_string(ended.status));
  }
}

void OddRules() {
  const Files files;
  const std::string same = Applied(files, kLayout, Diff(""));
  const std::string hidden = Applied(files, kLayout, Diff(Visible(kBar, "0")));
  const std::string path = "<ParentTags>" + kBar + "</ParentTags>";
  const struct {
    const char* fault;
    std::string rules;
    std::string result;
  } kCases[] = {
      {"an unknown type with a content", Rule("odd", kBar, "<Content>x</Content>"), same},
      {"an unknown type without one", Rule("odd", kBar, "") + Visible(kBar, "0"), same},
      {"no type", "<Rule>" + path + "<Content>x</Content></Rule>" + Visible(kBar, "0"), same},
      {"an odd number of ParentTags", Visible(kBar + " Control", "0"), hidden},
      {"empty ParentTags", Visible("", "0"), same},
      {"ParentTags of blanks", Visible("   ", "0"), same},
      {"blanks around ParentTags", Visible("  " + kBar + "  ", "0"), hidden},
      {"no ParentTags", "<Rule type='edit_attrib'/>" + Visible(kBar, "0"), same},
      {"no ChildTag", Visible(kBar, "0") + Rule("delete_child", kBar, ""), hidden},
      {"no AttribValue", Rule("edit_attrib", kBar, "<AttribLabel>a</AttribLabel>"), same},
      {"no Element", Rule("insert_child", kBar, "") + Visible(kBar, "0"), same},
      {"an empty Element", Rule("insert_child", kBar, "<Element/>") + Visible(kBar, "0"), hidden},
      {"an Element with text alone",
       Rule("insert_child", kBar, "<Element>x</Element>") + Visible(kBar, "0"), hidden},
      {"an id with a blank", Visible(kBar + " 8", "0"), hidden},
      {"no Rules", "", same},
  };
  for (const auto& [fault, rules, result] : kCases) {
    Report(std::string("a diff file with ") + fault, Applied(files, kLayout, Diff(rules)) == result,
           result == same ? "the layout as it was" : "the bar is hidden");
  }
  Report("a diff file with another root",
         Applied(files, kLayout, "<Other>" + Diff(Visible(kBar, "0")) + "</Other>") == same,
         "the layout as it was");
  const std::string blank = "<Settings><a Id='1 2'><b Id='x y'/></a><a Id='3'/></Settings>";
  files.Write("first.xml", blank);
  files.Write("second.xml", "<Settings><a Id='3'/><a Id='1 2' v=''><c Id='x y'/></a></Settings>");
  const bool made = CXmlDiffManager().GenerateDiffFile(
      files.At("first.xml"), files.At("second.xml"), files.At("diff.xml"));
  Report("ids with blanks", made && !Applied(files, blank, files.Read("diff.xml")).empty(),
         "rules made and applied, the file whole");
}

// What is read whole takes memory in proportion.
void BigFiles() {
  std::string wide = "<Settings><NormalLayout><CommandBars><CommandBars>";
  for (int i = 0; wide.size() < 10'000'000; ++i) {
    wide += "<Control Id=\"" + std::to_string(i) + "\" Class=\"Button\" Caption=\"Command\"/>";
  }
  wide += "</CommandBars></CommandBars></NormalLayout></Settings>";
  const std::pair<const char*, std::string> kFiles[] = {
      {"an attribute of 100 MB", "<Settings a='" + std::string(100'000'000, 'x') + "'/>"},
      {"a content of 100 MB", "<Settings>" + std::string(100'000'000, 'x') + "</Settings>"},
      {"a layout of 10 MB", wide},
  };
  for (const auto& [fault, layout] : kFiles) {
    const Files files;
    files.Write("layout.xml", layout);
    files.Write("rules.xml", Diff(""));
    const double idle = Run([] { return 0; }).megabytes;
    const Ended ended = Run([&] {
      return CXmlDiffManager().ApplyDiffFile(files.At("layout.xml"), files.At("rules.xml"),
                                             files.At("out.xml"))
                 ? 0
                 : 1;
    });
    const double size = static_cast<double>(layout.size()) / 1e6;
    const double factor = (ended.megabytes - idle) / size;
    Report(fault, ended.status == 0 && factor <= 20 && files.Read("out.xml").ends_with(">\n"),
           Rounded(factor) + " times its size in memory, " + Rounded(ended.seconds) + " s");
  }
}

// A layout whose export takes some milliseconds, in two states.
std::string Numbered(int number) {
  std::string layout = "<Settings>";
  for (int i = 0; i < 2'000; ++i) {
    layout += "<Control Id=\"" + std::to_string(i) + "\" n=\"" + std::to_string(number) + "\"/>";
  }
  return layout + "</Settings>";
}

void KillExports() {
  constexpr int kKills = 500;
  const Files files;
  for (const int number : {0, 1}) {
    files.Write("layout" + std::to_string(number) + ".xml", Numbered(number));
  }
  files.Write("rules.xml", Diff(""));
  const auto apply = [&files](int number) {
    return CXmlDiffManager().ApplyDiffFile(files.At("layout" + std::to_string(number) + ".xml"),
                                           files.At("rules.xml"), files.At("out.xml"));
  };
  std::string wanted[2];
  for (const int number : {1, 0}) {
    apply(number);
    wanted[number] = files.Read("out.xml");
  }
  std::mt19937 random(1);
  int whole = 0;
  int changed = 0;
  std::string before = wanted[0];
  for (int i = 0; i < kKills; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      for (int number = 1;; number = 1 - number) apply(number);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 40'000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::string now = files.Read("out.xml");
    whole += now == wanted[0] || now == wanted[1];
    changed += now != before;
    before = now;
  }
  Report("exports killed at random", whole == kKills,
         std::to_string(whole) + " of " + std::to_string(kKills) + " whole, " +
             std::to_string(changed) + " times another, " + std::to_string(files.Count() - 4) +
             " unfinished files beside it");
}

void FillTheDisk() {
  const Files files;
  const Files disk;
  if (mount("tmpfs", disk.Path().c_str(), "tmpfs", 0, "size=32k") != 0) {
    return Report("a full disk", true, "not tried: no right to mount");
  }
  files.Write("layout.xml", Numbered(1));
  files.Write("empty.xml", "<Settings/>");
  files.Write("rules.xml", Diff(""));
  disk.Write("out.xml", kOld);
  CXmlDiffManager manager;
  manager.ApplyDiffFile(files.At("layout.xml"), files.At("rules.xml"), disk.At("out.xml"));
  const bool layout = disk.Read("out.xml") == kOld && disk.Count() == 1;
  manager.GenerateDiffFile(files.At("empty.xml"), files.At("layout.xml"), disk.At("out.xml"));
  const bool diff = disk.Read("out.xml") == kOld && disk.Count() == 1;
  Report("a full disk", layout && diff, "the old layout and the old diff file are there");
  umount(disk.Path().c_str());
}

}  // namespace

int main() {
  CutLayouts();
  CutDiffFiles();
  RefuseLayouts();
  OtherRoots();
  FilesThatCannotBeRead();
  OddRules();
  BigFiles();
  KillExports();
  FillTheDisk();
  return failed ? 1 : 0;
}
