// A host that does something drastic from inside a callback, from each of them in turn.
#include <gmock/gmock.h>

#include <array>
#include <stdexcept>

#include "platform/foundation/NSNotificationCenter.h"
#include "tests/VAST/Parser/RecordedLog.h"
#include "tests/player/BreakRig.h"

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const NSError broken{AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"};
constexpr const char* second = "http://media.example/second.mp4";

// A presentation in which every callback has its turn. Ads come before, in and after the programme: one fails, one is
// paused by the viewer, during one the programme's buffer runs empty, the last one, which is read broadly, is
// skipped. The programme stalls at 5 s, the viewer chooses a subtitle, and it ends at 20 s or, for videoOnError, breaks
// at 15 s. Then the host dismisses it.
class Story : public BreakRig {
 public:
  explicit Story(bool breaks) {
    preRoll("pre", document({{"a", "video/mp4", "1"}, {"b", "video/webm", "2"}, {"c", "video/mp4", "3"}}));
    midRoll("mid", 3, pod({"d", "e"}));
    postRoll("post", document({{"f", "video/mp4", "", "50%"}}));
    schedule->addAdBreak(YMRAd::initPostRollWithVastUrl(std::nullopt));
    auto& script = media.script(PlayerRig::film);
    script.stalls = {{5, 1}};
    if (breaks) script.failure = {15, broken};
    script.tracks.push_back({MediaTrack::Kind::subtitle, "en", "en", ""});
    media.script(second).duration = 10;
  }

  void run() {
    player->setAdSchedule(schedule);
    player->playWithMediaItem(item(), 2);
    loop.advance(1500ms);
    withFilm([](ScriptedMediaEngine& film) { film.stall(); });
    loop.advance(1s);
    withFilm([](ScriptedMediaEngine& film) { film.resumeData(); });
    for (const float rate : {0.0f, 1.0f}) {
      if (player && hub().adPlayer()) hub().adPlayer()->setRate(rate);
      loop.advance(1s);
    }
    loop.advance(20s);
    chooseSubtitle();
    if (player && hub().adSchedule()) hub().adSchedule()->setTagProfile(YMRTagProfileBroad);
    loop.advanceUntil([this] { return player && hub().adContainerView()->skipButton()->isReady(); }, 75s);
    if (player) hub().adContainerView()->skipButton()->press();
    loop.advance(75s);
    if (player) player->dismiss();
    loop.advance(40s);
  }

  // Does `act` inside the first call of `callback`, once.
  void inside(const std::string& callback, std::function<void()> act) {
    host.inside[callback] = [this, callback, act = std::move(act)] {
      host.inside.erase(callback);
      atAct = host.heard.size();
      act();
    };
  }
  // Whether the callback came, so that the act was done.
  bool hasActed() const { return atAct.has_value(); }
  void skip() { atAct = 0; }
  Lines heardAfterAct() const { return {host.heard.begin() + static_cast<long>(*atAct), host.heard.end()}; }

  std::optional<std::size_t> atAct;

 private:
  void withFilm(const std::function<void(ScriptedMediaEngine&)>& act) {
    if (auto* film = media.engine(PlayerRig::film)) act(*film);
  }
  void chooseSubtitle() {
    if (!player || !hub().vodPlayer()) return;
    const auto screen = hub().avPlayerVC();
    const auto item = hub().vodPlayer()->currentItem();
    const auto group = item->asset()->mediaSelectionGroupForMediaCharacteristic("AVMediaCharacteristicLegible");
    if (const auto listener = screen->delegate(); listener && group) {
      listener->playerViewController(screen, group->options().front(), group);
    }
  }
};

void forEachCallback(const std::function<void(const std::string& callback, Story& story)>& check) {
  for (const auto& callback : RecordingHost().callbacks) {
    SCOPED_TRACE(callback);
    const auto observers = NSNotificationCenter::defaultCenter().observerCount();
    {
      Story story(callback == "videoOnError");
      check(callback, story);
      EXPECT_TRUE(story.hasActed()) << "the story never calls it";
      EXPECT_EQ(story.media.aliveEngines(), 0);
      EXPECT_EQ(story.loop.pendingTimers(), 0u);
      EXPECT_EQ(story.net.loader->inFlight(), 0);
      for (const auto* ad : {"a", "c", "d", "e", "f"}) {
        const auto tracked = story.tracked(ad);
        for (const auto* event : {"start", "firstQuartile", "midpoint", "thirdQuartile", "complete"}) {
          EXPECT_LE(std::count(tracked.begin(), tracked.end(), event), 1) << ad << ' ' << event;
        }
      }
    }
    EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
  }
}

// What the host hears when it only listens: [0] of the story that ends, [1] of the one that breaks.
const Lines& heardInPeace(bool breaks) {
  static const auto heard = [] {
    std::array<Lines, 2> stories;
    for (const bool which : {false, true}) {
      Story story(which);
      story.run();
      stories[which] = story.host.heard;
    }
    return stories;
  }();
  return heard[breaks];
}

void pauseAndPlay(const std::shared_ptr<AVPlayer>& player) {
  if (!player) return;
  player->pause();
  player->play();
}

}  // namespace

