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

TEST_F(Seek, toWhereThePausedPipelineStandsLeavesItAlone) {
  openReady();
  player->play();
  loop.advance(5s);
  player->pause();
  diary->take();
  player->seekToTime(seconds(5), noted());
  EXPECT_THAT(diary->lines(), IsEmpty());
  loop.runUntilIdle();
  EXPECT_THAT(diary->take(), ElementsAre("jumped to 5", "finished"));
  EXPECT_EQ(flushes(), 0);
}

TEST_F(Seek, handsBackTheProgrammeInTheSameTurn) {
  openReady();
  tickEvery(1);
  player->seekToTime(kCMTimeZero);
  player->play();
  loop.advance(1s);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "jumped to 0", "tick 0", "tick 1"));
  EXPECT_EQ(flushes(), 0);
  EXPECT_EQ(position(), "1");
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

TEST_F(Seek, ofManyInFastSuccessionOnlyTheLastJumps) {
  media.script(programme).seekDelay = 0.1;
  openReady();
  for (const double target : {10, 20, 30}) player->seekToTime(seconds(target), noted());
  loop.runUntilIdle();
  EXPECT_THAT(diary->take(), ElementsAre("not finished", "not finished"));
  loop.advance(1s);
  EXPECT_THAT(diary->take(), ElementsAre("jumped to 30", "finished"));
  EXPECT_EQ(flushes(), 1);
}

TEST_F(Seek, beforeReadyIsKeptUntilThen) {
  open();
  player->seekToTime(seconds(20), noted());
  EXPECT_EQ(position(), "20");
  loop.advance(49ms);
  EXPECT_THAT(diary->take(), IsEmpty());
  loop.advance(1ms);
  EXPECT_THAT(diary->take(),
              ElementsAre("duration 60", "status 1", "playbackLikelyToKeepUp yes", "jumped to 20", "finished"));
}

TEST_F(Seek, underWayIsNotFinishedWhenTheItemFailsOrIsReplaced) {
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
  loop.advance(5s);
  EXPECT_THAT(diary->take(), ElementsAre("not finished"));
}
