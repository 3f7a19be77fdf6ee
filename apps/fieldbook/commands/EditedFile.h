// The file behind fieldbook edit: what it held when it was read, and how changed points are
// written.
#pragma once

#include <string>
#include <vector>

#include "console/Console.h"
#include "fieldbook/points/PointList.h"

namespace fieldbook {

class EditedFile {
 public:
  // Reads the file. The first save over it keeps it as it was in FILE.bak, if asked to.
  EditedFile(const Argument& file, bool keepsBackup, Console& console);

  const Argument& File() const { return m_file; }
  // Of the file, as it was read or written last.
  const std::string& Bytes() const { return m_bytes; }
  // Writes the points over this file or into another one. Throws Failure where that would lose
  // something: rows of this file that couldn't be read, what somebody else has written to it since,
  // another file that is there already.
  void Save(const PointList& list, const Argument& file);

 private:
  void SaveOwn(const PointList& list);
  void SaveOther(const PointList& list, const Argument& file);
  void KeepBackup();
  void RequireUntouched() const;
  void RequireFree(const Argument& file) const;

  const Argument m_file;
  Console& m_console;
  bool m_keepsBackup;  // at the first save
  bool m_saysCommas = true;
  std::string m_bytes;
  std::vector<std::filesystem::path> m_written;  // other files that this run has made
};

}  // namespace fieldbook