TEST(Reentry, aDismissalInsideAnyCallbackIsTheOnlyOne) {
  for (const bool hearsOfItsEnd : {true, false}) {
    forEachCallback([&](const std::string& callback, Story& story) {
      if (!hearsOfItsEnd && callback == "playerDidDismiss") return story.skip();
      const RecordedLog log(SKLogLevelError);
      if (!hearsOfItsEnd) story.host.delegate->playerDidDismiss = nullptr;
      std::size_t heardWhenItReturned = 0;
      story.inside(callback, [&] {
        story.player->dismiss();
        story.player->dismiss();
        heardWhenItReturned = story.host.heard.size();
      });
      story.run();
      EXPECT_EQ(story.host.count("playerWillDismiss"), 1);
      EXPECT_EQ(story.host.count("playerDidDismiss"), hearsOfItsEnd ? 1 : 0);
      EXPECT_EQ(story.player->delegate() == nullptr, hearsOfItsEnd);
      EXPECT_TRUE(story.isAdGone());
      EXPECT_THAT(log.lines(), Not(Contains(HasSubstr("observer")))) << "it was let go of twice";
      if (callback == "playerWillDismiss") return;  // which goes on when the nested call has returned
      EXPECT_EQ(story.host.heard.size(), heardWhenItReturned) << "it went on talking";
    });
  }
}

TEST(Reentry, aPlayerDestroyedInsideAnyCallbackNeverSpeaksAgain) {
  forEachCallback([](const std::string& callback, Story& story) {
    std::weak_ptr<YMRVideoPlayerImpl> hub = story.player->ymrPlayer();
    story.inside(callback, [&] { story.player.reset(); });
    story.run();
    EXPECT_THAT(story.heardAfterAct(), IsEmpty());
    EXPECT_TRUE(hub.expired());
  });
}

TEST(Reentry, aStartAScheduleOrAPauseInsideAnyCallbackKeepsThePresentationGoingToOneEnd) {
  using Act = std::function<void(YMRVideoPlayer&)>;
  const std::vector<std::pair<const char*, Act>> acts{
      {"start", [](YMRVideoPlayer& player) { player.start(); }},
      {"no schedule", [](YMRVideoPlayer& player) { player.setAdSchedule(nullptr); }},
      {"the same schedule", [](YMRVideoPlayer& player) { player.setAdSchedule(player.adSchedule()); }},
      {"another one", [](YMRVideoPlayer& player) { player.setAdSchedule(std::make_shared<YMRAdSchedule>()); }},
      {"a pause of the ad", [](YMRVideoPlayer& player) { pauseAndPlay(player.ymrPlayer()->adPlayer()); }},
  };
  for (const auto& [name, act] : acts) {
    SCOPED_TRACE(name);
    forEachCallback([&name = name, &act = act](const std::string& callback, Story& story) {
      story.inside(callback, [&] { act(*story.player); });
      story.run();
      const bool plays = callback == "videoDidPlayFinished" && name == std::string("start");
      EXPECT_EQ(story.host.count("videoDidPlayFinished"), callback == "videoOnError" ? 0 : plays ? 2 : 1);
      EXPECT_EQ(story.host.count("playerDidDismiss"), 1);
      const char* last = callback == "videoOnError" ? "videoOnTime 14" : "videoOnTime 19";
      EXPECT_THAT(story.host.heard, Contains(last)) << "the programme is no longer followed";
    });
  }
}

