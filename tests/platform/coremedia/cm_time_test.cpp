#include "platform/coremedia/CMTime.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace {

constexpr std::int64_t valueMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t valueMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int32_t scaleMax = std::numeric_limits<std::int32_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

// Value, timescale and kind, and whether it was rounded: equality of times would hide all of them.
std::string parts(const CMTime& time) {
  if (CMTIME_IS_INVALID(time)) return "invalid";
  if (CMTIME_IS_INDEFINITE(time)) return "indefinite";
  if (!CMTIME_IS_NUMERIC(time)) return CMTimeGetSeconds(time) > 0 ? "+infinity" : "-infinity";
  return std::to_string(time.value) + "/" + std::to_string(time.timescale) +
         (CMTIME_HAS_BEEN_ROUNDED(time) ? " rounded" : "");
}

const CMTime rounded{1, 3, kCMTimeFlags_Valid | kCMTimeFlags_HasBeenRounded, 0};

TEST(CMTimeTest, secondsAreRoundedToTheNearestUnitAndFlaggedWhenThatChangesThem) {
  const struct {
    double seconds;
    std::int32_t timescale;
    const char* expected;
  } rows[] = {
      {1.5, 600, "900/600"},
      {1.0 / 3, 600, "200/600"},  // the double nearest to a third is what 200/600 gives back
      {-0.5, 1, "-1/1 rounded"},
      {10.9999, 1, "11/1 rounded"},
      {1e10, 2'000'000'000, "5000000000000000000/500000000"},  // too large until the timescale is halved twice
      {std::nan(""), 600, "invalid"},
      {1, 0, "invalid"},
      {-1e300, 600, "-infinity"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.seconds);
    EXPECT_EQ(parts(CMTimeMakeWithSeconds(row.seconds, row.timescale)), row.expected);
  }
}

TEST(CMTimeTest, onlyNumbersAndInfinitiesHaveSeconds) {
  EXPECT_EQ(CMTimeGetSeconds(CMTimeMake(3, 2)), 1.5);
  EXPECT_EQ(CMTimeGetSeconds(kCMTimeNegativeInfinity), -infinity);
  const CMTime none[] = {kCMTimeIndefinite, kCMTimeInvalid, CMTimeMake(1, 0), {5, 0, kCMTimeFlags_Valid, 0}};
  for (const CMTime& time : none) EXPECT_TRUE(std::isnan(CMTimeGetSeconds(time))) << parts(time);
}

TEST(CMTimeTest, theOrderIsTotalOverEveryPairOfKinds) {
  const std::pair<int, CMTime> ascending[] = {
      {0, kCMTimeNegativeInfinity},
      {1, CMTimeMake(valueMin, 1)},
      {2, CMTimeMake(-1, 1)},
      {2, CMTimeMake(-600, 600)},
      {3, kCMTimeZero},
      {4, CMTimeMake(1, 3)},
      {4, rounded},
      {5, CMTimeMake(33333334, 100000000)},
      {6, CMTimeMake(valueMax - 1, scaleMax)},  // as doubles these two are equal
      {7, CMTimeMake(valueMax, scaleMax)},
      {8, kCMTimePositiveInfinity},
      {9, kCMTimeIndefinite},
      {10, kCMTimeInvalid},
      {10, CMTime{7, 600, 0, 0}},
  };
  for (const auto& [leftRank, left] : ascending) {
    for (const auto& [rightRank, right] : ascending) {
      EXPECT_EQ(CMTimeCompare(left, right), (leftRank > rightRank) - (leftRank < rightRank))
          << parts(left) << " and " << parts(right);
      EXPECT_EQ(left < right, leftRank < rightRank);
    }
  }
}

TEST(CMTimeTest, aRuleForEveryPairOfKindsInSumAndDifference) {
  const CMTime kinds[] = {kCMTimeNegativeInfinity, CMTimeMake(2, 1), kCMTimePositiveInfinity, kCMTimeIndefinite,
                          kCMTimeInvalid};
  const char* rules[3][3] = {
      {"-infinity invalid", "-infinity -infinity", "invalid -infinity"},
      {"-infinity +infinity", "4/1 0/1", "+infinity -infinity"},
      {"invalid +infinity", "+infinity +infinity", "+infinity invalid"},
  };
  for (int i = 0; i < 5; ++i) {
    for (int j = 0; j < 5; ++j) {
      const int last = std::max(i, j);
      const char* rule = last == 4 ? "invalid invalid" : last == 3 ? "indefinite indefinite" : rules[i][j];
      EXPECT_EQ(parts(CMTimeAdd(kinds[i], kinds[j])) + " " + parts(CMTimeSubtract(kinds[i], kinds[j])), rule)
          << i << " and " << j;
    }
  }
}

TEST(CMTimeTest, sumsAreExactAtTheSmallestCommonTimescale) {
  const struct {
    CMTime left, right;
    const char* sum;
    const char* difference;
  } rows[] = {
      {CMTimeMake(1, 2), CMTimeMake(1, 3), "5/6", "1/6"},
      {CMTimeMake(-7, 10), CMTimeMake(7, 10), "0/10", "-14/10"},
      {rounded, CMTimeMake(1, 3), "2/3 rounded", "0/3 rounded"},
      // No common timescale in 32 bits: the larger one, and rounded.
      {CMTimeMake(1, scaleMax), CMTimeMake(1, scaleMax - 1), "2/2147483647 rounded", "0/2147483647 rounded"},
      {CMTimeMake(valueMax, 1), CMTimeMake(1, 1), "+infinity", "9223372036854775806/1"},
      {CMTimeMake(-1, 1), CMTimeMake(valueMin, 1), "-infinity", "9223372036854775807/1"},
      // Too large for the timescale: halved until it fits.
      {CMTimeMake(valueMax, 1000), CMTimeMake(valueMax, 1000), "9223372036854775807/500", "0/1000"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(parts(row.left) + " and " + parts(row.right));
    EXPECT_EQ(parts(CMTimeAdd(row.left, row.right)), row.sum);
    EXPECT_EQ(parts(CMTimeSubtract(row.left, row.right)), row.difference);
  }
}

TEST(CMTimeTest, convertsBetweenTimescales) {
  const struct {
    CMTime time;
    std::int32_t timescale;
    const char* expected;
  } rows[] = {
      {CMTimeMake(-3, 2), 1, "-2/1 rounded"},
      {CMTimeMake(3, 2), 0, "invalid"},
      {CMTimeMake(valueMax, 1), 2, "9223372036854775807/1"},
      {kCMTimeIndefinite, 600, "indefinite"},
      {CMTime{5, 0, kCMTimeFlags_Valid, 0}, 600, "5/0"},
  };
  for (const auto& row : rows) EXPECT_EQ(parts(CMTimeConvertScale(row.time, row.timescale)), row.expected);
  EXPECT_EQ(parts(CMTimeRangeGetEnd({CMTimeMake(1, 2), CMTimeMake(1, 4)})), "3/4");
}

}  // namespace
