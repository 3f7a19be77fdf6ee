// The whole program behind main.
#pragma once

#include <vector>

#include "console/Console.h"

namespace ribbon {

// Runs one command line and gives the exit status, see console::Status. Nothing is thrown.
int Run(const std::vector<console::Argument>& arguments, console::Console& console);

}  // namespace ribbon
