// The buttons of the remote: the bar, seeking, playing and pausing, leaving.
#include "platform/foundation/NSNotificationCenter.h"
#include "tests/platform/avkit/PlayerScreenTest.h"

namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr UIPressType allButMenu[] = {UIPressTypeUpArrow,    UIPressTypeDownArrow, UIPressTypeLeftArrow,
                                      UIPressTypeRightArrow, UIPressTypeSelect,    UIPressTypePlayPause};

class RemoteTest : public PlayerScreenTest {
 protected:
  // Where the bar points, in seconds.
  double found() { return bar().position() * 3600; }
};

TEST_F(RemoteTest, anyButtonBringsTheBarForThreeSecondsOnceTheProgrammeHasBegun) {
  load();
  for (const UIPressType button : allButMenu) press(button);
  EXPECT_FALSE(screen->showsPlaybackControls());
  EXPECT_EQ(player->rate(), 0);
  loop.advance(2s);
  EXPECT_THAT(seeks(), IsEmpty());
  play(600);
  for (const UIPressType button : allButMenu) {
    press(UIPressTypeUpArrow);
    loop.advance(2s);
    press(button);
    loop.advance(2900ms);
    EXPECT_TRUE(bar().isShown()) << button;
    loop.advance(200ms);
    EXPECT_FALSE(screen->showsPlaybackControls()) << button;
  }
}

TEST_F(RemoteTest, playPauseAndSelectToggleAndMeanThePlaceDuringABurst) {
  play(600);
  for (const UIPressType button : {UIPressTypePlayPause, UIPressTypeSelect}) {
    for (const float rate : {0, 1}) {
      press(button);
      EXPECT_EQ(player->rate(), rate);
      EXPECT_EQ(bar().isPaused(), rate == 0);
    }
  }
  for (const auto& [button, rate] : {std::pair(UIPressTypeSelect, 1), std::pair(UIPressTypePlayPause, 0)}) {
    const std::size_t before = seeks().size();
    press(UIPressTypeLeftArrow);
    press(button);
    EXPECT_EQ(seeks().size(), before + 1) << "at once";
    EXPECT_EQ(player->rate(), rate);
  }
}

TEST_F(RemoteTest, aBurstOfPressesIsOneSeekShortlyAfterTheLast) {
  int jumps = 0;
  play(600);
  NSNotificationCenter::defaultCenter().addObserver(&jumps, AVPlayerItemTimeJumpedNotification, item,
                                                    [&](const NSNotification&) { ++jumps; });
  const double start = now();
  for (int time = 0; time < 3; ++time) {
    press(UIPressTypeRightArrow);
    loop.advance(400ms);
  }
  EXPECT_THAT(seeks(), IsEmpty());
  EXPECT_TRUE(bar().isScrubbing());
  EXPECT_EQ(bar().elapsed(), "0:10:30");
  EXPECT_EQ(player->rate(), 1) << "the programme goes on meanwhile";
  QStringList shown;
  const auto watch = QObject::connect(&bar(), &TransportModel::changed, [&] { shown << bar().elapsed(); });
  loop.advance(300ms);
  QObject::disconnect(watch);
  shown.removeDuplicates();
  EXPECT_EQ(shown, QStringList("0:10:30")) << "nor does the bar fall back before the seek is through";
  EXPECT_FALSE(bar().isScrubbing());
  EXPECT_THAT(seeks(), ElementsAre(DoubleNear(start + 30, 0.01)));
  loop.advance(5s);
  EXPECT_EQ(jumps, 1);
  NSNotificationCenter::defaultCenter().removeObserver(&jumps);
}

TEST_F(RemoteTest, aHeldButtonRunsEverFasterAndSeeksWhenLetGoOrForgotten) {
  play(60);
  holdKey(Qt::Key_Right, 1s);
  const double afterOneSecond = found() - 60;
  key(Qt::Key_Right, QEvent::KeyRelease);
  press(UIPressTypeDownArrow);
  ASSERT_FALSE(bar().isScrubbing()) << "Down gives it up";
  holdKey(Qt::Key_Right, 3s);
  const double target = found();
  EXPECT_GT(target - 60, 5 * afterOneSecond);
  EXPECT_THAT(seeks(), IsEmpty());
  loop.advance(2s);
  EXPECT_THAT(seeks(), ElementsAre(DoubleNear(target, 0.1))) << "a release that got lost does not hold it back";
}

TEST_F(RemoteTest, aBurstGoesOnFromTheTargetOfASeekAndEndsWithTheItem) {
  media.script(kURL).seekDelay = 3;
  play(600);
  for (int time = 0; time < 2; ++time) {
    press(UIPressTypeRightArrow);
    press(UIPressTypeSelect);
  }
  EXPECT_THAT(seeks(), ElementsAre(DoubleNear(610, 0.5), DoubleNear(620, 0.5)));
  press(UIPressTypeRightArrow);
  media.script(kURL).live = true;
  media.script(kURL).bufferedLead = 0;
  player->replaceCurrentItemWithPlayerItem(AVPlayerItem::playerItemWithURL(NSURL::URLWithString(kURL)));
  EXPECT_FALSE(bar().isScrubbing());
  loop.advance(2s);
  press(UIPressTypeLeftArrow, 3);
  EXPECT_FALSE(bar().isScrubbing()) << "nowhere to go";
  loop.advance(2s);
  EXPECT_THAT(seeks(), IsEmpty()) << "of the new item's";
}

TEST_F(RemoteTest, menuDismissesUntilAnotherRecogniserTakesItsPlace) {
  play();
  const auto recognizers = screen->view()->gestureRecognizers();
  ASSERT_EQ(recognizers.size(), 1u);
  int taps = 0;
  const auto own = std::make_shared<UITapGestureRecognizer>([&](UIGestureRecognizer&) { ++taps; });
  own->setAllowedPressTypes({UIPressTypeMenu});
  screen->view()->setGestureRecognizers({own});
  press(UIPressTypeMenu);
  EXPECT_EQ(taps, 1);
  EXPECT_TRUE(isPresented());
  EXPECT_FALSE(screen->showsPlaybackControls()) << "Menu is no reason to show anything";
  screen->view()->setGestureRecognizers(recognizers);
  press(UIPressTypeDownArrow);
  press(UIPressTypeMenu);
  EXPECT_FALSE(isPresented());
}

TEST_F(RemoteTest, aViewOverTheControlsTakesTheRemote) {
  play(600);
  press(UIPressTypeRightArrow);
  const auto cover = std::make_shared<UIView>();
  screen->view()->addSubview(cover);
  for (const UIPressType button : allButMenu) press(button);
  EXPECT_FALSE(screen->showsPlaybackControls());
  loop.advance(2s);
  EXPECT_EQ(player->rate(), 1);
  EXPECT_THAT(seeks(), IsEmpty()) << "neither new presses nor the burst that the cover interrupted seek";
  cover->removeFromSuperview();
  key(Qt::Key_Space);
  EXPECT_EQ(player->rate(), 0);
  screen->view()->addSubview(cover);
  key(Qt::Key_Space, QEvent::KeyPress, true);
  key(Qt::Key_Space, QEvent::KeyRelease);
  EXPECT_EQ(player->rate(), 0) << "once, although the cover comes before the release";
  press(UIPressTypeMenu);
  EXPECT_FALSE(isPresented()) << "Menu always leaves";
}

}  // namespace
