// The whole program behind main.
#pragma once

#include <vector>

#include "fieldbook/console/Console.h"

namespace fieldbook {

// Runs one command line and gives the exit status, see Status. Nothing is thrown.
int Run(const std::vector<Argument>& arguments, Console& console);

}  // namespace fieldbook
