// A points file in memory, without being in the program's way: whatever becomes of the file
// meanwhile, and however long it is.
//
// Its bytes are copied out by the system (ReadProcessMemory), never touched. On POSIX nothing keeps
// another program from cutting a file that is mapped here, and touching what is behind the new end
// would end the program by a signal; on Windows a folder of the network may go. Copying tells of
// both, and a file that has become shorter is a failure with its name: half of the points as if
// they were all would be worse than none. It costs what reading a stream costs.
//
// The pages that have been copied are given back now and then, so that a file of any size takes a
// few MB of memory.
#pragma once

#include <memory>

#include "console/Console.h"
#include "fieldbook/points/ByteSource.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

// Null where the file can't be mapped.
std::unique_ptr<ByteSource> MapBytes(const Argument& file);

}  // namespace fieldbook
