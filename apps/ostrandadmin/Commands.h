// What the helper does, command by command.
#pragma once

#include "kelp0lang/StubMessage.h"

namespace ostrandadmin {

// Carries a command out. 0 when it is done, else why it isn't, as a number of winerror.h: one that
// the helper doesn't know is ERROR_INVALID_FUNCTION, one with values of another number or type
// ERROR_INVALID_DATA.
int Execute(const TStubMessage& message);

}  // namespace ostrandadmin
