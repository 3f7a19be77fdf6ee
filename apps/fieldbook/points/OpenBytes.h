// The bytes of a points file of the disk.
//
//   const auto bytes = OpenBytes(file);
//   while (const std::size_t count = bytes->Read(buffer, sizeof buffer)) ...
#pragma once

#include <memory>

#include "console/Console.h"
#include "fieldbook/points/ByteSource.h"
#include "fieldbook/values/Text.h"

namespace fieldbook {

// A file, which stays open. It is mapped where it can be, see MappedBytes.h; what can't is read as
// a stream: a device, a file that is empty or whose size the system makes up, one that another
// program writes, and one that the library can't name. A pipe, which can be read only once, is kept
// in memory. Throws Failure where it can't be opened.
std::unique_ptr<ByteSource> OpenBytes(const Argument& file);

}  // namespace fieldbook
