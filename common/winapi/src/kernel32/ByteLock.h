// Locks on bytes of a file, which hold between processes; internal to the layer.
#pragma once

#include <fcntl.h>
#include <sys/types.h>

namespace winapi {

// A lock goes with the open file, and so with the last process that has it. The command is
// F_OFD_SETLK, F_OFD_SETLKW or F_OFD_GETLK, for which true is that nobody else has it; the type
// F_RDLCK, F_WRLCK or F_UNLCK.
bool LockByte(int file, int command, short type, off_t place);

}  // namespace winapi
