// Files that hold a user's work are written whole, or not at all; internal to the library.
//
//   WholeFile file(path);
//   ofpstream stream(file.WrittenPath().c_str(), ...);   // whatever writes a file by its path
//   ...
//   stream.Close();
//   return stream.GetState() == kStreamGood && file.Commit();
//
// What is written goes to a file of another name beside the target, which takes its place in one
// step: whoever opens the target, and whatever ends the program meanwhile, finds the old content or
// the new one. Each object has a file of its own, so that several programs can save at once; the
// last one to commit stays.
#pragma once

#include "kelp0lang/String.h"

namespace kelp::detail {

class WholeFile {
 public:
  // Makes the file to write to, with the permissions of the target where that is there. Where the
  // target is a symbolic link the file that it leads to is meant.
  explicit WholeFile(const WString& target);
  // Without a commit the written file goes, and the target is as it was.
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  // An empty file to write to; the empty text if it couldn't be made, or if the target may not be
  // written. Commit then fails.
  const WString& WrittenPath() const { return m_written; }

  // Flushes what was written, and was closed, to the disk and puts it in place of the target. False
  // leaves the target as it was, and the reason in GetLastError. To be called once.
  bool Commit();

 private:
  bool Flush() const;

  WString m_target;
  WString m_written;
};

}  // namespace kelp::detail
