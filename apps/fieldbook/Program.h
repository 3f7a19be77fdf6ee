// The whole program behind main.
#pragma once

#include <vector>

#include "console/Console.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

// Runs one command line and gives the exit status, see console::Status. Nothing is thrown.
int Run(const std::vector<Argument>& arguments, Console& console);

}  // namespace fieldbook
