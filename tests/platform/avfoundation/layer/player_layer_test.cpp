#include "platform/avfoundation/AVPlayer.h"
#include "platform/avfoundation/layer/AVPlayerLayer.h"
#include "tests/support/Reaction.h"
#include "tests/support/ScreenTest.h"
#include "tests/support/ScriptedMediaEngine.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

class PlayerLayerTest : public ScreenTest {
 protected:
  PlayerLayerTest() {
    view()->setBackgroundColor(UIColor::whiteColor());
    media.script(redUrl).colour = 0xff0000;
    media.script(blueUrl).colour = 0x0000ff;
    view()->layer()->addSublayer(layer);
    layer->setFillsSuperlayer(true);
  }
  static std::shared_ptr<AVPlayer> playerOf(const char* url) {
    return AVPlayer::playerWithPlayerItem(AVPlayerItem::playerItemWithURL(*NSURL::URLWithString(url)));
  }
  std::string centre() {
    loop.runUntilIdle();
    return colorAt(snapshot(), 320, 180);
  }
  static constexpr const char* redUrl = "http://example.com/red.mp4";
  static constexpr const char* blueUrl = "http://example.com/blue.mp4";

  ScriptedMedia media;
  std::shared_ptr<AVPlayerLayer> layer = AVPlayerLayer::playerLayerWithPlayer(nullptr);
};

TEST_F(PlayerLayerTest, isBlackUntilThePicturesOfEachPlayerAndSaysWhenTheyCome) {
  std::vector<bool> told;
  const auto observer = std::make_shared<Reaction>([&] { told.push_back(layer->isReadyForDisplay()); });
  layer->addObserver(observer, "readyForDisplay", NSKeyValueObservingOptionInitial);
  const auto player = playerOf(redUrl);
  layer->setPlayer(player);
  EXPECT_EQ(layer->player(), player);
  EXPECT_EQ(centre(), "000000");
  EXPECT_FALSE(layer->isReadyForDisplay());
  loop.advance(100ms);
  EXPECT_TRUE(layer->isReadyForDisplay());
  EXPECT_EQ(centre(), "ff0000");
  resize(800, 450);
  EXPECT_EQ(colorAt(snapshot(), 790, 440), "ff0000");
  const auto blue = playerOf(blueUrl);
  loop.advance(100ms);
  layer->setPlayer(blue);
  EXPECT_EQ(colorAt(snapshot(), 320, 180), "000000") << "no flash of the former player's picture";
  EXPECT_EQ(centre(), "0000ff") << "a picture that is there is handed over at once";
  player->seekToTime(CMTimeMake(3, 1));
  loop.advance(1s);
  EXPECT_EQ(centre(), "0000ff");
  layer->setPlayer(nullptr);
  EXPECT_EQ(centre(), "000000");
  EXPECT_THAT(told, ElementsAre(false, true, false, true, false));
}

TEST_F(PlayerLayerTest, theLastLayerThatAPlayerWasGivenToShowsIt) {
  const auto player = playerOf(redUrl);
  layer->setPlayer(player);
  loop.advance(100ms);
  auto other = AVPlayerLayer::playerLayerWithPlayer(player);
  other->setFrame(CGRectMake(0, 0, 64, 36));
  view()->layer()->addSublayer(other);
  EXPECT_EQ(centre(), "000000");
  EXPECT_EQ(colorAt(snapshot(), 10, 10), "ff0000");
  layer->setPlayer(nullptr);
  EXPECT_EQ(colorAt(snapshot(), 10, 10), "ff0000") << "who no longer has the pictures can't take them away";
  EXPECT_TRUE(other->isReadyForDisplay());
  layer->setPlayer(player);
  EXPECT_EQ(centre(), "ff0000");
  EXPECT_EQ(colorAt(snapshot(), 10, 10), "000000");
}

}  // namespace
