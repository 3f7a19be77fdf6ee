// The calls that a transaction makes to its listeners, and nothing else.
#pragma once

#include <vector>

#include "kelp0lang/ChangeTransaction.h"

namespace bench {

using Listeners = std::vector<kelp::CSourceEvent::IEvent*>;

// Tells each listener of the beginning, then each what comes before the end, then each of the end.
[[gnu::visibility("default")]] void TellByHand(const Listeners& listeners,
                                               kelp::CSourceEvent* source);

}  // namespace bench
