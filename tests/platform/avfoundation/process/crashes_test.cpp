// Media processes that die, hang or talk nonsense under a host that plays.
//
// With YMR_KILLS=200 in the environment the first case kills so many.
#include <signal.h>
#include <sys/socket.h>

#include <filesystem>
#include <random>

#include "platform/avfoundation/process/FetchedSource.h"
#include "platform/avfoundation/process/MediaProcess.h"
#include "platform/avfoundation/process/ProcessEngine.h"
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

class Crashes : public EngineTest {
 protected:
  void make(const std::string& where, MediaPurpose purpose = MediaPurpose::programme) {
    EngineTest::make(where, purpose);
    auto owned = std::make_unique<ProcessEngine>(
        MediaSource{urlOf(where), purpose},
        [this] {
          std::string failure;
          started.push_back(MediaProcess::start(YMR_MEDIA_PROGRAM, failure));
          return started.back();
        },
        [source = MediaSource{urlOf(where), purpose}] { return fetcherOf(source); });
    MediaEngine::Events events;
    events.ready = [this] { ++told.ready; };
    events.failed = [this](NSError error) { told.failures.push_back(std::move(error)); };
    events.ended = [this] { ++told.ended; };
    owned->setEvents(std::move(events));
    owned->setFrameSink(frames);
    engine = std::move(owned);
  }
  void kill(int signal) const { ::kill(*started.back()->identifier(), signal); }
  static std::ptrdiff_t entries(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
  }
  bool haveAllGone() {
    return runUntil([this] { return std::ranges::none_of(started, [](const auto& one) { return one->isAlive(); }); });
  }

  std::vector<std::shared_ptr<MediaProcess>> started;
};

TEST_F(Crashes, theProgrammeComesBackWhereItWasAfterEveryKillAndNothingStays) {
  const char* wanted = std::getenv("YMR_KILLS");
  const int kills = wanted ? std::atoi(wanted) : 8;
  std::mt19937 random(7);
  const auto upTo = [&](int limit) { return std::uniform_int_distribution(0, limit)(random); };
  std::ptrdiff_t threads = 0, descriptors = 0;
  RunLoop::Duration longest{};
  for (int round = 0; round < kills; ++round) {
    const int signal = std::array{SIGSEGV, SIGKILL, SIGABRT, SIGSTOP}[static_cast<std::size_t>(round % 4)];
    SCOPED_TRACE(testing::Message() << "round " << round << ", signal " << signal);
    make(round % 2 ? "minute.mp4" : "@minute.mp4");
    engine->load(CMTimeMake(upTo(20), 1));
    const bool isEarly = upTo(3) == 0;
    ASSERT_TRUE(runUntil([&] { return isEarly ? !started.empty() : told.ready > 0; }));
    engine->setRate(upTo(3) > 0);
    if (upTo(3) == 0) engine->seek(CMTimeMake(25 + upTo(10), 1), {});
    runFor(std::chrono::milliseconds(upTo(400)));
    const double before = position();
    const auto shown = frames->numbers().size();
    kill(signal);
    const auto since = loop.now();
    ASSERT_TRUE(runUntil([&] { return started.size() > 1 && told.ready > 0 && engine->isLikelyToKeepUp(); }));
    longest = std::max(longest, loop.now() - since);
    EXPECT_NEAR(position(), before, 1 + (signal == SIGSTOP ? 2.5 : 0));
    ASSERT_TRUE(playTo(position() + 0.2));
    EXPECT_GT(frames->numbers().size(), shown);
    EXPECT_TRUE(told.failures.empty());
    EXPECT_EQ(told.ready, 1);
    frames->clear();
    engine.reset();
    ASSERT_TRUE(haveAllGone());
    started.clear();
    runFor(20ms);
    if (round == 3) threads = entries("/proc/self/task"), descriptors = entries("/proc/self/fd");
  }
  EXPECT_LE(entries("/proc/self/fd"), descriptors + 2);
  EXPECT_LE(entries("/proc/self/task"), threads + 2);
  RecordProperty("longest_ms", static_cast<int>(longest / 1ms));
  if (wanted) std::printf("%d kills, back after at most %d ms\n", kills, static_cast<int>(longest / 1ms));
}

