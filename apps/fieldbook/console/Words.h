// The words of a typed line.
#pragma once

#include <vector>

#include "fieldbook/values/Text.h"

namespace fieldbook {

// Words stand apart by blanks. One that begins with a quote ends at the next, and "" in it is a
// quote; a quote further behind in a word is a character like any other, since inches are written
// so. Throws Failure if a quote isn't closed.
std::vector<WString> SplitWords(const WString& line);

}  // namespace fieldbook
