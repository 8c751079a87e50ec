#include "platform/avkit/SeekBurst.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "platform/avkit/ClockText.h"

namespace {

using Direction = SeekBurst::Direction;

std::vector<double> targetsAfter(SeekBurst burst, Direction direction, int steps) {
  std::vector<double> targets;
  for (int step = 0; step < steps; ++step) {
    burst.step(direction);
    targets.push_back(burst.target());
  }
  return targets;
}

TEST(SeekBurstTest, stepsTenSecondsAndThenFartherTheLongerItGoesOn) {
  const auto targets = targetsAfter(SeekBurst(0, 0, 7200), Direction::forward, 40);
  EXPECT_EQ((std::vector<double>(targets.begin(), targets.begin() + 4)), (std::vector<double>{10, 20, 30, 60}));
  double last = 0, lastStep = 10;
  for (const double target : targets) {
    EXPECT_GE(target - last, lastStep);
    lastStep = target - last;
    last = target;
  }
  EXPECT_GT(last, 1800) << "half an hour takes too many presses";
}

TEST(SeekBurstTest, turningRoundBeginsWithSmallStepsAgain) {
  SeekBurst burst(3600, 0, 7200);
  for (int step = 0; step < 20; ++step) burst.step(Direction::forward);
  const double overshoot = burst.target();
  burst.step(Direction::backward);
  EXPECT_EQ(burst.target(), overshoot - 10);
}

TEST(SeekBurstTest, shortProgrammesAreNotCrossedInOneStride) {
  const auto targets = targetsAfter(SeekBurst(0, 0, 300), Direction::forward, 12);
  for (std::size_t step = 1; step < targets.size(); ++step) EXPECT_LE(targets[step] - targets[step - 1], 15);
}

TEST(SeekBurstTest, neverLeadsOutOfWhatCanBeReached) {
  struct Case {
    double position, lower, upper;
    Direction direction;
    double expected;
  };
  for (const auto& [position, lower, upper, direction, expected] : {
           Case{5, 0, 60, Direction::backward, 0},
           Case{55, 0, 60, Direction::forward, 60},
           Case{130, 120, 150, Direction::backward, 120},
           Case{500, 120, 150, Direction::forward, 150},  // stands outside
           Case{0, 0, 4, Direction::forward, 4},
       }) {
    const auto targets = targetsAfter(SeekBurst(position, lower, upper), direction, 3);
    EXPECT_EQ(targets.back(), expected) << position << " in " << lower << ".." << upper;
  }
}

TEST(ClockTextTest, writesHoursMinutesAndSeconds) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [seconds, expected] : std::vector<std::pair<double, const char*>>{
           {0, "0:00:00"},
           {0.999, "0:00:00"},
           {59.5, "0:00:59"},
           {60, "0:01:00"},
           {3599.99, "0:59:59"},
           {45296, "12:34:56"},
           {360000, "100:00:00"},
           {-3, "0:00:00"},
           {1e300, "1000000:00:00"},
           {nan, ""},
           {infinity, ""},
           {-infinity, ""},
       }) {
    EXPECT_EQ(clockText(seconds), expected) << seconds;
  }
}

}  // namespace
