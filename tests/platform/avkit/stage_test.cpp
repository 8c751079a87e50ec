// What is to be seen: the picture, the spinner, captions, times.
#include <algorithm>
#include <ranges>

#include "platform/uikit/UIApplication.h"
#include "tests/platform/avkit/PlayerScreenTest.h"

namespace {

class StageTest : public PlayerScreenTest {
 protected:
  // Of the picture's, off the spinner and the bar.
  std::string corner() { return colorAt(snapshot(), 20, 20); }
  bool isDark(const QRect& area) { return inkOf(snapshot(), area, qRgb(0, 0, 0)).isEmpty(); }
};

TEST_F(StageTest, isBlackWithTheSpinnerUntilTheRateFirstLeavesZero) {
  EXPECT_TRUE(stage().isSpinning()) << "without a player";
  load();
  run(2s);
  EXPECT_TRUE(stage().isSpinning()) << "ready, but not begun";
  EXPECT_EQ(corner(), "000000");
  const QImage before = snapshot();
  run(100ms);
  EXPECT_NE(snapshot(), before) << "it turns";
  player->play();
  run(100ms);
  EXPECT_FALSE(stage().isSpinning());
  player->pause();
  run(100ms);
  EXPECT_EQ(corner(), kGrey) << "a pause does not take the picture away";
  screen->setPlayer(nullptr);
  run(100ms);
  EXPECT_EQ(corner(), "000000");
}

TEST_F(StageTest, spinsWhilePlayingWaitsForDataAndNotForWhatFailed) {
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

  media.script(kURL).loadFailure = NSError{NSURLErrorDomain, NSURLErrorCannotConnectToHost, "refused"};
  load();
  EXPECT_FALSE(stage().isSpinning());
}

TEST_F(StageTest, theHostsOverlayLiesOverThePictureAndUnderTheBarWhateverTheSize) {
  const auto mark = std::make_shared<UIView>(CGRectMake(0, 0, 960, 600));
  mark->setBackgroundColor(UIColor::redColor());
  screen->contentOverlayView()->addSubview(mark);
  play();
  resize(960, 600);
  const auto coversTheBar = [&] { return inkOf(snapshot(), QRect(0, 500, 960, 100), qRgb(255, 0, 0)).isEmpty(); };
  EXPECT_TRUE(coversTheBar());
  press(UIPressTypeUpArrow);
  run(500ms);
  EXPECT_FALSE(coversTheBar());
  mark->removeFromSuperview();
  loop.advance(4s);
  EXPECT_EQ(screen->contentOverlayView()->frame(), CGRectMake(0, 0, 960, 600));
  EXPECT_EQ(colorAt(snapshot(), 480, 300), kGrey);
  EXPECT_EQ(colorAt(snapshot(), 480, 10), "000000") << "16:9 in 16:10 leaves bars";
}

TEST_F(StageTest, drawsTheCaptionThatIsDueAndLiftsItOverTheBar) {
  play(5);
  const auto captionArea = [this] { return inkOf(snapshot(), QRect(100, 0, 440, 340), qRgb(0x80, 0x80, 0x80)); };
  const auto drawn = [this](std::optional<MediaCaption> due) {
    engine().setCaption(std::move(due));
    run(100ms);
    return stage().caption();
  };
  EXPECT_TRUE(captionArea().isEmpty());
  EXPECT_EQ(drawn({{"Nobody has seen\na single bird."}}), "Nobody has seen<br>a single bird.");
  const QRect low = captionArea();
  EXPECT_GT(low.top(), 180);
  EXPECT_NEAR(low.center().x(), 320, 3);
  press(UIPressTypeUpArrow);
  EXPECT_LT(captionArea().top(), low.top() - 20);
  loop.advance(4s);

  EXPECT_EQ(drawn({{"<img src=x> & so"}}), "&lt;img src=x&gt; &amp; so") << "not markup";
  EXPECT_EQ(drawn({{"<font color=#ff0000>red</font>\n<i>sl</i>ant &lt;b&gt;<img src=x>", true}}),
            "<font color=\"#ff0000\">red</font><br><i>sl</i>ant &lt;b&gt;");
  const QImage red = snapshot();
  EXPECT_TRUE(std::ranges::any_of(std::views::iota(0, 640 * 360),
                                  [&red](int at) { return red.pixel(at % 640, at / 640) == qRgb(255, 0, 0); }));
  EXPECT_THAT(drawn({{std::string(1000000, 'w')}}).size(), testing::AllOf(testing::Gt(0), testing::Lt(1000)));
  EXPECT_EQ(corner(), kGrey);
  EXPECT_EQ(drawn({}), "");
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
  player->play();
  loop.advance(2s);
  EXPECT_EQ(bar().elapsed(), "0:30:02") << "it moves while it is shown";

  media.script(kURL).tracks = {{MediaTrack::Kind::audio, "a1", "en", ""}};
  information = {metadata(AVMetadataCommonKeyTitle, "The Shipping Forecast")};
  media.script(kURL).live = true;
  play();
  EXPECT_FALSE(isDark(QRect(100, 60, 440, 200))) << "sound alone has a title";
  press(UIPressTypeUpArrow);
  EXPECT_TRUE(bar().isLive());
  EXPECT_EQ(bar().elapsed() + bar().remaining(), "");
  EXPECT_EQ(bar().position(), 1);
}

TEST_F(StageTest, theBarMarksWhatInterruptsAProgrammeWithAKnownEnd) {
  std::vector<CMTimeRange> ranges;
  for (const double second : {900, 905, 1800, 3600, 3601}) ranges.push_back({CMTimeMakeWithSeconds(second, 1), {}});
  for (const bool isLive : {false, true}) {
    media.script(kURL).live = isLive;
    play(600);
    item->setInterstitialTimeRanges(ranges);
    press(UIPressTypeUpArrow);
    EXPECT_EQ(bar().marks(), isLive ? QList<double>() : QList<double>({0.25, 0.5, 1})) << "one at a place";
  }
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
  const auto isAwake = [this](RunLoop::Duration after = {}) {
    loop.advance(after);
    return UIApplication::sharedApplication().isIdleTimerDisabled();
  };
  EXPECT_FALSE(isAwake());
  play();
  EXPECT_TRUE(isAwake());
  player->pause();
  EXPECT_FALSE(isAwake());
  const auto cover = std::make_shared<UIView>();
  screen->view()->addSubview(cover);
  EXPECT_TRUE(isAwake()) << "something else plays over it";
  cover->removeFromSuperview();
  player->play();
  engine().skipTo(3600);
  EXPECT_FALSE(isAwake(100ms)) << "over";
  EXPECT_TRUE(bar().isPaused());
  play();
  engine().fail(NSError{AVFoundationErrorDomain, AVErrorUnknown, "broken"});
  EXPECT_FALSE(isAwake(100ms)) << "failed";
  play();
  EXPECT_TRUE(isAwake());
  controller->dismissViewControllerAnimated(true);
  const auto next = std::make_shared<AVPlayerViewController>();
  next->setPlayer(player);
  controller->presentViewController(next, false);
  EXPECT_TRUE(isAwake(1s)) << "the next one came while it faded out";
  controller->dismissViewControllerAnimated(false);
  EXPECT_FALSE(isAwake(100ms)) << "left";
}

}  // namespace
