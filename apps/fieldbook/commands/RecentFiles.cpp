#include "fieldbook/commands/RecentFiles.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "fieldbook/commands/SettingsFile.h"
#include "fieldbook/values/Scanner.h"

namespace fieldbook {
namespace {

constexpr const WChar* kSection = KTEXT("Recent");
constexpr const WChar* kOrderKey = KTEXT("Order");
constexpr int kMostFiles = 10;
constexpr int kLongestPath = 1000;  // of what the settings file gives back whole

WString KeyOf(int slot) {
  return WString(KTEXT("File")).Concat(WString::ValueOf(slot));
}

bool IsOnNetwork(const kelp::CFile& file) {
  return file.GetPath().find(KTEXT("\\\\")) == 0;
}

// Whether a path can stand in a settings file, which has lines, and mean the same wherever the
// program runs.
bool CanBeKept(const kelp::CFile& file) {
  const WideView path = ViewOf(file.GetPath());
  const bool hasControls =
      std::any_of(path.begin(), path.end(), [](WChar unit) { return unit < KTEXT(' '); });
  return (file.IsAbsolute() || IsOnNetwork(file)) && !hasControls && path.size() <= kLongestPath;
}

// Names that differ in case are those of two files where the disk says so.
bool AreSame(const kelp::CFile& a, const kelp::CFile& b) {
  if (a.GetPath() == b.GetPath()) return true;
  if (kelp::IFileSystem::GetFileSystem().Compare(&a, &b) != 0) return false;
  std::error_code error;
  return std::filesystem::equivalent(ToArgument(a.GetPath()).path, ToArgument(b.GetPath()).path,
                                     error);
}

// The list as it stands in the file: each path has a slot of its own, and the order is a list of
// slots, so that a new path takes two writes and one that is the newest already takes none.
// Whatever else somebody has put there, or two programs have at once, gives fewer files and no
// doubles.
class Slots {
 public:
  explicit Slots(const SettingsFile& file) : m_order(file.ReadText(kSection, kOrderKey)) {
    Scanner scan(ViewOf(m_order));
    while (const std::optional<int> slot = scan.TakeWhole()) {
      if (*slot >= 1 && *slot <= kMostFiles)
        Append(*slot, file.ReadText(kSection, KeyOf(*slot).c_str()));
      if (!scan.Take(KTEXT(','))) break;
    }
  }

  std::vector<kelp::CFile> Files() const {
    std::vector<kelp::CFile> files;
    for (const Slot& slot : m_slots) files.push_back(slot.file);
    return files;
  }

  void BringToFront(const kelp::CFile& file) {
    auto place = Find(file);
    if (place == m_slots.end()) {
      const int number = TakeNumber();
      m_slots.push_back({number, file, true});
      place = m_slots.end() - 1;
    }
    std::rotate(m_slots.begin(), place, place + 1);
  }

  // Throws Failure.
  void Write(SettingsFile& file) const {
    WString order;
    for (const Slot& slot : m_slots) {
      if (slot.isNew) file.WriteText(kSection, KeyOf(slot.number).c_str(), slot.file.GetPath());
      if (!order.empty()) order += KTEXT(',');
      order += WString::ValueOf(slot.number);
    }
    if (order != m_order) file.WriteText(kSection, kOrderKey, order);
  }

 private:
  struct Slot {
    int number;
    kelp::CFile file;
    bool isNew;
  };

  std::vector<Slot>::iterator Find(const kelp::CFile& file) {
    return std::find_if(m_slots.begin(), m_slots.end(),
                        [&file](const Slot& slot) { return AreSame(slot.file, file); });
  }
  bool IsTaken(int number) const {
    return std::any_of(m_slots.begin(), m_slots.end(),
                       [number](const Slot& slot) { return slot.number == number; });
  }
  void Append(int number, const WString& path) {
    const kelp::CFile file(path);
    if (IsTaken(number) || !CanBeKept(file) || Find(file) != m_slots.end()) return;
    m_slots.push_back({number, file, false});
  }
  // A free one, or else that of the oldest.
  int TakeNumber() {
    for (int number = 1; number <= kMostFiles; ++number) {
      if (!IsTaken(number)) return number;
    }
    const int oldest = m_slots.back().number;
    m_slots.pop_back();
    return oldest;
  }

  const WString m_order;
  std::vector<Slot> m_slots;  // the newest first
};

bool IsWithinReach(const kelp::CFile& file) {
  return !IsOnNetwork(file) || file.GetParentFile().Exists();
}

}  // namespace

void RememberFiles(const std::vector<Argument>& files) {
  SettingsFile settings;
  if (!settings.Damage().empty()) return;
  Slots slots(settings);
  for (const Argument& file : files) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file.path, error)) continue;
    const kelp::CFile path(LibraryPath(file));
    if (CanBeKept(path)) slots.BringToFront(path);
  }
  try {
    slots.Write(settings);
  } catch (const Failure&) {
    // See the header.
  }
}

std::vector<kelp::CFile> RecentFiles() {
  std::vector<kelp::CFile> files = Slots(SettingsFile()).Files();
  std::erase_if(files, [](const kelp::CFile& file) { return !IsWithinReach(file); });
  return files;
}

}  // namespace fieldbook
