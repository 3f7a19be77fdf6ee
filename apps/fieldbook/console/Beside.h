// Work on threads of the pool, while this thread shows how far it is and hears of Ctrl-C.
//
//   std::atomic<double> fraction{0};
//   RunBeside(1, [&] { Copy(fraction); }, [&] { progress.Set(fraction); }, [&] { GiveUp(); });
#pragma once

#include <cstddef>
#include <functional>

namespace fieldbook {

// Runs the work so many times at once, and a tick now and then. It returns when all has ended; what
// the work throws is thrown here. Where a tick throws, stop is called, and what was thrown goes on
// once the work has ended.
void RunBeside(std::size_t threads, const std::function<void()>& work,
               const std::function<void()>& tick, const std::function<void()>& stop);

}  // namespace fieldbook
