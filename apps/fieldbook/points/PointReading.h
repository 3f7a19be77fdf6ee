// Reads several points files at once, on the pool of worker threads.
#pragma once

#include "fieldbook/console/Progress.h"
#include "fieldbook/points/PointFile.h"

namespace fieldbook {

struct ReadFile {
  Argument source;
  PointFile points;
  WString failure;  // empty if it could be read
};

// In the order of the arguments. Throws Failure when the user has pressed Ctrl-C. At most one of
// the arguments is "-".
std::vector<ReadFile> ReadPointFiles(const std::vector<Argument>& files, const LengthUnit& unit,
                                     Progress& progress);

}  // namespace fieldbook
