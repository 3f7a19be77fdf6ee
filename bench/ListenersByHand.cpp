#include "bench/ListenersByHand.h"

namespace bench {

void TellByHand(const Listeners& listeners, kelp::CSourceEvent* source) {
  for (auto* const listener : listeners) listener->OnBeginEvent(source);
  for (auto* const listener : listeners) listener->OnBeforeEndEvent(source);
  for (auto* const listener : listeners) listener->OnEndEvent(source);
}

}  // namespace bench
