// Moments as the user's clock shows them.
#pragma once

#include <cstdint>

#include "console/Text.h"

namespace console {

// A moment in UTC ms, such as "2026-11-25 00:34:05".
WString LocalTimeText(std::uint64_t utcMs);

}  // namespace console