TEST(Reentry, aRateThatIsChangedInsideItsOwnReportIsReportedToo) {
  BreakRig rig;
  rig.midRoll("mid", 3, BreakRig::pod({"a"}));
  const auto once = [&rig](const char* callback, std::function<void()> act) {
    rig.host.inside[callback] = [&rig, callback, act = std::move(act)] {
      rig.host.inside.erase(callback);
      act();
    };
  };
  once("videoOnPlay", [&] { rig.hub().vodPlayer()->pause(); });
  rig.begin();
  rig.loop.advance(1s);
  EXPECT_EQ(rig.host.heardOf({"videoOnPlay", "videoOnPause"}), (Lines{"videoOnPlay", "videoOnPause 0"}));
  once("videoOnPause", [&] { rig.hub().vodPlayer()->play(); });
  rig.hub().vodPlayer()->play();
  rig.loop.advance(1s);
  rig.hub().vodPlayer()->pause();
  EXPECT_EQ(rig.state(), "PlayingVideo");
  once("videoAdOnPause", [&] { rig.hub().adPlayer()->play(); });
  rig.runUntilHeard("videoAdOnTime 8 2");
  rig.hub().adPlayer()->pause();
  rig.runUntilHeard("videoDidPlayFinished");
  EXPECT_EQ(rig.tracked("a"), (Lines{"impression", "start", "creativeView", "pause", "resume", "firstQuartile",
                                     "midpoint", "thirdQuartile", "complete"}));
}

TEST(Reentry, aHostThatAnswersEachReportWithItsOppositeIsLeftAloneAtLast) {
  PlayerRig rig;
  rig.host.inside["videoOnPlay"] = [&] { rig.hub().vodPlayer()->pause(); };
  rig.host.inside["videoOnPause"] = [&] { rig.hub().vodPlayer()->play(); };
  rig.player->playWithMediaItem(PlayerRig::item(), 0);
  rig.loop.advance(1s);
  EXPECT_LT(rig.host.heard.size(), 50u);
}

TEST(Reentry, aSecondProgrammeInsideAnyCallbackPlaysToItsEnd) {
  forEachCallback([](const std::string& callback, Story& story) {
    const bool isTooLate = callback == "playerWillDismiss" || callback == "playerDidDismiss";
    story.inside(callback, [&] { story.player->playWithMediaItem(PlayerRig::item(second), 0); });
    story.run();
    EXPECT_EQ(story.media.logs(second).size(), isTooLate ? 0u : 1u);
    const bool isAfterTheFirst =
        callback == "videoDidPlayFinished" || callback == "videoAdOnError" || callback == "videoAdOnSkip";
    EXPECT_EQ(story.host.count("videoDidPlayFinished"), isAfterTheFirst ? 2 : 1);
    EXPECT_EQ(story.host.count("playerDidDismiss"), 1);
  });
}

TEST(Reentry, anotherDelegateInsideAnyCallbackHearsTheRestAndADestroyedOneIsNotMissed) {
  heardInPeace(false);
  forEachCallback([](const std::string& callback, Story& story) {
    const auto all = heardInPeace(callback == "videoOnError");
    RecordingHost successor;
    story.inside(callback, [&] {
      story.player->setDelegate(successor.delegate);
      story.host.delegate.reset();
    });
    story.run();
    EXPECT_THAT(story.heardAfterAct(), IsEmpty());
    auto together = story.host.heard;
    together.insert(together.end(), successor.heard.begin(), successor.heard.end());
    EXPECT_EQ(together, all);
  });
  forEachCallback([](const std::string& callback, Story& story) {
    story.inside(callback, [&] { story.host.delegate.reset(); });
    story.run();
    EXPECT_THAT(story.heardAfterAct(), IsEmpty());
    EXPECT_EQ(story.hub().vodPlayer(), nullptr);
  });
}

TEST(Reentry, whatAHostThrowsIsLoggedAndChangesNothing) {
  heardInPeace(false);
  forEachCallback([](const std::string& callback, Story& story) {
    const auto all = heardInPeace(callback == "videoOnError");
    const RecordedLog log(SKLogLevelError);
    story.inside(callback, [&] {
      if (callback.size() % 2) throw 42;
      throw std::runtime_error("the host is unwell");
    });
    story.run();
    EXPECT_EQ(story.host.heard, all);
    EXPECT_EQ(std::ranges::count_if(log.lines(), [](auto& line) { return line.find("threw") != line.npos; }), 1);
  });
}
