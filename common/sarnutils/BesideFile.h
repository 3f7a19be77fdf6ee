// Files that are written beside a target, whose place they take once they are whole; internal to
// the libraries.
//
//   ClearAwayDead(target);
//   const auto written = BesideName(target);   // "layout.xml.4711-1.new"
//   ...                                        // written, closed, then renamed to the target
#pragma once

#include <string>

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"

namespace sarn::detail {

// A name beside the target with the number of this process, which gives it but once.
SARNUTILS_API std::basic_string<WChar> BesideName(const std::basic_string<WChar>& target);

// Deletes what processes that were killed, or a machine that went down, have left beside this
// target. Only files that are surely such go: of exactly this kind of name, of a process that isn't
// there any more, that nobody has open, and that weren't written for an hour. The last is for a
// folder that several machines use, each of which knows its own processes alone.
SARNUTILS_API void ClearAwayDead(const std::basic_string<WChar>& target);

}  // namespace sarn::detail
