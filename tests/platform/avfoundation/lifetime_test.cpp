#include "tests/platform/avfoundation/PlayerTest.h"

class Lifetime : public PlayerTest {};

namespace {

// Does something each time that it is told of a key.
struct Reaction final : NSKeyValueObserver {
  explicit Reaction(std::function<void()> to) : act(std::move(to)) {}
  void observeValueForKeyPath(const std::string&, const std::shared_ptr<NSObject>&, const NSKeyValueChange&,
                              void*) override {
    act();
  }
  std::function<void()> act;
};

}  // namespace

TEST_F(Lifetime, whoDestroysThePlayerFromInsideACallHearsNothingMore) {
  const char* const places[] = {
      "rate",  "status", "duration", "playbackBufferEmpty", "playbackLikelyToKeepUp", "jumped", "completion", "tick",
      "ended", "failed", "caption"};
  for (const std::string place : places) {
    SCOPED_TRACE(place);
    auto& script = media.script(programme);
    script = {};
    script.duration = 20;
    script.stalls = {{5, 1}};
    script.tracks.push_back({.kind = MediaTrack::Kind::subtitle,
                             .identifier = "s",
                             .languageTag = "de",
                             .title = "",
                             .nominalFrameRate = 0,
                             .width = 0,
                             .height = 0});
    script.captions = {{"s", 1, 2, "text"}};
    if (place == "failed") script.failure = {8, {AVFoundationErrorDomain, AVErrorUnknown, ""}};
    open();
    auto destroyed = std::make_shared<bool>(false);
    const std::weak_ptr<AVPlayer> weak = player;
    const auto destroy = [this, destroyed] {
      EXPECT_FALSE(*destroyed);
      *destroyed = true;
      player.reset();
      item.reset();
      diary->take();
    };
    std::string key = place;
    if (place == "caption") key = "currentCaption";
    if (place == "failed") key = "status";
    const auto reaction = std::make_shared<Reaction>([&] {
      if (place != "failed" || item->status() == AVPlayerItemStatusFailed) destroy();
    });
    if (place == "rate") {
      player->addObserver(reaction, "rate");
    } else {
      item->addObserver(reaction, key);
    }
    auto& center = NSNotificationCenter::defaultCenter();
    if (place == "jumped") {
      center.addObserver(&key, AVPlayerItemTimeJumpedNotification, item, [&](const NSNotification&) { destroy(); });
    }
    if (place == "ended") {
      center.addObserver(&key, AVPlayerItemDidPlayToEndTimeNotification, item,
                         [&](const NSNotification&) { destroy(); });
    }
    if (place == "tick") player->addPeriodicTimeObserver(seconds(3), nullptr, [&](CMTime) { destroy(); });
    tickEvery(1);
    player->seekToTime(seconds(0.5), [&, self = diary](bool) {
      self->note("finished");
      if (place == "completion") destroy();
    });
    player->play();
    for (int step = 0; step < 300 && !*destroyed; ++step) {
      loop.advance(100ms);
      if (step == 0 && item) {
        if (const auto group = item->asset()->mediaSelectionGroupForMediaCharacteristic("AVMediaCharacteristicLegible"))
          item->selectMediaOption(group->options()[0], group);
      }
    }
    EXPECT_TRUE(*destroyed) << "never came there";
    loop.advance(30s);
    EXPECT_THAT(diary->take(), IsEmpty());
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(media.aliveEngines(), 0);
    EXPECT_FALSE(media.logs().back()->destroyedInsideAReport) << "the engine would be on the stack";
    EXPECT_EQ(media.logs().back()->rates.back(), 0) << "is not heard until it goes";
    EXPECT_EQ(loop.pendingTimers(), 0u);
    center.removeObserver(&key);
    center.removeObserver(diary.get());
  }
}

TEST_F(Lifetime, thePlayerMayBeLetGoOnAnotherQueue) {
  openReady();
  player->play();
  item.reset();
  dispatch_async(dispatch_get_global_queue(), [last = std::move(player)]() mutable { last.reset(); });
  loop.advance(30s);
  EXPECT_EQ(media.aliveEngines(), 0);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(Lifetime, aThousandRoundsLeaveNothingBehind) {
  const auto observers = NSNotificationCenter::defaultCenter().observerCount();
  for (int round = 0; round < 1000; ++round) {
    // Each round ends somewhere else: loading, seeking, playing, stalled, at the end, failed.
    auto& script = media.script(programme);
    script = {};
    script.duration = 5;
    script.seekDelay = round % 3 * 0.1;
    if (round % 4 == 1) script.stalls = {{1, 3}};
    if (round % 5 == 2) script.failure = {2, {AVFoundationErrorDomain, AVErrorUnknown, ""}};
    open();
    tickEvery(0.5);
    player->seekToTime(seconds(0.25), noted());
    player->play();
    loop.advance(std::chrono::milliseconds(round * 7));
    player->seekToTime(seconds(0.5), noted());
    player.reset();
    item.reset();
    token.reset();
    NSNotificationCenter::defaultCenter().removeObserver(diary.get());
  }
  loop.runUntilIdle();
  EXPECT_EQ(media.aliveEngines(), 0);
  EXPECT_EQ(media.logs().size(), 1000u);
  EXPECT_EQ(loop.pendingTimers(), 0u);
  EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
}
