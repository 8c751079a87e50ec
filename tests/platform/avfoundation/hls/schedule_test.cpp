// Which variant is taken, and where segments stand in time.
#include <gmock/gmock.h>

#include "platform/avfoundation/hls/HLSTimeline.h"
#include "platform/avfoundation/hls/HLSVariantChoice.h"

using namespace std::chrono_literals;

namespace {

constexpr std::int64_t second = 1'000'000'000;

const std::vector<HLSVariant> ladder = [] {
  std::vector<HLSVariant> variants;
  for (const auto& [bandwidth, height] :
       {std::pair{2'000'000, 540}, {700'000, 360}, {4'500'000, 720}, {7'000'000, 1080}}) {
    variants.push_back({.uri = "v", .bandwidth = static_cast<std::uint64_t>(bandwidth), .width = 0, .height = height});
  }
  return variants;
}();

// A line of so many bits a second, six seconds of media a segment, and a viewer.
struct Line {
  HLSVariantChoice choice{ladder, 0};
  std::chrono::duration<double> now{0}, ahead{0};
  std::vector<std::size_t> chosen;
  double stalled = 0;

  void run(double rate, int segments) {
    for (int i = 0; i < segments; ++i) {
      const auto at = [](auto time) { return std::chrono::duration_cast<HLSVariantChoice::Time>(time); };
      chosen.push_back(*choice.choose(at(now), at(ahead)));
      const double bits = 6.0 * static_cast<double>(ladder[chosen.back()].bandwidth);
      const std::chrono::duration<double> took(bits / rate);
      choice.note(static_cast<std::uint64_t>(bits / 8), at(took));
      stalled += std::max(0.0, (took - ahead).count());
      ahead = std::max(ahead - took, decltype(ahead){}) + 6s;
      now += took;
      if (ahead > 40s) now += std::exchange(ahead, 40s) - 40s;
    }
  }
  int changes() const {
    int count = 0;
    for (std::size_t i = 1; i < chosen.size(); ++i) count += chosen[i] != chosen[i - 1];
    return count;
  }
};

TEST(VariantChoice, followsALineDownAndUpAgainWithoutSwinging) {
  Line line;
  line.run(8e6, 20);
  EXPECT_EQ(line.chosen.back(), 2u) << "0.8 of it is not enough for the best";
  line.stalled = 0;
  line.run(1e6, 12);
  EXPECT_EQ(line.chosen.back(), 1u);
  EXPECT_LT(line.stalled, 2);
  line.run(8e6, 20);
  EXPECT_EQ(line.chosen.back(), 2u);
  EXPECT_LE(line.changes(), 8);
  line.chosen.clear();
  for (int i = 0; i < 20; ++i) line.run(i % 2 ? 5.2e6 : 6e6, 1);  // about what one of them needs
  EXPECT_LE(line.changes(), 2);
}

TEST(VariantChoice, isBoundByTheScreenAndByWhatHasFailed) {
  HLSVariantChoice choice(ladder, 700);
  choice.note(10'000'000, 1s);
  EXPECT_EQ(choice.choose(0s, 30s), 2u) << "the least that fills the screen";
  choice.bar(2, 0s);
  EXPECT_EQ(choice.choose(1s, 30s), 0u);
  EXPECT_EQ(choice.instead({0}, 1s), 1u);
  EXPECT_EQ(choice.instead({0, 1}, 1s), 3u);
  for (const std::size_t each : {0u, 1u, 3u}) choice.bar(each, 1s);
  EXPECT_FALSE(choice.choose(2s, 30s));
  EXPECT_EQ(choice.choose(100s, 30s), 2u) << "not for ever";
}

HLSMediaPlaylist row(std::uint64_t first, std::size_t count, bool hasEnded = false) {
  HLSMediaPlaylist list{.firstSequence = first, .targetDuration = 6 * second, .hasEnded = hasEnded};
  list.segments.assign(count, HLSSegment{.uri = "s", .duration = 6 * second});
  return list;
}

TEST(Timeline, goesOnThroughReloadsAndPutsOtherListsBesideTheFirst) {
  HLSTimeline timeline;
  timeline.adopt(row(100, 6), nullptr);
  EXPECT_EQ(timeline.liveStart(), 18 * second);
  timeline.adopt(row(102, 6), nullptr);
  EXPECT_EQ(timeline.begin(), 12 * second);
  EXPECT_EQ(timeline.indexAt(13 * second), 0u);
  EXPECT_EQ(timeline.indexAt(0), 0u) << "what has gone";
  EXPECT_FALSE(timeline.indexAt(48 * second));
  timeline.adopt(row(112, 6), nullptr);
  EXPECT_EQ(timeline.begin(), 72 * second) << "some reloads were missed";
  HLSTimeline sound;
  sound.adopt(row(114, 6), &timeline);
  EXPECT_EQ(sound.begin(), 84 * second);
  HLSTimeline counted;
  counted.adopt(row(500'000, 6), &timeline);
  EXPECT_EQ(counted.end(), timeline.end()) << "counted from elsewhere, they end together";
  timeline.adopt(row(0, 3), nullptr);
  EXPECT_EQ(timeline.begin(), 108 * second) << "the server has begun anew";
}

}  // namespace
