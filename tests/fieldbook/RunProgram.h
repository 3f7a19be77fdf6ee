// Runs the built fieldbook as a user does.
#pragma once

#include "tests/console/RunProcess.h"

// As RunProgram does. The settings are the defaults, unless --data is among the arguments.
ProgramResult RunFieldbook(const std::vector<std::string>& arguments, const std::string& input = "",
                           const std::filesystem::path& output = {});
#ifndef _WIN32
ProgramResult RunFieldbookOnTerminal(const std::vector<std::string>& arguments);
// As TypeInto does.
TerminalResult TypeIntoFieldbook(const std::vector<std::string>& arguments,
                                 const std::vector<Typing>& typing, int columns = 80,
                                 int lastSignal = 0);
#endif

// As Interrupt does.
ProgramResult InterruptFieldbook(const std::vector<std::string>& arguments,
                                 const std::string& input);
