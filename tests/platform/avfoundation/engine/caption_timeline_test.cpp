#include "platform/avfoundation/engine/CaptionTimeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>

#include "platform/avfoundation/engine/ClosedCaptions.h"

namespace {

CaptionCue cue(std::int64_t start, std::int64_t length, std::string text, bool endsWithNext = false) {
  return {start, start + length, endsWithNext, {std::move(text)}};
}

// What is due, by looking at all there is.
std::optional<std::string> lookedUp(const std::vector<CaptionCue>& cues, std::int64_t time) {
  std::string text;
  for (const CaptionCue& each : cues) {
    const bool isOver = each.endsWithNext && std::ranges::any_of(cues, [&](const CaptionCue& other) {
                          return other.start > each.start && other.start <= time;
                        });
    if (each.start > time || each.end <= time || isOver || each.caption.text.empty()) continue;
    text += (text.empty() ? "" : "\n") + each.caption.text;
  }
  return text.empty() ? std::nullopt : std::optional(text);
}

TEST(CaptionTimeline, givesWhatIsDueInWhateverOrderCuesAndTimesCome) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    CaptionTimeline timeline;
    std::vector<CaptionCue> known;
    std::int64_t time = 0;
    for (int step = 0; step < 100; ++step) {
      if (random() % 2 == 0) {
        const auto start = static_cast<std::int64_t>(random() % 1000) * 1000 + step;  // no two alike
        CaptionCue added =
            cue(start, 1 + random() % 100'000, std::string(random() % 3, 'a' + step % 26), step % 3 == 0);
        timeline.add("one", added);
        timeline.add("two", cue(start, 500, "of another track"));
        known.insert(std::ranges::upper_bound(known, start, {}, &CaptionCue::start), added);
      }
      time = random() % 5 == 0 ? static_cast<std::int64_t>(random() % 1'000'000) : time + random() % 20'000;
      const auto due = timeline.captionAt("one", time);
      ASSERT_EQ(due ? std::optional(due->text) : std::nullopt, lookedUp(known, time));
      const auto next = timeline.nextChange("one", time);
      EXPECT_EQ(lookedUp(known, next.value_or(INT64_MAX) - 1), lookedUp(known, time));
    }
  }
}

TEST(CaptionTimeline, fiftyThousandCuesCostATickLittleMoreThanFifty) {
  const auto costOfATick = [](std::int64_t count) {
    CaptionTimeline timeline;
    for (std::int64_t i = 0; i < count; ++i) timeline.add("one", cue(1000 * i, 1'000'000'000, "text"));
    timeline.captionAt("one", 0);
    auto least = std::chrono::nanoseconds::max();
    for (std::int64_t round = 0; round < 20; ++round) {
      const auto began = std::chrono::steady_clock::now();
      for (std::int64_t tick = 0; tick < 50; ++tick) {
        const std::int64_t time = (round * 50 + tick) * 1000;  // a cue begins with each
        if (!timeline.captionAt("one", time) || !timeline.nextChange("one", time)) return least;
      }
      least = std::min<std::chrono::nanoseconds>(least, std::chrono::steady_clock::now() - began);
    }
    return least;
  };
  EXPECT_LT(costOfATick(50'000), 50 * costOfATick(50)) << "and not a thousand times as much";
}

TEST(Line21, isReadInTheOrderInWhichPicturesAreSeen) {
  using Pairs = std::vector<ClosedCaptions::Pair>;
  std::vector<CaptionCue> cues;
  ClosedCaptions captions([&cues](CaptionCue found) { cues.push_back(std::move(found)); });
  constexpr ClosedCaptions::Pair load{0, 0x14, 0x20}, show{0, 0x14, 0x2F}, clear{0, 0x14, 0x2C};
  captions.take(10, Pairs{load}, 10);
  captions.take(40, Pairs{{0, 'L', 'O'}}, 20);
  captions.take(20, Pairs{{0, 'H', 'E'}}, 20);
  captions.take(30, Pairs{{0, 'L', 0}}, 30);
  captions.take(50, Pairs{show, {1, 'x', 'y'}}, 40);
  captions.take(60, Pairs{clear}, 60);
  ASSERT_EQ(cues.size(), 2u);
  EXPECT_EQ(std::pair(cues[0].start, cues[0].caption.text), std::pair(std::int64_t{50}, std::string("HELLO")));
  EXPECT_EQ(std::pair(cues[1].start, cues[1].caption.text), std::pair(std::int64_t{60}, std::string()));
}

}  // namespace
