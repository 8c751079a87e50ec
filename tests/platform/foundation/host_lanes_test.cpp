#include "platform/foundation/HostLanes.h"

#include <gmock/gmock.h>

#include <random>
#include <set>

namespace {

using testing::ElementsAre;

std::vector<int> popAll(HostLanes<int>& lanes) {
  std::vector<int> popped;
  while (auto work = lanes.pop()) popped.push_back(*work);
  return popped;
}

TEST(HostLanes, workLeavesInTheOrderOfArrivalUpToTheLimits) {
  HostLanes<int> lanes({.atOnce = 3, .perHost = 3, .waiting = 100});
  int number = 0;
  for (const char* host : {"a", "b", "a", "c", "b"}) lanes.push(host, ++number);
  EXPECT_THAT(popAll(lanes), ElementsAre(1, 2, 3));
  lanes.finished("b");
  EXPECT_THAT(popAll(lanes), ElementsAre(4));
}

TEST(HostLanes, aHostAtItsLimitDoesNotHoldUpTheOthers) {
  HostLanes<int> lanes({.atOnce = 10, .perHost = 2, .waiting = 100});
  for (int number : {1, 2, 3, 4}) lanes.push("slow", number);
  lanes.push("quick", 5);
  EXPECT_THAT(popAll(lanes), ElementsAre(1, 2, 5));
  lanes.finished("quick");
  EXPECT_THAT(popAll(lanes), ElementsAre());
  lanes.finished("slow");
  EXPECT_THAT(popAll(lanes), ElementsAre(3));
}

TEST(HostLanes, aFullQueueTakesNothingUntilSomethingLeaves) {
  HostLanes<int> lanes({.atOnce = 1, .perHost = 1, .waiting = 2});
  EXPECT_TRUE(lanes.push("a", 1));
  EXPECT_TRUE(lanes.push("a", 2));
  EXPECT_FALSE(lanes.push("b", 3));
  EXPECT_THAT(popAll(lanes), ElementsAre(1));
  EXPECT_TRUE(lanes.push("b", 4));
}

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
