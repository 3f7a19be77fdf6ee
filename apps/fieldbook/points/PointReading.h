// Work on several points files at once, on the pool of worker threads.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fieldbook/console/Progress.h"
#include "fieldbook/points/PointFile.h"
#include "fieldbook/web/WebAddress.h"

namespace fieldbook {

// What is done with the bytes of the file at this place of the arguments. It calls the watch now
// and then, and throws Failure where it can't go on.
using FileWork = std::function<void(std::size_t at, ByteSource& bytes, const Watch& watch)>;

// Addresses of the web are fetched first. Gives what each file failed for, in the order of the
// arguments; empty where it didn't. Throws Failure when the user has pressed Ctrl-C. At most one of
// the arguments is "-".
std::vector<WString> ForEachFile(const std::vector<Argument>& files, const FileWork& work,
                                 Progress& progress);
// The work on one file. Throws Failure.
void WithFile(const Argument& file, const std::function<void(ByteSource&, const Watch&)>& work,
              Progress& progress);

// All of a file on the web. Throws Failure, also when the user has pressed Ctrl-C.
std::string FetchBeside(const Argument& address, Progress& progress);

// "FILE: what".
WString InFile(const Argument& file, const WString& what);

// Throws Failure for a file in which no row could be read: it is no points file.
void RequirePoints(const Argument& file, std::size_t points, const FaultList& faults);

}  // namespace fieldbook
