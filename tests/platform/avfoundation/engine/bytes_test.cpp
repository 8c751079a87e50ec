// Media whose bytes somebody else brings: any place, a bit at a time, late, or never.
#include "tests/platform/avfoundation/engine/EngineTest.h"
#include "tests/support/MemoryBytes.h"

namespace {

using testing::HasSubstr;
using testing::SizeIs;

class Bytes : public EngineTest {
 protected:
  bool openBytes(const std::string& name, double start = 0) {
    bytes = std::make_shared<MemoryBytes>(sample(name));
    return open("@" + name, MediaPurpose::programme, start, bytes);
  }
  double bufferedEnd() const {
    const auto ranges = engine->bufferedRanges();
    return ranges.empty() ? 0 : CMTimeGetSeconds(CMTimeRangeGetEnd(ranges[0]));
  }
  std::shared_ptr<MemoryBytes> bytes;
};

TEST_F(Bytes, goAnywhereInEveryContainer) {
  for (const char* name : {"clip.mp4", "indexlast.mp4", "fragmented.mp4", "clip.mkv", "clip.webm", "clip.ts"}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(openBytes(name, 2));
    // Its first picture begins late, and its index is coarse.
    const int tolerance = std::string(name).starts_with("frag") ? 4 : 1;
    EXPECT_NEAR(frames->lastNumber(), 50, tolerance);
    for (const int number : {80, 10, 85}) {
      ASSERT_EQ(seek(number / 25.0 + 0.001), true);
      EXPECT_NEAR(frames->lastNumber(), number, tolerance);
    }
    EXPECT_TRUE(playTo(position() + 0.2));
    EXPECT_TRUE(server.log().empty()) << "nothing but the bytes is read";
  }
}

TEST_F(Bytes, thatAreLateHoldThePlaybackAndAreToldAsBuffered) {
  bytes = std::make_shared<MemoryBytes>(sample("minute.mp4"));
  bytes->comeTo(bytes->size() / 6);
  ASSERT_TRUE(open("@minute.mp4", MediaPurpose::programme, 0, bytes));
  EXPECT_TRUE(runUntil([this] { return bytes->aheadLimit() > 0; }));
  const double before = bufferedEnd();
  bytes->comeTo(bytes->size() / 4);
  EXPECT_GT(bufferedEnd(), before + 3) << "before it is read";
  EXPECT_LT(bufferedEnd(), 20);
  ASSERT_EQ(seek(bufferedEnd() - 4), true);
  engine->setRate(1);
  ASSERT_TRUE(runUntil([this] { return engine->isBufferEmpty(); }));
  EXPECT_FALSE(engine->isLikelyToKeepUp());
  double held = -1;
  for (int look = 0; look < 10 && std::exchange(held, position()) != held; ++look) runFor(300ms);
  EXPECT_EQ(position(), held) << "it stands";
  const auto seen = frames->numbers().size();
  bytes->comeToEnd();
  EXPECT_TRUE(engine->isLikelyToKeepUp()) << "there is no more to wait for";
  EXPECT_TRUE(runUntil([&] { return position() > held + 1; }));
  const auto numbers = frames->numbers();
  EXPECT_TRUE(std::ranges::is_sorted(numbers.begin() + static_cast<long>(seen) - 1, numbers.end(), std::less_equal{}))
      << "no picture twice";
  EXPECT_THAT(told.failures, SizeIs(0));
}

TEST_F(Bytes, thatFailPlayAsFarAsTheyCameAndFailInTheReadersWords) {
  bytes = std::make_shared<MemoryBytes>(sample("minute.mp4"));
  bytes->comeTo(bytes->size() / 10);
  bytes->fail({NSURLErrorDomain, NSURLErrorNetworkConnectionLost, "It is gone."});
  open("@minute.mp4", MediaPurpose::programme, 0, bytes);
  engine->setRate(1);
  ASSERT_TRUE(runUntil([this] { return !told.failures.empty(); }));
  EXPECT_EQ(told.failures[0].message, "It is gone.");
}

TEST_F(Bytes, thatNeverAnswerEndWithTheEngineOrItsPatience) {
  const auto silent = [this] {
    bytes = std::make_shared<MemoryBytes>(sample("clip.mp4"));
    bytes->setAnswers(false);
    make("@clip.mp4", MediaPurpose::programme, bytes);
    engine->load(kCMTimeZero);
  };
  silent();
  runFor(20ms);
  engine.reset();
  EXPECT_TRUE(runUntil([this] { return bytes.use_count() == 1; })) << "whoever waited has gone";
  MediaEngineSettings::shared().firstFrameSilenceLimit = 0.2;
  silent();
  ASSERT_TRUE(runUntil([this] { return !told.failures.empty(); }));
  EXPECT_EQ(told.failures[0].code, AVErrorNoDataReceived);
}

}  // namespace
