// What is to be seen: the picture, the spinner, captions, times.
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "tests/platform/avkit/PlayerScreenTest.h"

namespace {

class StageTest : public PlayerScreenTest {
 protected:
  // Of the picture's, off the spinner and the bar.
  std::string corner() { return colorAt(snapshot(), 20, 20); }
  bool hasSpinner() { return !inkOf(snapshot(), QRect(290, 150, 60, 60), qRgb(0, 0, 0)).isEmpty(); }
};

TEST_F(StageTest, isBlackWithTheSpinnerUntilTheRateFirstLeavesZero) {
  run(100ms);
  EXPECT_TRUE(stage().isSpinning()) << "without a player";
  load();
  run(2s);
  EXPECT_TRUE(stage().isSpinning()) << "ready, but not begun";
  EXPECT_EQ(corner(), "000000");
  EXPECT_TRUE(hasSpinner());
  const int step = stage().spinnerStep();
  run(100ms);
  EXPECT_NE(stage().spinnerStep(), step);

  player->play();
  run(100ms);
  EXPECT_EQ(corner(), kGrey);
  EXPECT_FALSE(stage().isSpinning());
  player->pause();
  run(100ms);
  EXPECT_EQ(corner(), kGrey) << "a pause does not take the picture away";
  EXPECT_FALSE(stage().isSpinning());
}

TEST_F(StageTest, aProgrammeThatFailsDoesNotSpinForEver) {
  media.script(kURL).loadFailure = NSError{NSURLErrorDomain, NSURLErrorCannotConnectToHost, "refused"};
  load();
  EXPECT_FALSE(stage().isSpinning());
}

TEST_F(StageTest, spinsWhilePlayingWaitsForData) {
  play(100);
  engine().stall();
  loop.advance(100ms);
  EXPECT_FALSE(stage().isSpinning()) << "a hiccup is not worth a spinner";
  loop.advance(400ms);
  EXPECT_TRUE(stage().isSpinning());
  player->pause();
  EXPECT_FALSE(stage().isSpinning()) << "nobody waits";
  player->play();
  loop.advance(400ms);
  EXPECT_TRUE(stage().isSpinning());
  engine().resumeData();
  loop.advance(100ms);
  EXPECT_FALSE(stage().isSpinning());
}

TEST_F(StageTest, givingThePlayerBackLeavesBlack) {
  play();
  screen->setPlayer(nullptr);
  run(100ms);
  EXPECT_EQ(corner(), "000000");
  EXPECT_FALSE(stage().isSpinning());
}

TEST_F(StageTest, theHostsOverlayLiesOverThePictureAndUnderTheBar) {
  const auto mark = std::make_shared<UIView>(CGRectMake(0, 0, 640, 360));
  mark->setBackgroundColor(UIColor::redColor());
  screen->contentOverlayView()->addSubview(mark);
  play();
  EXPECT_EQ(corner(), "ff0000");
  const QRect barArea(0, 300, 640, 60);
  EXPECT_TRUE(inkOf(snapshot(), barArea, qRgb(255, 0, 0)).isEmpty());
  press(UIPressTypeUpArrow);
  run(500ms);
  EXPECT_FALSE(inkOf(snapshot(), barArea, qRgb(255, 0, 0)).isEmpty());
  EXPECT_EQ(screen->contentOverlayView()->frame(), CGRectMake(0, 0, 640, 360));
}

TEST_F(StageTest, followsTheWindowsSize) {
  play();
  window.resize(960, 600);
  QCoreApplication::processEvents();
  run(100ms);
  EXPECT_EQ(screen->contentOverlayView()->frame(), CGRectMake(0, 0, 960, 600));
  const QImage picture = snapshot();
  EXPECT_EQ(colorAt(picture, 480, 300), kGrey);
  EXPECT_EQ(colorAt(picture, 480, 10), "000000") << "16:9 in 16:10 leaves bars";
}

TEST_F(StageTest, drawsTheCaptionThatIsDueAndLiftsItOverTheBar) {
  auto& script = media.script(kURL);
  script.tracks.push_back(track(MediaTrack::Kind::subtitle, "s1", "en", "English"));
  script.captions = {{"s1", 10, 20, "Nobody has seen\na single bird."}, {"s1", 30, 40, "<img src=x> & so"}};
  play(5);
  const auto group = item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
  const auto captionArea = [this] { return inkOf(snapshot(), QRect(100, 0, 440, 340), qRgb(0x80, 0x80, 0x80)); };

  item->selectMediaOption(group->options()[0], group);
  loop.advance(2s);
  EXPECT_EQ(stage().caption(), "");
  EXPECT_TRUE(captionArea().isEmpty());
  engine().skipTo(12);
  run(100ms);
  EXPECT_EQ(stage().caption(), "Nobody has seen\na single bird.");
  const QRect low = captionArea();
  EXPECT_GT(low.top(), 180);
  EXPECT_NEAR(low.center().x(), 320, 3);

  press(UIPressTypeUpArrow);
  EXPECT_LT(captionArea().top(), low.top() - 20);
  loop.advance(4s);

  engine().skipTo(32);
  run(100ms);
  EXPECT_EQ(stage().caption(), "<img src=x> & so") << "never read as markup";
  item->selectMediaOption(nullptr, group);
  run(100ms);
  EXPECT_EQ(stage().caption(), "");
}

TEST_F(StageTest, boundsCaptionsOfAnyLength) {
  auto& script = media.script(kURL);
  script.tracks.push_back(track(MediaTrack::Kind::subtitle, "s1", "en", "English"));
  script.captions = {{"s1", 0, 20, std::string(1000000, 'w')}};
  play();
  const auto group = item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
  item->selectMediaOption(group->options()[0], group);
  run(100ms);
  EXPECT_EQ(corner(), kGrey);
  EXPECT_FALSE(stage().caption().isEmpty());
}

TEST_F(StageTest, saysWhereTheProgrammeIs) {
  media.script(kURL).bufferedLead = 360;
  play(1800.5);
  player->pause();
  press(UIPressTypeUpArrow);
  EXPECT_EQ(bar().elapsed(), "0:30:00");
  EXPECT_EQ(bar().remaining(), QString::fromUtf8("−0:30:00"));
  EXPECT_NEAR(bar().position(), 0.5, 0.01);
  EXPECT_NEAR(bar().bufferedFrom(), 0.5, 0.01);
  EXPECT_NEAR(bar().bufferedTo(), 0.6, 0.01);
  EXPECT_FALSE(bar().isLive());
  player->play();
  loop.advance(2s);
  EXPECT_EQ(bar().elapsed(), "0:30:02") << "it moves while it is shown";
}

TEST_F(StageTest, saysOfALiveStreamThatItIsOne) {
  media.script(kURL).live = true;
  play();
  press(UIPressTypeUpArrow);
  EXPECT_TRUE(bar().isLive());
  EXPECT_EQ(bar().elapsed(), "");
  EXPECT_EQ(bar().remaining(), "");
  EXPECT_EQ(bar().position(), 1);
}

TEST_F(StageTest, showsWhatItKnowsOfASoundOnlyProgramme) {
  media.script(kURL).tracks = {track(MediaTrack::Kind::audio, "a1", "en", "")};
  information = {metadata(AVMetadataCommonKeyTitle, "The Shipping Forecast")};
  play();
  EXPECT_TRUE(stage().isSoundOnly());
  EXPECT_FALSE(inkOf(snapshot(), QRect(100, 60, 440, 200), qRgb(0, 0, 0)).isEmpty());
  information.clear();
  play();
  run(100ms);
  EXPECT_TRUE(inkOf(snapshot(), QRect(0, 0, 640, 360), qRgb(0, 0, 0)).isEmpty());
}

TEST_F(StageTest, outOfSightIsAPauseAndNothingResumesByItself) {
  play();
  UIApplication::sharedApplication().setVisible(false);
  EXPECT_EQ(player->rate(), 0);
  loop.advance(1s);
  UIApplication::sharedApplication().setVisible(true);
  loop.advance(1s);
  EXPECT_EQ(player->rate(), 0);
  EXPECT_TRUE(bar().isShown()) << "the viewer sees why it stands still";
}

TEST_F(StageTest, keepsTheScreenAwakeWhileSomethingPlays) {
  auto& application_ = UIApplication::sharedApplication();
  EXPECT_FALSE(application_.isIdleTimerDisabled());
  play();
  EXPECT_TRUE(application_.isIdleTimerDisabled());
  player->pause();
  EXPECT_FALSE(application_.isIdleTimerDisabled());
  const auto cover = std::make_shared<UIView>();
  screen->view()->addSubview(cover);
  EXPECT_TRUE(application_.isIdleTimerDisabled()) << "something else plays over it";
  cover->removeFromSuperview();
  player->play();
  engine().skipTo(3600);
  loop.advance(100ms);
  EXPECT_FALSE(application_.isIdleTimerDisabled()) << "over";
  EXPECT_TRUE(bar().isPaused());
  play();
  engine().fail(NSError{AVFoundationErrorDomain, AVErrorUnknown, "broken"});
  loop.advance(100ms);
  EXPECT_FALSE(application_.isIdleTimerDisabled()) << "failed";
  play();
  EXPECT_TRUE(application_.isIdleTimerDisabled());
  controller->dismissViewControllerAnimated(false);
  loop.runUntilIdle();
  EXPECT_FALSE(application_.isIdleTimerDisabled());
}

TEST_F(StageTest, leavesNothingBehind) {
  controller->dismissViewControllerAnimated(false);
  loop.advance(1s);
  const auto observers = NSNotificationCenter::defaultCenter().observerCount();
  {
    const auto other = std::make_shared<AVPlayerViewController>();
    controller->presentViewController(other, true);
    item = AVPlayerItem::playerItemWithURL(NSURL::URLWithString(kURL));
    player = AVPlayer::playerWithPlayerItem(item);
    other->setPlayer(player);
    player->play();
    loop.advance(1s);
    press(UIPressTypeRightArrow);
    engine().stall();
    loop.advance(100ms);
    controller->dismissViewControllerAnimated(true);
    loop.advance(1s);
  }
  for (const char* key : {"rate", "currentItem"}) EXPECT_FALSE(player->isObserved(key)) << key;
  for (const char* key : {"status", "loadedTimeRanges", "currentCaption"}) EXPECT_FALSE(item->isObserved(key)) << key;
  EXPECT_LE(NSNotificationCenter::defaultCenter().observerCount(), observers);
  player = nullptr;
  item = nullptr;
  loop.advance(5s);
  EXPECT_EQ(media.aliveEngines(), 0);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

}  // namespace
