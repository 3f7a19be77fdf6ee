// The service fieldwatch: a FolderWatch that runs until it is told to stop, and what goes with it.
#pragma once

#include <filesystem>
#include <vector>

#include "console/Program.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

extern const WChar* const kWatchName;         // of the service
extern const WChar* const kWatchDisplayName;  // a source text

// The command line of the service: the program beside this one, which watches the one folder and
// copies into the other.
WString WatchCommand(const std::filesystem::path& from, const std::filesystem::path& to);

// The main function of the program. It tells what it does in "fieldwatch.log" of the folder into
// which it copies. Folders that aren't there are ERROR_PATH_NOT_FOUND in the exit code of the
// service.
Status RunWatchService(const std::vector<Argument>& arguments, Console& console);

}  // namespace fieldbook
