// What a viewer hears, and what is left behind when the engine has gone.
#include <malloc.h>

#include <filesystem>
#include <fstream>

#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

constexpr int rate = 48000;

class Sound : public EngineTest {
 protected:
  // Plays so much of the clip into a file and returns what came.
  std::vector<std::int16_t> heard(bool isMuted) {
    const std::string file = testing::TempDir() + "heard." + std::to_string(getpid());
    MediaEngineSettings::shared().soundDevice =
        "audioconvert ! audioresample ! audio/x-raw,format=S16LE,rate=48000,channels=1 ! filesink sync=true location=" +
        file;
    make("clip.mp4");
    engine->setMuted(isMuted);
    engine->load(kCMTimeZero);
    playTo(1.2);
    engine.reset();
    runFor(200ms);
    std::vector<std::int16_t> samples(std::filesystem::file_size(file) / 2);
    std::ifstream(file).read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(samples.size() * 2));
    std::filesystem::remove(file);
    return samples;
  }
};

TEST_F(Sound, isTheClipsToneAndNothingWhileMuted) {
  const auto loud = heard(false), muted = heard(true);
  EXPECT_GT(loud.size(), rate * 0.8);
  EXPECT_GT(*std::ranges::max_element(loud), 1000);
  EXPECT_GT(muted.size(), rate * 0.8) << "time passes all the same";
  EXPECT_EQ(std::ranges::count(muted, 0), static_cast<std::ptrdiff_t>(muted.size()));
}

TEST_F(Sound, aDeviceThatFailsDoesNotStopThePictures) {
  for (const char* device :
       {"no such element", "filesink location=/no/such/place", "identity error-after=10 ! fakesink"}) {
    SCOPED_TRACE(device);
    MediaEngineSettings::shared().soundDevice = device;
    ASSERT_TRUE(open("clip.mp4"));
    EXPECT_TRUE(playTo(1));
  }
}

class Rounds : public EngineTest {
 protected:
  static std::ptrdiff_t entries(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
  }
  // One life, broken off somewhere else each time: loading, seeking, playing, at the end.
  void live(int round) {
    constexpr const char* clips[]{"half.mp4", "@half.mp4", "titled.mp4", "@clip.mkv", "captions.mov", "@oneframe.mp4"};
    make(clips[round % std::size(clips)]);
    engine->load(kCMTimeZero);
    if (round % 4 == 0) return runFor(std::chrono::milliseconds(round));
    ASSERT_TRUE(runUntil([this] { return told.ready > 0 || !told.failures.empty(); }));
    ASSERT_TRUE(told.failures.empty()) << told.failures[0].message;
    engine->seek(CMTimeMakeWithSeconds(CMTimeGetSeconds(engine->duration()) - 0.3, 1000), {});
    if (round % 4 == 1) return;
    engine->setRate(1);
    if (round % 4 == 2) return runFor(std::chrono::milliseconds(round));
    EXPECT_TRUE(runUntil([this] { return told.ended > 0; })) << "at " << position();
  }
};

TEST_F(Rounds, fiftyLivesLeaveNothingBehind) {
  std::ptrdiff_t threads = 0, files = 0;
  [[maybe_unused]] std::size_t memory = 0;
  for (int round = 0; round < 62; ++round) {
    SCOPED_TRACE(round);
    ASSERT_NO_FATAL_FAILURE(live(round));
    if (round != 12) continue;
    engine.reset();
    runFor(1s);
    threads = entries("/proc/self/task");
    files = entries("/proc/self/fd");
    memory = mallinfo2().uordblks;
  }
  engine.reset();
  // The server and the libraries keep some; a connection may still be closing.
  EXPECT_TRUE(runUntil([&] { return entries("/proc/self/task") <= threads + 3; }));
  EXPECT_TRUE(runUntil([&] { return entries("/proc/self/fd") <= files + 2; }));
#ifdef NDEBUG
  EXPECT_LT(mallinfo2().uordblks, memory + 2'000'000);
#endif
}

}  // namespace
