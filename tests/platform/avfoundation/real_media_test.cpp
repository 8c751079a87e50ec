#include <gtest/gtest.h>

#include <cmath>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "platform/foundation/NSNotificationCenter.h"

using namespace std::chrono_literals;

// The player over the product's own engine, on real media in real time.
class RealMedia : public testing::Test {
 protected:
  static constexpr auto soon = 20s;

  RealMedia() { MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none; }
  ~RealMedia() override {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    player.reset();
    MediaEngineSettings::shared() = {};
  }

  // A player that is ready.
  bool open(const char* clip) {
    item = AVPlayerItem::playerItemWithURL(NSURL::fileURLWithPath(std::string(YMR_SAMPLES "/") + clip));
    player = AVPlayer::playerWithPlayerItem(item);
    auto& center = NSNotificationCenter::defaultCenter();
    center.addObserver(this, AVPlayerItemTimeJumpedNotification, item, [this](const NSNotification&) { ++jumps; });
    center.addObserver(this, AVPlayerItemDidPlayToEndTimeNotification, item, [this](const NSNotification&) { ++ends; });
    return loop.runUntil([&] { return item->status() == AVPlayerItemStatusReadyToPlay; }, soon);
  }
  double now() { return CMTimeGetSeconds(player->currentTime()); }

  PlainRunLoop loop;
  std::shared_ptr<AVPlayerItem> item;
  std::shared_ptr<AVPlayer> player;
  int jumps = 0;
  int ends = 0;
};

TEST_F(RealMedia, ticksAtEachMultipleUpToTheEndAndEndsOnce) {
  ASSERT_TRUE(open("clip.mp4"));
  const double duration = CMTimeGetSeconds(item->duration());
  std::vector<double> ticks;
  player->addPeriodicTimeObserver(CMTimeMake(1, 4), nullptr, [&](CMTime time) {
    ticks.push_back(CMTimeGetSeconds(time));
    EXPECT_LE(ticks.back(), now() + 1e-9) << "never early";
    EXPECT_NEAR(now(), ticks.back(), 0.5);
  });
  const double start = std::floor(duration) - 1.9;
  player->seekToTime(CMTimeMakeWithSeconds(start, 1000000000));
  player->play();
  ASSERT_TRUE(loop.runUntil([&] { return ends > 0; }, soon));
  std::vector<double> expected;
  for (double time = std::ceil(start * 4) / 4; time <= duration; time += 0.25) expected.push_back(time);
  ASSERT_FALSE(ticks.empty());
  EXPECT_NEAR(ticks.front(), start, 0.1) << "the jump's";
  ticks.erase(ticks.begin());
  EXPECT_EQ(ticks, expected);
  EXPECT_EQ(player->rate(), 0);
  EXPECT_EQ(jumps, 1);
  loop.runUntil([] { return false; }, 200ms);
  EXPECT_EQ(ends, 1);
}

TEST_F(RealMedia, handsAPausedProgrammeBackWithoutMovingIt) {
  ASSERT_TRUE(open("clip.mp4"));
  int unmoved = 0;
  for (const double until : {0.31, 0.52, 0.77, 1.03}) {
    player->play();
    ASSERT_TRUE(loop.runUntil([&] { return now() >= until; }, soon));
    const CMTime left = player->currentTime();  // what a break remembers
    player->pause();
    loop.runUntil([] { return false; }, 200ms);
    const double rests = now();
    if (rests - CMTimeGetSeconds(left) >= 0.02) continue;  // a busy machine came between asking and pausing
    jumps = 0;
    bool finished = false;
    player->seekToTime(left, [&](bool carriedOut) { finished = carriedOut; });
    EXPECT_TRUE(loop.runUntil([&] { return finished; }, soon));
    EXPECT_EQ(now(), rests) << "no flush, which would end at " << CMTimeGetSeconds(left);
    EXPECT_EQ(jumps, 1);
    ++unmoved;
  }
  EXPECT_GT(unmoved, 0);
}
