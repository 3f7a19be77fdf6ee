// The points files that were read last, in the settings file.
//
//   RememberFiles({file});
//   for (const kelp::CFile& file : RecentFiles()) ...
//
// Ten of them, newest first, by their absolute paths. A file that only this system can name (see
// LibraryPath), or one with a control character in its name, can't stand in a settings file and
// isn't remembered; nor is a pipe or standard input, which can't be read again.
#pragma once

#include <vector>

#include "console/Console.h"
#include "fieldbook/values/Text.h"
#include "kelp0lang/File.h"

namespace fieldbook {

// The files come to the front in this order, so that the last of them is the newest. Settings that
// can't be written, or that aren't whole, are left as they are, without a word: what the command
// was asked for is done.
void RememberFiles(const std::vector<Argument>& files);

// Without those in a folder of the network that is out of reach now.
std::vector<kelp::CFile> RecentFiles();

}  // namespace fieldbook
