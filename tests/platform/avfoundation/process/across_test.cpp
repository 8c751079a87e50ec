// What lies between two processes: pixels, walls, programs that are not there.
#include <fstream>

#include "platform/avfoundation/process/MediaProcesses.h"
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

class Across : public EngineTest {
 protected:
  static std::vector<std::uint8_t> pixelsOf(const VideoFrame& frame) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(frame.width * frame.height * 4));
    for (int row = 0; frame.decoded && row < frame.height; row += frame.decoded->rowsAtOnce()) {
      frame.decoded->draw(row, pixels.data() + row * frame.width * 4, frame.width * 4);
    }
    for (std::size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 0;
    return pixels;
  }
};

TEST_F(Across, everyPictureIsTheSameToThePixel) {
  for (const char* clip : {"clip.mp4", "clip.webm", "clip.ts", "anamorphic.mp4", "odd.mp4", "rotated.mp4"}) {
    SCOPED_TRACE(clip);
    for (const double place : {0.0, 0.4}) {
      ASSERT_TRUE(open(clip, MediaPurpose::programme, place));
      const VideoFrame across = frames->last();
      engine = MediaEngine::make({urlOf(clip)});
      const auto near = std::make_shared<NumberedFrames>();
      engine->setFrameSink(near);
      engine->load(CMTimeMakeWithSeconds(place, 1000));
      ASSERT_TRUE(runUntil([&] { return near->last().isValid(); }));
      const VideoFrame own = near->last();
      EXPECT_EQ(across.time, own.time);
      EXPECT_EQ(across.width, own.width);
      EXPECT_EQ(across.rotation, own.rotation);
      EXPECT_EQ(across.pixelAspectNumerator, own.pixelAspectNumerator);
      EXPECT_TRUE(pixelsOf(across) == pixelsOf(own));
    }
  }
}

TEST_F(Across, theHostsEngineTakesOverWhenTheProgramIsNotThereOrDoesNotRun) {
  for (const char* program : {"/no/such/program", "/bin/false"}) {
    SCOPED_TRACE(program);
    make("half.mp4");
    MediaProcesses::setProgram(program);
    engine->load(kCMTimeZero);
    EXPECT_TRUE(runUntil([this] { return told.ready > 0; }));
    EXPECT_FALSE(MediaProcesses::areAvailable());
    EXPECT_TRUE(playTo(0.3));
  }
}

// What a decoder that has been taken over would try: to leave something behind, to talk to somebody. The sound device
// is a pipeline of the test's own making, which does so in the host.
TEST_F(Across, theProcessOpensNoFileThatItWasNotGivenAndReachesNoNetwork) {
  const std::string left = testing::TempDir() + "left." + std::to_string(getpid());
  HTTPServer friends;
  const std::string url = friends.url("");
  enum Where { across, here };
  const auto attempt = [&](const std::string& device, Where where) {
    MediaEngineSettings::shared().soundDevice = device;
    const MediaSource source{urlOf("clip.mp4")};
    const auto taken = where == across ? engineUnderTest(source) : MediaEngine::make(source);
    bool isReady = false;
    MediaEngine::Events events;
    events.ready = [&] { isReady = true; };
    taken->setEvents(std::move(events));
    taken->load(kCMTimeZero);
    EXPECT_TRUE(runUntil([&] { return isReady; })) << device;
    runFor(200ms);
  };
  const std::string writing = "filesink location=" + left;
  const std::string talking =
      "fakesink audiotestsrc num-buffers=2 ! tcpclientsink host=127.0.0.1 port=" + url.substr(url.rfind(':') + 1);
  attempt(writing, across);
  EXPECT_FALSE(std::ifstream(left).good());
  attempt(talking, across);
  EXPECT_EQ(friends.connections(), 0);
  attempt(writing, here);
  EXPECT_TRUE(std::ifstream(left).good());
  attempt(talking, here);
  EXPECT_EQ(friends.connections(), 1);
  std::remove(left.c_str());
}

}  // namespace
