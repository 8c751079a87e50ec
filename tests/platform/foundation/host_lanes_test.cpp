#include "platform/foundation/HostLanes.h"

#include <gmock/gmock.h>

#include <random>
#include <set>

namespace {

TEST(HostLanes, nothingIsLostAndNoLimitIsPassedInAnyOrderOfEvents) {
  std::mt19937 random(7);
  HostLanes<int> lanes({.atOnce = 5, .perHost = 2, .waiting = 40});
  std::multiset<std::string> active;
  std::map<int, std::string> hosts;
  std::set<int> waiting;
  for (int step = 0; step < 20'000; ++step) {
    if (random() % 2) {
      const std::string host(1, static_cast<char>('a' + random() % 4));
      const bool hadRoom = waiting.size() < 40;
      ASSERT_EQ(lanes.push(host, step), hadRoom);
      if (hadRoom) {
        hosts[step] = host;
        waiting.insert(step);
      }
    } else if (!active.empty()) {
      const auto ended = std::next(active.begin(), static_cast<int>(random() % active.size()));
      const std::string host = *ended;
      active.erase(ended);
      lanes.finished(host);
    }
    // The next piece is the oldest whose host has room.
    for (;;) {
      std::optional<int> expected;
      for (const int number : waiting) {
        if (active.size() < 5 && active.count(hosts[number]) < 2) {
          expected = number;
          break;
        }
      }
      ASSERT_EQ(lanes.pop(), expected);
      if (!expected) break;
      active.insert(hosts[*expected]);
      waiting.erase(*expected);
    }
    ASSERT_EQ(lanes.waiting(), waiting.size());
    ASSERT_EQ(lanes.active(), active.size());
  }
}

}  // namespace
