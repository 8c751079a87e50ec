#pragma once

#include <mutex>
#include <tuple>

// Lets go of the blocks that wait in a run loop's queues, with what they own, until none is left: what goes may post
// once more. `mutex` guards the queues and is not held while blocks go.
template <typename... Queues>
void dropBlocks(std::mutex& mutex, Queues&... queues) {
  for (bool some = true; some;) {
    std::tuple<Queues...> gone;
    std::lock_guard lock(mutex);
    some = (!queues.empty() || ...);
    std::apply([&](Queues&... empty) { (empty.swap(queues), ...); }, gone);
  }
}
