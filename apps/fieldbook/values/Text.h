// What all of fieldbook speaks: the words of the room that it shares with other programs, and what
// it keeps to with long files.
#pragma once

#include "console/Text.h"

namespace fieldbook {

using namespace console;

// Rows between two calls of a watch.
inline constexpr std::size_t kWatchedRows = 1024;

// Texts longer than this aren't taken in; a file without line ends can be one endless line.
inline constexpr std::size_t kLongestLine = 1 << 20;

}  // namespace fieldbook
