#include <gmock/gmock.h>

#include "platform/dispatch/PlainRunLoop.h"
#include "platform/foundation/NSString.h"
#include "platform/uikit/UILabel.h"
#include "subtitles/ASBPlayerScrubbing.h"
#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;

namespace {

// What the labels said at each refresh.
struct Record final : ASBPlayerScrubbingDelegate {
  void playerScrubbingDidUpdateTime(const std::shared_ptr<ASBPlayerScrubbing>& scrubbing) override {
    lines.push_back(*scrubbing->currentTimeLabel()->text() + " " + *scrubbing->remainingTimeLabel()->text());
  }
  std::vector<std::string> lines;
};

}  // namespace

// Over the product's own engine, in real time. The clip has 13 frames and 13.05 frames' time.
TEST(ScrubbingOfRealMedia, labelsEachFrameAndPlaysAgainAtTheEnd) {
  screenApplication();
  PlainRunLoop loop;
  MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  const auto item = AVPlayerItem::playerItemWithURL(NSURL::fileURLWithPath(YMR_SAMPLES "/half.mp4"));
  const auto player = AVPlayer::playerWithPlayerItem(item);
  const auto elapsed = std::make_shared<UILabel>(), remaining = std::make_shared<UILabel>();
  const auto record = std::make_shared<Record>();
  const auto scrubbing = std::make_shared<ASBPlayerScrubbing>();
  scrubbing->setShowTimeFrames(true);
  scrubbing->setCurrentTimeLabel(elapsed);
  scrubbing->setRemainingTimeLabel(remaining);
  scrubbing->setDelegate(record);
  scrubbing->setPlayer(player);
  ASSERT_TRUE(loop.runUntil([&] { return !record->lines.empty(); }, 20s));
  EXPECT_EQ(scrubbing->nbFramesPerSecond(), 25);

  for (int frame = 0; frame < 13; ++frame) {
    record->lines.clear();
    player->seekToTime(CMTimeMake(2 * frame + 1, 50));
    ASSERT_TRUE(loop.runUntil([&] { return !record->lines.empty(); }, 20s));
    const std::int64_t left = 12 - frame;
    EXPECT_THAT(record->lines, testing::ElementsAre(stringWithFormat("00:00:%02d −00:00:%02d", {frame, left})));
  }
  player->seekToTime(kCMTimeZero);
  ASSERT_TRUE(loop.runUntil([&] { return record->lines.back() == "00:00:00 −00:00:13"; }, 20s));
  for (const std::size_t refreshes : {13u, 14u}) {  // the second time with the jump to the start
    record->lines.clear();
    scrubbing->playPause();
    ASSERT_TRUE(loop.runUntil([&] { return record->lines.size() > 1 && player->rate() == 0; }, 20s));
    EXPECT_THAT(record->lines, testing::SizeIs(refreshes));
    EXPECT_EQ(record->lines.back(), "00:00:13 00:00:00");
  }
  MediaEngineSettings::shared() = {};
}
