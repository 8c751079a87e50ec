#include <limits>

#include "tests/platform/avfoundation/PlayerTest.h"

class Seek : public PlayerTest {
 protected:
  int flushes() { return media.logs().back()->flushes; }
};

TEST_F(Seek, jumpsThenTicksThenCompletes) {
  media.script(programme).seekDelay = 0.2;
  openReady();
  tickEvery(1);
  player->seekToTime(seconds(12.5), kCMTimeZero, kCMTimeZero, noted());
  EXPECT_EQ(position(), "12.5") << "the target, while under way";
  loop.advance(199ms);
  EXPECT_THAT(diary->take(), IsEmpty());
  loop.advance(1ms);
  EXPECT_THAT(diary->take(), ElementsAre("jumped to 12.5", "tick 12.5", "finished"));
}

TEST_F(Seek, toWhereThePausedPipelineStandsLeavesItAloneEvenIfItPlaysInTheSameTurn) {
  openReady();
  tickEvery(1);
  player->seekToTime(kCMTimeZero, noted());
  EXPECT_THAT(diary->lines(), IsEmpty());
  player->play();
  loop.advance(1s);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "jumped to 0", "tick 0", "finished", "tick 1"));
  EXPECT_EQ(flushes(), 0);
}

TEST_F(Seek, flushesUnlessPausedWithinHalfAFrame) {
  const struct {
    double frameRate, distance;
    bool playing;
    int flushes;
  } rows[] = {
      {25, 0, true, 1},        {25, 0.0199, false, 0}, {25, 0.021, false, 1},
      {25, -0.0199, false, 0}, {60, 0.008, false, 0},  {60, 0.0167, false, 1},
      {0, 0.0099, false, 0},   {0, 0.011, false, 1},   {5, 0.03, false, 1},
  };
  for (const auto& row : rows) {
    media.script(programme).tracks[0].nominalFrameRate = row.frameRate;
    openReady();
    player->play();
    loop.advance(5s);
    if (!row.playing) player->pause();
    player->seekToTime(seconds(5 + row.distance));
    loop.advance(1ms);
    EXPECT_EQ(flushes(), row.flushes) << row.frameRate << " frames/s, " << row.distance << " s";
  }
}

TEST_F(Seek, goesToAPlaceInsideTheItemHoweverItIsExpressedOrNowhere) {
  constexpr auto largest = std::numeric_limits<std::int64_t>::max();
  const struct {
    CMTime target;
    const char* place;  // null: it is not carried out
  } rows[] = {
      {CMTimeMake(630000, 90000), "7"},
      {CMTimeMake(30030, 30000), "1.001"},
      {seconds(-5), "0"},
      {seconds(600), "60"},
      {CMTimeMake(largest, 1), "60"},
      {kCMTimeInvalid, nullptr},
      {kCMTimeIndefinite, nullptr},
      {kCMTimePositiveInfinity, nullptr},
  };
  for (const auto& row : rows) {
    openReady();
    player->seekToTime(row.target, noted());
    EXPECT_THAT(diary->lines(), IsEmpty());
    loop.advance(1s);
    const auto lines = diary->take();
    for (const double sought : engine().log().seeks) EXPECT_EQ(text(seconds(sought)), row.place);
    if (row.place) {
      EXPECT_THAT(lines, ElementsAre(std::string("jumped to ") + row.place, "finished"));
    } else {
      EXPECT_THAT(lines, ElementsAre("not finished"));
    }
  }
}

TEST_F(Seek, ofSeveralOnlyTheLastJumpsAndTheOthersAreNotFinished) {
  media.script(programme).seekDelay = 0.5;
  const struct {
    std::vector<double> targets;
    int flushes;
  } rows[] = {{{10, 20, 30}, 1}, {{0, 10}, 1}, {{20, 0}, 1}, {{30, 30}, 1}, {{0, 0}, 0}};
  for (const auto& [targets, flushed] : rows) {
    openReady();
    for (const double target : targets) player->seekToTime(seconds(target), noted());
    std::vector<std::string> expected(targets.size() - 1, "not finished");
    if (flushed) {
      loop.advance(499ms);
      EXPECT_EQ(diary->lines(), expected) << "the last one waits for the engine";
    }
    expected.insert(expected.end(), {"jumped to " + text(seconds(targets.back())), "finished"});
    loop.advance(1ms);
    EXPECT_EQ(diary->take(), expected);
    EXPECT_EQ(flushes(), flushed);
  }
}

TEST_F(Seek, beforeReadyIsKeptUntilThenAndSoIsTheRate) {
  for (const double target : {20, 0}) {
    open();
    player->seekToTime(seconds(target), noted());
    player->play();
    EXPECT_EQ(position(), text(seconds(target)));
    loop.advance(49ms);
    EXPECT_THAT(diary->take(), ElementsAre("rate 1"));
    loop.advance(1ms);
    EXPECT_THAT(diary->take(), ElementsAre("duration 60", "status 1", "playbackLikelyToKeepUp yes",
                                           "jumped to " + text(seconds(target)), "finished"));
    EXPECT_EQ(flushes(), target > 0);
    loop.advance(1s);
    EXPECT_EQ(position(), text(seconds(target + 1)));
  }
}

TEST_F(Seek, isNotFinishedWhenTheItemFailsOrGoes) {
  media.script(programme).seekDelay = 1;
  openReady();
  player->seekToTime(seconds(10), noted());
  engine().fail({AVFoundationErrorDomain, AVErrorUnknown, ""});
  loop.advance(5s);
  EXPECT_THAT(diary->take(), ElementsAre("not finished", "status 2"));
  player->seekToTime(seconds(10), noted());
  loop.advance(5s);
  EXPECT_THAT(diary->take(), ElementsAre("not finished")) << "a failed item";

  openReady();
  player->seekToTime(seconds(10), noted());
  player->replaceCurrentItemWithPlayerItem(nullptr);
  player->seekToTime(seconds(10), noted());
  loop.advance(5s);
  EXPECT_THAT(diary->take(), ElementsAre("not finished", "not finished"));
}
