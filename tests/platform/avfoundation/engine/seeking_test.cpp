// Going to a place: exactly there, once, and the last one asked for.
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

class Seeking : public EngineTest {};

TEST_F(Seeking, showsExactlyThePictureOfThePlaceAndLeavesOneThatStandsThereAlone) {
  std::vector<std::pair<CMTime, int>> ofClip, ofNTSC;
  for (const auto& [place, number] : {std::pair(3320, 83), {3340, 83}, {3359, 83}, {0, 0}, {9920, 248}, {40, 1}}) {
    ofClip.emplace_back(CMTimeMake(place, 1000), number);
  }
  // In ticks of the clip's own, no whole number of nanoseconds.
  for (const int number : {59, 1, 8, 15, 31, 58, 0}) ofNTSC.emplace_back(CMTimeMake(number * 1001, 30000), number);
  for (const char* where : {"clip.mp4", "@clip.mp4", "@indexlast.mp4", "ntsc.mp4", "clip.mkv", "clip.ts"}) {
    ASSERT_TRUE(open(where));
    // Matroska keeps milliseconds, and this file's first picture is late by one frame of sound.
    const int tolerance = std::string(where).ends_with("mkv") ? 1 : 0;
    for (const auto& [place, number] : std::string(where).starts_with("ntsc") ? ofNTSC : ofClip) {
      SCOPED_TRACE(testing::Message() << where << " at " << CMTimeGetSeconds(place));
      frames->clear();
      ASSERT_EQ(seek(place), true);
      EXPECT_EQ(frames->numbers().size(), 1u);
      EXPECT_NEAR(frames->lastNumber(), number, tolerance);
      EXPECT_NEAR(position(), CMTimeGetSeconds(place), 1e-9);
    }
    frames->clear();
    EXPECT_EQ(seek(engine->position()), true);
    EXPECT_TRUE(frames->numbers().empty()) << "no flush to where it stands";
  }
}

TEST_F(Seeking, theLastOfManyWinsAndEachCompletesOnce) {
  for (const char* where : {"clip.mp4", "@clip.mp4"}) {
    SCOPED_TRACE(where);
    make(where);
    constexpr int count = 30;
    std::vector<std::vector<bool>> completions(count);
    const auto ask = [&](int i) {
      engine->seek(CMTimeMake(i * 300, 1000), [&completions, i](bool finished) { completions[i].push_back(finished); });
    };
    for (int i = 0; i < 3; ++i) ask(i);  // before it is ready
    engine->load(kCMTimeZero);
    ASSERT_TRUE(runUntil([&completions] { return !completions[2].empty(); }));
    EXPECT_EQ(frames->numbers(), std::vector{15}) << "it is made ready there";
    engine->setRate(1);
    for (int i = 3; i < count; ++i) {
      ask(i);
      EXPECT_DOUBLE_EQ(position(), i * 0.3);
      if (i % 3 == 0) runFor(7ms);
    }
    ASSERT_TRUE(runUntil([&completions] { return !completions.back().empty(); }));
    runFor(50ms);
    for (int i = 0; i < count; ++i) EXPECT_EQ(completions[i].size(), 1u) << i;
    EXPECT_TRUE(completions[2][0] && completions.back()[0]);
    EXPECT_GE(position(), 8.7);
    EXPECT_GE(frames->lastNumber(), 217);
  }
}

TEST_F(Seeking, beginsAtItsStartAndShowsNoOtherPictureBefore) {
  for (const char* where :
       {"clip.mp4", "@clip.mp4", "clip.mkv", "@clip.mkv", "clip.ts", "fragmented.mp4", "@fragmented.mp4"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where, MediaPurpose::programme, 5.2));
    EXPECT_DOUBLE_EQ(position(), 5.2);
    EXPECT_EQ(seek(5.2), true);
    ASSERT_EQ(frames->numbers().size(), 1u) << "the first, and no flush to where it stands";
    EXPECT_NEAR(frames->lastNumber(), 130, 2);
    ASSERT_TRUE(playTo(5.6));
    EXPECT_TRUE(std::ranges::is_sorted(frames->numbers()));
  }
  make("clip.mp4");
  engine->setFrameSink(nullptr);
  engine->load(kCMTimeZero);
  ASSERT_TRUE(runUntil([this] { return told.ready > 0; }));
  engine->seek(CMTimeMake(5, 1), {});
  engine->setFrameSink(frames);
  ASSERT_TRUE(runUntil([this] { return !frames->numbers().empty(); }));
  EXPECT_EQ(frames->lastNumber(), 125) << "nor one of where it was before";
  ASSERT_TRUE(open("half.mp4", MediaPurpose::programme, 1000));
  EXPECT_EQ(engine->position(), engine->duration());
  engine->setRate(1);
  EXPECT_TRUE(runUntil([this] { return told.ended == 1; }));
}

TEST_F(Seeking, goesIntoTheLastFragmentThoughTheIndexEndsWhereItBegins) {
  for (const char* where : {"fragmented.mp4", "@fragmented.mp4"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where, MediaPurpose::programme, 9.5));
    EXPECT_DOUBLE_EQ(position(), 9.5);
    EXPECT_NEAR(frames->lastNumber(), 235, 2);
    ASSERT_TRUE(open(where));
    EXPECT_EQ(seek(9.5), true);
    EXPECT_DOUBLE_EQ(position(), 9.5);
  }
}

TEST_F(Seeking, isClampedToTheMedia) {
  for (const char* where : {"clip.mp4", "@clip.mp4", "longsound.mp4"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where));
    frames->clear();
    ASSERT_EQ(seek(1000), true);
    EXPECT_EQ(engine->position(), engine->duration());
    EXPECT_GE(frames->lastNumber(), std::string(where) == "longsound.mp4" ? 49 : 248);
    EXPECT_EQ(told.ended, 0);
    engine->setRate(1);
    EXPECT_TRUE(runUntil([this] { return told.ended == 1; }));
    EXPECT_EQ(engine->position(), engine->duration());
    EXPECT_EQ(seek(-5), true);
    EXPECT_LT(position(), 2);
    EXPECT_TRUE(playTo(position() + 0.3)) << "and it plays once more";
  }
}

TEST_F(Seeking, reachesTheLastPicturesWhereTheSoundGoesOn) {
  ASSERT_TRUE(open("longsound.mp4"));
  for (const int number : {49, 48, 47, 49}) {
    ASSERT_EQ(seek(number / 25.0), true);
    EXPECT_EQ(frames->lastNumber(), number);
  }
  ASSERT_EQ(seek(1.7), true);
  ASSERT_TRUE(playTo(2.1));
  EXPECT_EQ(frames->lastNumber(), 49) << "and they come in time when playing";
  engine->setRate(0);
  for (const double place : {2.0, 3.0, 2.5, 2.02}) {
    frames->clear();
    EXPECT_EQ(seek(place), true);
    EXPECT_EQ(frames->lastNumber(), 49) << "the last one where there is none";
    EXPECT_EQ(position(), place);
  }
}

}  // namespace
