#include "platform/avkit/SeekBurst.h"

#include <gmock/gmock.h>

#include <limits>
#include <vector>

#include "platform/avkit/ClockText.h"

namespace {

constexpr auto forward = SeekBurst::Direction::forward, backward = SeekBurst::Direction::backward;

std::vector<double> targetsAfter(SeekBurst burst, SeekBurst::Direction direction, int steps) {
  std::vector<double> targets;
  for (int step = 0; step < steps; ++step) {
    burst.step(direction);
    targets.push_back(burst.target());
  }
  return targets;
}

TEST(SeekBurstTest, stepsFartherTheLongerItGoesOnUntilTheViewerTurnsRound) {
  EXPECT_THAT(targetsAfter(SeekBurst(0, 0, 7200), forward, 5), testing::ElementsAre(10, 20, 30, 60, 90));
  EXPECT_THAT(targetsAfter(SeekBurst(0, 0, 300), forward, 5), testing::ElementsAre(10, 20, 30, 45, 60))
      << "a short programme is not crossed in one stride";
  SeekBurst burst(0, 0, 7200);
  for (int step = 0; step < 40; ++step) burst.step(forward);
  const double overshoot = burst.target();
  EXPECT_GT(overshoot, 1800) << "half an hour takes too many presses";
  burst.step(backward);
  EXPECT_EQ(burst.target(), overshoot - 10);
}

TEST(SeekBurstTest, neverLeadsOutOfWhatCanBeReached) {
  EXPECT_EQ(targetsAfter(SeekBurst(5, 0, 60), backward, 3).back(), 0);
  EXPECT_EQ(targetsAfter(SeekBurst(130, 120, 150), backward, 3).back(), 120);
  EXPECT_EQ(targetsAfter(SeekBurst(500, 120, 150), forward, 3).back(), 150) << "it began outside";
  EXPECT_EQ(targetsAfter(SeekBurst(0, 0, 4), forward, 3).back(), 4);
}

TEST(ClockTextTest, writesHoursMinutesAndSeconds) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [seconds, expected] : {std::pair(3599.99, "0:59:59"),
                                          {45296, "12:34:56"},
                                          {-3, "0:00:00"},
                                          {1e300, "1000000:00:00"},
                                          {infinity, ""}}) {
    EXPECT_EQ(clockText(seconds), expected) << seconds;
  }
}

}  // namespace
