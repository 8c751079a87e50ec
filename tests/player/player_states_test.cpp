// What each state of a presentation makes of what its two players report.
#include <gmock/gmock.h>

#include <cmath>

#include "platform/foundation/NSException.h"
#include "player/states/YMRPlayerStateRules.h"
#include "tests/player/BreakRig.h"

TEST(PlayerStates, eachReportDoesInEachStateWhatTheTableSays) {
  using Act = std::function<void(BreakRig&)>;
  const auto programme = [](float rate) { return [=](BreakRig& rig) { rig.hub().vodPlayer()->setRate(rate); }; };
  const auto ad = [](float rate) {
    return [=](BreakRig& rig) {
      if (const auto player = rig.hub().adPlayer()) player->setRate(rate);
    };
  };
  const std::pair<const char*, Act> acts[] = {
      {"stop", programme(0)},
      {"start", programme(1)},
      {"scan", programme(2)},
      {"jump", [](BreakRig& rig) { rig.hub().vodPlayer()->seekToTime(CMTimeMake(5, 1)); }},
      {"ad stops", ad(0)},
      {"ad starts", ad(1)},
      {"starve",
       [](BreakRig& rig) {
         for (const char* name : {"film", "a"}) {
           if (auto* engine = rig.media.engine(BreakRig::film(name))) engine->setBuffering(true, 0);
         }
       }},
  };
  struct Row {
    std::string state, act;
    Lines heard;
    std::string next;
  };
  // Whatever the table does not say is nothing.
  const Row table[] = {
      {"PlayingVideo", "stop", {"videoOnPause 1", "videoOnPauseDuration 1 20"}, "PausedVideo"},
      {"PlayingVideo", "jump", {"videoDidSeekTo 5", "videoOnTime 5", "videoOnTimeDuration 5 20"}, "PlayingVideo"},
      {"PlayingVideo",
       "starve",
       {"videoDidBuffer", "videoOnBuffer",  // and what the hub does about it
        "videoOnPause 1", "videoOnPauseDuration 1 20", "videoOnPlay", "videoOnPlayDuration 1 20"},
       "PlayingVideo"},
      {"PausedVideo", "start", {"videoOnPlay", "videoOnPlayDuration 1 20"}, "PlayingVideo"},
      {"PausedVideo", "jump", {"videoDidSeekTo 5"}, "PausedVideo"},
      {"PlayingAd", "ad stops", {"videoAdOnPause 8 1"}, "PausedAd"},
      {"PlayingAd", "starve", {"videoAdOnBuffer 8 1"}, "PlayingAd"},
      {"PausedAd", "ad starts", {"videoAdOnPlay 8 1"}, "PlayingAd"},
  };
  for (const auto& [state, moment] : {std::pair<std::string, const char*>("LoadingAd", "videoAdOnRequest:Preroll"),
                                      {"PlayingAd", "videoAdOnTime 8 1"},
                                      {"PausedAd", "videoAdOnTime 8 1"},
                                      {"PlayingVideo", "videoOnTimeDuration 1 20"},
                                      {"PausedVideo", "videoOnTimeDuration 1 20"},
                                      {"CompletedVideo", "videoDidPlayFinished"}}) {
    for (const auto& [name, act] : acts) {
      SCOPED_TRACE(state + ", " + name);
      BreakRig rig;
      auto slow = BreakRig::pod({"a"});
      slow.delay = 1s;
      rig.preRoll("pre", slow);
      rig.begin();
      rig.runUntilHeard(moment);
      if (state == "LoadingAd") rig.loop.advance(500ms);
      if (state == "PausedAd") rig.hub().adPlayer()->pause();
      if (state == "PausedVideo") rig.hub().vodPlayer()->pause();
      rig.loop.runUntilIdle();
      ASSERT_EQ(rig.state(), state);
      rig.host.heard.clear();
      ASSERT_TRUE(rig.hub().vodPlayer());
      act(rig);
      rig.loop.runUntilIdle();
      const auto* row = std::find_if(std::begin(table), std::end(table), [&, name = name](const Row& each) {
        return each.state == state && each.act == name;
      });
      const bool isSaid = row != std::end(table);
      EXPECT_EQ(rig.host.heard, isSaid ? row->heard : Lines());
      EXPECT_EQ(rig.state(), isSaid ? row->next : state);
    }
  }
  YMRAbstractPlayerState forgotten;
  BreakRig rig;
  EXPECT_THROW(forgotten.log(), NSInternalInconsistencyException);
  EXPECT_THROW(forgotten.observeValueForKeyPath("rate", nullptr, {}, nullptr, rig.hub()),
               NSInternalInconsistencyException);
}

TEST(PlayerStates, aQuartileIsDueOnceItsShareIsExceededAndOneATickAtMost) {
  using Event = std::optional<std::uint32_t>;
  const double unknown = std::nan("");
  const struct {
    double second, duration;
    int reported;
    Event event;
  } rows[] = {
      {5, 20, 0, {}},  // exactly a quarter
      {5.002, 20, 0, 2}, {10.01, 20, 1, 3}, {15.01, 20, 2, 4}, {16, 20, 0, 2},      {16, 20, 3, {}},
      {16, 20, -1, {}},  {1, 0, 0, 2},      {0, 0, 0, {}},     {1, unknown, 0, {}}, {unknown, 20, 0, {}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(quartileEventDue(row.second, row.duration, row.reported), row.event) << row.second << "/" << row.duration;
  }
  BreakRig rig;
  rig.preRoll("pre", BreakRig::pod({"a"}));
  rig.begin();
  rig.runUntilHeard("videoAdOnPlayQuartile 2 8");
  EXPECT_THAT(rig.host.heardOf({"videoAdOnTime", "videoAdOnPlayQuartile"}),
              testing::ElementsAre("videoAdOnTime 8 0", "videoAdOnTime 8 1", "videoAdOnTime 8 2", "videoAdOnTime 8 3",
                                   "videoAdOnPlayQuartile 0 8", "videoAdOnTime 8 4", "videoAdOnTime 8 5",
                                   "videoAdOnPlayQuartile 1 8", "videoAdOnTime 8 6", "videoAdOnTime 8 7",
                                   "videoAdOnPlayQuartile 2 8"));
}
