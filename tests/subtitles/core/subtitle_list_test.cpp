#include "subtitles/core/ASBSubtitleList.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace {

TEST(SubtitleList, givesTheLastCueOfTheFileWithBothEndsIncluded) {
  const ASBSubtitleList list({{1, 1, 4, ""}, {2, 4, 6, ""}, {3, 2, 3, ""}, {4, 9, 8, ""}, {5, -2, 0, ""}});
  const std::pair<double, std::int64_t> rows[] = {{-2, 5}, {0, 5}, {0.5, 0}, {1, 1},   {1.999, 1}, {2, 3},
                                                  {3, 3},  {4, 2}, {6, 2},   {6.1, 0}, {8.5, 0},   {NAN, 0}};
  for (const auto& [time, index] : rows) {
    const ASBSubtitle* const found = list.lastSubtitleAtTime(time);
    EXPECT_EQ(found ? found->index : 0, index) << time;
  }
}

TEST(SubtitleList, isSeenWholeOrNotAtAllFromAnotherThread) {
  ASBPublishedSubtitles published;
  EXPECT_EQ(published.current(), nullptr);
  std::atomic<bool> done = false;
  std::thread reader([&] {
    while (!done) {
      const auto list = published.current();
      if (!list) continue;
      const auto& cues = list->subtitles();
      EXPECT_EQ(cues.size(), static_cast<std::size_t>(cues.front().index));
      EXPECT_EQ(list->lastSubtitleAtTime(1), &cues.back());
    }
  });
  for (std::size_t round = 1; round <= 300; ++round) {
    published.publish(std::make_shared<ASBSubtitleList>(std::vector<ASBSubtitle>(
        round, {static_cast<std::int64_t>(round), 0, 2, "text that is too long for no allocation"})));
  }
  done = true;
  reader.join();
  published.publish(nullptr);
  EXPECT_EQ(published.current(), nullptr);
}

}  // namespace
