// A first look at a file, which says what is wrong with it and where; the library's own reading
// says only that something is.
#pragma once

#include <vector>

#include "console/Console.h"

namespace ribbon {

using namespace console;

// Throws Failure where the file isn't XML, is nested too deep, or has another root than a layout's.
// The argument is as the user gave it, the path where the file is.
void RequireLayout(const Argument& file, const WString& path);

// The same for a diff file. Gives the lines of its rules, in their order.
std::vector<int> RequireDiff(const Argument& file, const WString& path);

// Throws "FILE:LINE: what", or "FILE: what" for line 0.
[[noreturn]] void FailInFile(const Argument& file, int line, const WString& what);

}  // namespace ribbon
