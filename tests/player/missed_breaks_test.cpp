// What becomes of the mid-rolls that a jump or the start position passes over, and which of them the bar marks.
#include <gmock/gmock.h>

#include "tests/player/BreakRig.h"

using testing::ElementsAre;

namespace {

// A programme of 100 s with breaks at 10, 30 (two), 50 and 80 s, named after their moments.
struct JumpRig : BreakRig {
  JumpRig(YMRMissedBreaks missed, double start) {
    media.script(PlayerRig::film).duration = 100;
    for (const std::string name : {"10", "30", "30b", "50", "80"}) {
      midRoll(name, std::stoul(name), {.body = pod({name}).body, .delay = 500ms});
    }
    schedule->setMissedBreaks(missed);
    player->setAdSchedule(schedule);
    player->playWithMediaItem(item(), static_cast<std::int64_t>(start));
    loop.advance(1s);
  }

  void seek(double second) { hub().vodPlayer()->seekToTime(CMTimeMakeWithSeconds(second, 1000)); }
  Lines begun() const {
    Lines names;
    for (const auto& event : tracked()) {
      if (event.ends_with("/start")) names.push_back(event.substr(0, event.find('/')));
    }
    return names;
  }
  std::vector<double> marks() {
    std::vector<double> marks;
    const auto item = hub().vodPlayer()->currentItem();
    for (const auto& range : item->interstitialTimeRanges()) marks.push_back(CMTimeGetSeconds(range.start));
    return marks;
  }
};

}  // namespace

TEST(MissedBreaks, areAllPlayedOrTheLastOrNoneAfterAStartOrASeek) {
  // Those played where the programme lands, and all when it is let play to its end.
  const std::tuple<YMRMissedBreaks, double, Lines, Lines> rows[]{
      {YMRMissedBreaksAll, 60, {"10", "30", "30b", "50"}, {"10", "30", "30b", "50", "80"}},
      {YMRMissedBreaksLast, 60, {"50"}, {"50", "80"}},
      {YMRMissedBreaksNone, 60, {}, {"80"}},
      {YMRMissedBreaksLast, 40, {"30", "30b"}, {"30", "30b", "50", "80"}},
      {YMRMissedBreaksLast, 50, {"50"}, {"50", "80"}},
      {YMRMissedBreaksNone, 30, {"30", "30b"}, {"30", "30b", "50", "80"}},
      {YMRMissedBreaksNone, 100, {}, {}}};
  for (const auto& [missed, place, atOnce, all] : rows) {
    for (const bool starts : {true, false}) {
      SCOPED_TRACE(std::to_string(missed) + " at " + std::to_string(place) + (starts ? ", start" : ", seek"));
      JumpRig rig(missed, starts ? place : 0);
      if (!starts) rig.seek(place);
      rig.loop.advance(std::chrono::seconds(9 * atOnce.size()));
      EXPECT_EQ(rig.begun(), atOnce);
      rig.runUntilHeard("videoDidPlayFinished");
      EXPECT_EQ(rig.begun(), all);
    }
  }
}

TEST(MissedBreaks, waitForTheViewerWhoGoesBackAndKeepTheirMarks) {
  JumpRig rig(YMRMissedBreaksNone, 0);
  rig.seek(60);
  rig.loop.advance(2s);
  EXPECT_THAT(rig.marks(), ElementsAre(10, 30, 50, 80));
  rig.seek(25);
  rig.loop.advance(24s);
  EXPECT_THAT(rig.begun(), ElementsAre("30", "30b"));
  EXPECT_THAT(rig.marks(), ElementsAre(10, 50, 80)) << "one that was shown has none";
  rig.hub().adSchedule()->setShowsBreakMarks(false);
  rig.loop.advance(1s);
  EXPECT_EQ(rig.marks(), std::vector<double>());
}

TEST(MissedBreaks, countFromASeekWhileAnotherBreakIsFetched) {
  for (const auto missed : {YMRMissedBreaksNone, YMRMissedBreaksLast}) {
    JumpRig rig(missed, 10);
    const auto isFetched = [](const auto& at) { return at && at->offset() == 30 && at->isPlayed(); };
    ASSERT_TRUE(rig.loop.advanceUntil([&] { return isFetched(rig.hub().currentAdBreak()); }, 60s));
    for (const double second : {40, 60}) rig.seek(second);
    rig.loop.advance(30s);
    EXPECT_EQ(rig.begun(),
              missed == YMRMissedBreaksNone ? Lines({"10", "30", "30b"}) : Lines({"10", "30", "30b", "50"}));
  }
}
