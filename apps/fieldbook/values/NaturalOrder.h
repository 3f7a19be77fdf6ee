// The order in which people look for names: P2 before P10.
#pragma once

#include <string_view>

namespace fieldbook {

// Whether a name comes before another. Runs of digits count by their value, letters of ASCII
// without regard to case; names that are alike by that by their bytes.
bool IsNaturallyLess(std::string_view a, std::string_view b);

}  // namespace fieldbook
