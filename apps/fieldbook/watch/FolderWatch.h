// Points files that appear in a folder, copied into another once they have been checked.
//
//   FolderWatch watch(from, to);
//   while (!stops()) {
//     for (const WString& line : watch.Look(stops)) log(line);
//     wait();
//   }
//
// A file is looked into when two looks in a row have found it of the same size and time: one that
// is being written isn't whole. What is copied are the bytes that were checked, in one step. A file
// of the same name and other content that stands there is kept beside it as ".bak". A file in which
// a row can't be read, or that has no point, isn't copied; it's looked into again when it changes.
// Where a file or the folder itself can't be read, or the copy can't be written, each further look
// tries again, and the reason is told once.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <vector>

#include "fieldbook/values/Text.h"

namespace fieldbook {

class FolderWatch {
 public:
  FolderWatch(std::filesystem::path from, std::filesystem::path to);

  // One look. Gives a line for each file that was copied, or wasn't and why. Ends between two
  // files, and within one, when it is to stop.
  std::vector<WString> Look(const std::function<bool()>& isToStop);

 private:
  struct Seen {
    std::uintmax_t size;
    std::filesystem::file_time_type written;
    bool isDone;
    bool isThere;
    WString told = {};  // why it couldn't be copied
  };
  // Whether the file is at rest and hasn't been looked into.
  bool IsDue(const std::filesystem::directory_entry& file);
  // The line of a file; empty for one whose copy is there already. Throws Failure for what another
  // look may find mended.
  WString Copy(const std::filesystem::path& file, const std::function<bool()>& isToStop) const;

  const std::filesystem::path m_from;
  const std::filesystem::path m_to;
  std::map<std::filesystem::path, Seen> m_seen;
  WString m_told;  // why the folder couldn't be read
};

}  // namespace fieldbook