TEST_F(Crashes, theNextProcessReadsWhatTheHostHasFetchedAndTheServerIsNotAskedAgain) {
  make("@clip.mp4");
  engine->load(kCMTimeZero);
  ASSERT_TRUE(runUntil([this] {
    const auto ranges = engine->bufferedRanges();
    return !ranges.empty() && CMTimeGetSeconds(CMTimeRangeGetEnd(ranges[0])) > 9;
  }));
  const auto requests = server.log().size();
  kill(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return started.size() > 1 && engine->isLikelyToKeepUp(); }));
  ASSERT_TRUE(playTo(1));
  EXPECT_EQ(server.log().size(), requests);
}

TEST_F(Crashes, aKillAtTheEndLeavesTheLastPictureAndTheNextSeekFindsANewProcess) {
  make("half.mp4");
  engine->load(kCMTimeZero);
  engine->setRate(1);
  ASSERT_TRUE(runUntil([this] { return told.ended > 0; }));
  const int last = frames->lastNumber();
  kill(SIGKILL);
  ASSERT_TRUE(haveAllGone());
  runFor(50ms);
  EXPECT_EQ(engine->position(), engine->duration());
  EXPECT_EQ(numberOf(frames->last()), last);
  EXPECT_EQ(seek(0.1), true);
  ASSERT_TRUE(runUntil([this] { return told.ended > 1; }));
  EXPECT_TRUE(told.failures.empty());
}

// Somebody who says random bytes, messages with random lies, all at once and without an end, and never does what it is
// told: it is ended, and so is what it was to play, whatever it was.
TEST_F(Crashes, aHostSurvivesAnybodyAtTheOtherEndOfItsSocket) {
  std::mt19937 random(3);
  for (int round = 0; round < 60; ++round) {
    std::vector<int> theirs;
    engine = std::make_unique<ProcessEngine>(MediaSource{urlOf("half.mp4")}, [&] {
      int ends[2];
      EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
      theirs.push_back(ends[1]);
      return MediaProcess::adopt(Descriptor(ends[0]));
    });
    MediaEngine::Events events;
    bool hasFailed = false;
    events.failed = [&](const NSError&) { hasFailed = true; };
    engine->setEvents(std::move(events));
    engine->setFrameSink(frames);
    engine->load(kCMTimeZero);
    wire::Picture picture;
    picture.width = picture.height = 16;
    picture.format = GST_VIDEO_FORMAT_BGRx;
    picture.strides[0] = 64;
    for (std::size_t one = 0; one < theirs.size() && !hasFailed; ++one) {
      const auto say = [&](std::vector<std::byte> bytes, int lies) {
        for (; lies > 0; --lies) bytes[4 + random() % (bytes.size() - 4)] = static_cast<std::byte>(random());
        send(theirs[one], bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
      };
      say(wire::encode(wire::ToHost(wire::Hello{})), 0);
      say(wire::encode(wire::ToHost(wire::AreaWanted{4096})), 0);
      say(wire::encode(wire::ToHost(wire::Facts{false, false, CMTimeMake(1, 1), false, {}})), round % 3);
      say(wire::encode(wire::ToHost(wire::Ready{})), 0);
      for (int message = 0; message < 20; ++message) say(wire::encode(wire::ToHost(picture)), round % 4);
      if (round % 5 == 0) say(std::vector<std::byte>(5 + random() % 5000), 20);
      runFor(5ms);
      close(theirs[one]);
      runUntil([&] { return hasFailed || theirs.size() > one + 1; });
    }
    EXPECT_TRUE(hasFailed);
  }
}

}  // namespace
