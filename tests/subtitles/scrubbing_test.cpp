#include "subtitles/ASBPlayerScrubbing.h"

#include <limits>
#include <stdexcept>

#include "platform/uikit/UILabel.h"
#include "tests/platform/avfoundation/PlayerTest.h"
#include "tests/support/ScreenTest.h"

namespace {

// Counts the refreshes and does something at each.
struct Delegate final : ASBPlayerScrubbingDelegate {
  void playerScrubbingDidUpdateTime(const std::shared_ptr<ASBPlayerScrubbing>&) override {
    ++refreshes;
    if (act) act();
  }
  int refreshes = 0;
  std::function<void()> act;
};

// Notes what the drags say.
struct NotedScrubbing final : ASBPlayerScrubbing {
  void updatePlayer(bool dragEnded) override { updates += dragEnded ? "ended " : "on "; }
  std::string updates;
};

class Scrubbing : public PlayerTest {
 protected:
  void follow() {
    scrubbing->setDurationLabel(total);
    scrubbing->setCurrentTimeLabel(elapsed);
    scrubbing->setRemainingTimeLabel(remaining);
    scrubbing->setDelegate(delegate);
    scrubbing->setPlayer(player);
  }
  std::string labels() {
    return elapsed->text().value_or("nil") + " of " + total->text().value_or("nil") + ", " +
           remaining->text().value_or("nil");
  }
  int refreshes() { return std::exchange(delegate->refreshes, 0); }
  void touch(UITouchPhase phase) { scrubbing->sliderValueChanged(nullptr, UIEvent({UITouch(0, phase, {})})); }

  QGuiApplication& application = screenApplication();
  std::shared_ptr<UILabel> elapsed = std::make_shared<UILabel>();
  std::shared_ptr<UILabel> total = std::make_shared<UILabel>();
  std::shared_ptr<UILabel> remaining = std::make_shared<UILabel>();
  std::shared_ptr<Delegate> delegate = std::make_shared<Delegate>();
  std::shared_ptr<NotedScrubbing> scrubbing = std::make_shared<NotedScrubbing>();
};

TEST_F(Scrubbing, writesTimeCodes) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const struct {
    double seconds;
    const char* plain;
    const char* hours;
    const char* frames;  // 25 a second
    const char* both;
  } rows[] = {
      {0, "00:00", "0:00:00", "00:00:00", "0:00:00:00"},
      {1.5, "00:01", "0:00:01", "00:01:12", "0:00:01:12"},
      {65.9, "01:05", "0:01:05", "01:05:22", "0:01:05:22"},
      {1439.99, "23:59", "0:23:59", "23:59:24", "0:23:59:24"},
      {1440, "1:23:36", "1:23:36", "1:23:36:00", "1:23:36:00"},
      {3600, "2:59:12", "2:59:12", "2:59:12:00", "2:59:12:00"},
      {36000.04, "25:590:00", "25:590:00", "25:590:00:01", "25:590:00:01"},
      {-30, "−00:30", "−0:00:30", "−00:30:00", "−0:00:30:00"},
      {-0.4, "−00:00", "−0:00:00", "−00:00:10", "−0:00:00:10"},
      {-3600, "−2:59:12", "−2:59:12", "−2:59:12:00", "−2:59:12:00"},
      {infinity, "00:00", "0:00:00", "00:00:00", "0:00:00:00"},
      {std::nan(""), "00:00", "0:00:00", "00:00:00", "0:00:00:00"},
      {1e300, "694444444:16388888889:04", "694444444:16388888889:04", "694444444:16388888889:04:00",
       "694444444:16388888889:04:00"},
  };
  scrubbing->setNbFramesPerSecond(25);
  for (const auto& row : rows) {
    const char* const expected[] = {row.plain, row.hours, row.frames, row.both};
    for (const int flags : {0, 1, 2, 3}) {
      scrubbing->setShowTimeHours(flags & 1);
      scrubbing->setShowTimeFrames(flags & 2);
      EXPECT_EQ(scrubbing->timecodeForTimeInterval(row.seconds), expected[flags]);
      scrubbing->setShowMinusSignOnRemainingTime(false);
      const std::string code = scrubbing->timecodeForTimeInterval(-std::abs(row.seconds));
      EXPECT_EQ(code, row.seconds < 0 && row.plain[0] != '0' ? expected[flags] + 3 : expected[flags]) << "no sign";
      scrubbing->awakeFromNib();
    }
  }
}

TEST_F(Scrubbing, refreshesOnceAFrameFromTheFirstOnThoughTheAssetLoadsLater) {
  open();
  follow();
  EXPECT_EQ(labels(), "00:00 of nil, nil");
  EXPECT_EQ(scrubbing->timeObserver(), nullptr);
  loop.advance(50ms);
  EXPECT_EQ(labels(), "00:00 of 01:00, −01:00") << "as soon as the duration is known";
  EXPECT_EQ(scrubbing->frameDuration(), 0.04);
  refreshes();
  player->play();
  loop.advance(2s);
  EXPECT_EQ(refreshes(), 51) << "0 and each 25th of a second";
  EXPECT_EQ(labels(), "00:02 of 01:00, −00:58");
  scrubbing->setShowTimeFrames(false);
  scrubbing->setShowMinusSignOnRemainingTime(true);
  EXPECT_EQ(refreshes(), 0) << "what is set is set";
  scrubbing->setShowTimeFrames(true);
  scrubbing->setShowTimeHours(true);
  scrubbing->setShowMinusSignOnRemainingTime(false);
  EXPECT_EQ(refreshes(), 3);
  EXPECT_EQ(labels(), "0:00:02:00 of 0:01:00:00, 0:00:58:00");
}

