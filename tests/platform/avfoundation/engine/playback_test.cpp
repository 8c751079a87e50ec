// Running, pausing and ending: what is shown, in which order, and what position says meanwhile.
#include <atomic>
#include <future>

#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

class Playback : public EngineTest {};

// Nothing twice and nothing in the wrong order; a busy machine may drop pictures.
bool isRising(const std::vector<int>& numbers) {
  return std::ranges::is_sorted(numbers, std::less_equal{});
}

TEST_F(Playback, everyShortClipShowsItsPicturesInOrderEndsOnceInItsTimeAndHoldsTheLast) {
  for (const char* where :
       {"half.mp4", "@half.mp4", "oneframe.mp4", "@oneframe.mp4", "silent.mp4", "longsound.mp4", "slow.mp4"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where));
    const auto began = loop.now();
    engine->setRate(1);
    ASSERT_TRUE(runUntil([this] { return told.ended > 0; }))
        << "at " << position() << (engine->isBufferEmpty() ? " starving" : "");
    EXPECT_GE(std::chrono::duration<double>(loop.now() - began).count(), CMTimeGetSeconds(engine->duration()) - 0.05);
    const auto numbers = frames->numbers();
    EXPECT_EQ(numbers.front(), 0);
    EXPECT_GE(numbers.back(), std::string(where).ends_with("half.mp4") ? 10 : 0);
    EXPECT_TRUE(isRising(numbers)) << testing::PrintToString(numbers);
    runFor(300ms);
    EXPECT_EQ(told.ended, 1);
    EXPECT_EQ(frames->numbers(), numbers);
    EXPECT_EQ(engine->position(), engine->duration());
    EXPECT_FALSE(engine->isBufferEmpty());
  }
}

// Holds the fifth picture up until it is let go, as a machine does that stops for a while. The clock goes on.
class StuckSink final : public VideoFrameSink {
 public:
  void present(VideoFrame) override {
    if (++count_ == 5) free_.get_future().wait();
  }
  bool isStuck() const { return count_ == 5; }
  void letGo() { free_.set_value(); }

 private:
  std::atomic<int> count_ = 0;
  std::promise<void> free_;
};

TEST_F(Playback, positionStaysWithinTheMediaWhenThePicturesAreLate) {
  ASSERT_TRUE(open("half.mp4"));
  const auto sink = std::make_shared<StuckSink>();
  engine->setFrameSink(sink);
  engine->setRate(1);
  EXPECT_TRUE(runUntil([&] { return sink->isStuck(); }));
  runFor(1500ms);
  const double furthest = position();
  sink->letGo();
  ASSERT_TRUE(runUntil([this] { return told.ended > 0; }));
  EXPECT_EQ(furthest, CMTimeGetSeconds(engine->duration()));
  EXPECT_NEAR(furthest, 0.5, 0.1);
}

TEST_F(Playback, positionNeverGoesBackWhilePlayingAndStandsWhilePaused) {
  ASSERT_TRUE(open("clip.mp4"));
  engine->setRate(1);
  double previous = 0;
  EXPECT_TRUE(runUntil([&] {
    EXPECT_GE(position(), previous);
    return (previous = position()) > 0.8;
  }));
  engine->setRate(0);
  runFor(100ms);
  const double paused = position();
  const auto shown = frames->numbers().size();
  runFor(300ms);
  EXPECT_EQ(position(), paused);
  EXPECT_EQ(frames->numbers().size(), shown);
  EXPECT_NEAR(frames->lastNumber() / 25.0, paused, 0.3);
  ASSERT_TRUE(playTo(paused + 0.2));
  EXPECT_TRUE(isRising(frames->numbers()));
}

TEST_F(Playback, picturesSayHowTheyAreToBeShownAndOutliveTheEngine) {
  ASSERT_TRUE(open("rotated.mp4"));
  EXPECT_EQ(frames->last().rotation, 270);  // the file asks for a quarter turn the other way round
  EXPECT_FALSE(frames->last().mirrored);
  EXPECT_EQ(frames->last().width, 320);
  ASSERT_TRUE(open("anamorphic.mp4"));
  EXPECT_EQ(frames->last().rotation, 0);
  EXPECT_EQ(frames->last().pixelAspectNumerator, 64);
  EXPECT_EQ(frames->last().pixelAspectDenominator, 45);
  EXPECT_EQ(frames->last().time, kCMTimeZero);
  const VideoFrame frame = frames->last();
  engine.reset();
  runFor(100ms);
  EXPECT_EQ(numberOf(frame), 0);
}

// The media library does not like to be taken down while it opens, seeks or ends; the end of the test waits for all of
// them.
TEST_F(Playback, mayBeBrokenOffAtAnyMoment) {
  constexpr const char* clips[]{"half.mp4", "@half.mp4", "titled.mp4", "@clip.mkv", "captions.mov", "@oneframe.mp4"};
  for (int round = 0; round < 62; ++round) {
    SCOPED_TRACE(round);
    make(clips[round % std::size(clips)]);
    engine->load(kCMTimeZero);
    if (round % 4 > 0) {
      ASSERT_TRUE(runUntil([this] { return told.ready > 0; }));
      engine->seek(CMTimeMakeWithSeconds(CMTimeGetSeconds(engine->duration()) - 0.3, 1000), {});
    }
    if (round % 4 > 1) engine->setRate(1);
    if (round % 4 == 0 || round % 4 == 2) runFor(std::chrono::milliseconds(round));
    if (round % 4 == 3) {
      EXPECT_TRUE(runUntil([this] { return told.ended > 0; })) << "at " << position();
    }
  }
}

// Their memory is the decoder's own, which goes on reading and writing.
TEST_F(Playback, picturesThatAreHeldStayAsTheyAreWhateverIsDecodedMeanwhile) {
  struct KeepsAll final : VideoFrameSink {
    void present(VideoFrame frame) override {
      const std::lock_guard lock(mutex);
      frames.push_back(std::move(frame));
    }
    std::mutex mutex;
    std::vector<VideoFrame> frames;
  };
  ASSERT_TRUE(open("minute.mp4"));
  const auto sink = std::make_shared<KeepsAll>();
  engine->setFrameSink(sink);
  ASSERT_TRUE(playTo(2));
  engine.reset();
  const std::lock_guard lock(sink->mutex);
  EXPECT_GT(sink->frames.size(), 20u);
  for (const auto& frame : sink->frames)
    EXPECT_NEAR(numberOf(frame).value_or(-1), CMTimeGetSeconds(frame.time) * 25, 0.1);
}

TEST_F(Playback, goesOnWithTheNextProgrammeOfAStreamWhateverItsCodecs) {
  for (const char* where : {"programmes.ts", "@programmes.ts"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where));
    EXPECT_EQ(frames->last().width, 320);
    engine->setRate(1);
    ASSERT_TRUE(runUntil([this] { return told.ended > 0 || !told.failures.empty(); }));
    EXPECT_TRUE(told.failures.empty()) << told.failures[0].message;
    EXPECT_EQ(frames->last().width, 640);
    EXPECT_GE(frames->lastNumber(), 20);
  }
}

}  // namespace
