// Amounts of bytes as people read them.
#pragma once

#include <cstdint>

#include "fieldbook/values/Text.h"

namespace fieldbook {

// "512 bytes", "1.5 kB", "12.3 MB": in powers of 1000, with one decimal.
WString ByteText(std::uint64_t bytes);
// How fast bytes have moved: "1.5 MB/s"; that of no time is empty.
WString RateText(std::uint64_t bytes, double seconds);

}  // namespace fieldbook