TEST_F(Scrubbing, waitsForTheDurationAndForALiveStreamsForEver) {
  media.script(programme).tracks[0].kind = MediaTrack::Kind::audio;
  media.script(advertisement).live = true;
  open();
  follow();
  EXPECT_TRUE(item->isObserved("duration"));
  loop.advance(50ms);
  EXPECT_EQ(labels(), "00:00 of 01:00, −01:00");
  player->play();
  loop.advance(10s);
  EXPECT_EQ(refreshes(), 1) << "nothing but the duration tells of sound";
  scrubbing->setPlayer(nullptr);
  const auto live = itemOf(advertisement);
  player = AVPlayer::playerWithPlayerItem(live);
  scrubbing->setPlayer(player);
  player->play();
  loop.advance(3100ms);
  EXPECT_EQ(labels(), "00:03 of 01:00, 00:03");
  EXPECT_TRUE(live->isObserved("duration"));
  media.engine(advertisement)->setDuration(9);
  loop.advance(10ms);
  EXPECT_EQ(labels(), "00:03 of 01:00, 00:03") << "still live";
  const std::weak_ptr<ASBPlayerScrubbing> watched = std::exchange(scrubbing, nullptr);
  EXPECT_TRUE(watched.expired());
  EXPECT_FALSE(live->isObserved("duration"));
}

TEST_F(Scrubbing, leavesOnePlayerForTheNext) {
  openReady();
  follow();
  const auto first = player;
  first->play();
  loop.advance(10s);
  openReady(advertisement);
  scrubbing->setPlayer(player);
  EXPECT_EQ(first->rate(), 0);
  EXPECT_EQ(elapsed->text(), "00:00");
  refreshes();
  first->play();
  loop.advance(1s);
  EXPECT_EQ(refreshes(), 0) << "of the first";
  const std::weak_ptr<AVPlayer> held = player;
  player->play();
  loop.advance(1s);
  EXPECT_EQ(refreshes(), 26);
  player.reset();
  EXPECT_FALSE(held.expired());
  scrubbing->setPlayer(nullptr);
  EXPECT_TRUE(held.expired());
}

TEST_F(Scrubbing, playsPausesAndBeginsAgainAtTheEnd) {
  scrubbing->playPause();
  openReady();
  scrubbing->setPlayer(player);
  scrubbing->playPause();
  EXPECT_EQ(player->rate(), 1);
  loop.advance(5s);
  scrubbing->playPause();
  EXPECT_EQ(player->rate(), 0);
  scrubbing->playPause();
  loop.advance(58s);
  EXPECT_EQ(position(), "60");
  scrubbing->playPause();
  EXPECT_EQ(player->rate(), 0) << "not before it is back";
  loop.advance(2s);
  EXPECT_EQ(position(), "2");
  engine().skipTo(60);
  loop.advance(1ms);
  scrubbing->playPause();
  scrubbing->setPlayer(nullptr);
  loop.advance(1s);
  EXPECT_EQ(player->rate(), 0) << "let go of before it was back";
}

TEST_F(Scrubbing, pausesForADragAndKeepsWhetherItPlayed) {
  touch(UITouchPhaseBegan);
  EXPECT_FALSE(scrubbing->playAfterDrag());
  openReady();
  scrubbing->setPlayer(player);
  scrubbing->updates.clear();
  player->play();
  for (const int phase : {0, 1, 2, 3}) touch(UITouchPhase(phase));
  EXPECT_TRUE(scrubbing->playAfterDrag());
  EXPECT_EQ(player->rate(), 0);
  touch(UITouchPhaseBegan);
  touch(UITouchPhaseCancelled);
  EXPECT_FALSE(scrubbing->playAfterDrag());
  scrubbing->sliderValueChanged(nullptr, UIEvent());
  EXPECT_EQ(scrubbing->updates, "on on on ended on on on ");
}

TEST_F(Scrubbing, bearsWhateverADelegateDoes) {
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"throws", [] { throw std::runtime_error("no"); }},
      {"changes a flag", [&] { scrubbing->setShowTimeHours(true); }},
      {"sets the same player", [&] { scrubbing->setPlayer(scrubbing->player()); }},
      {"sets none", [&] { scrubbing->setPlayer(nullptr); }},
      {"takes the item", [&] { player->replaceCurrentItemWithPlayerItem(nullptr); }},
      {"goes", [&] { delegate.reset(); }},
      {"destroys it", [&] { scrubbing.reset(); }},
      {"destroys all", [&] { scrubbing.reset(), player.reset(), item.reset(); }},
  };
  for (const auto& [name, act] : rows) {
    SCOPED_TRACE(name);
    scrubbing = std::make_shared<NotedScrubbing>();
    delegate = std::make_shared<Delegate>();
    open();
    follow();
    const auto* told = delegate.get();
    const std::weak_ptr<Delegate> lives = delegate;
    delegate->act = act;
    player->play();
    loop.advance(1s);
    EXPECT_TRUE(lives.expired() || told->refreshes > 0);
    if (scrubbing && player) touch(UITouchPhaseBegan);
    scrubbing.reset();
    if (player) player->play();
    loop.advance(1s);
  }
}

}  // namespace
