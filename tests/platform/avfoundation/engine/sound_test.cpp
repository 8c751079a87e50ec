// What a viewer hears.
#include <glib.h>

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

TEST_F(Sound, aDeviceThatFailsDoesNotStopThePicturesAndIsSaidInTheLogOnce) {
  std::vector<std::string> words;
  const auto note = [](const char*, GLogLevelFlags, const char* text, gpointer all) {
    static_cast<std::vector<std::string>*>(all)->emplace_back(text);
  };
  const guint handler = g_log_set_handler("ymr", G_LOG_LEVEL_WARNING, note, &words);
  for (const char* device : {"no such element", "no such element", "filesink location=/no/such/place",
                             "identity error-after=10 ! fakesink"}) {
    SCOPED_TRACE(device);
    MediaEngineSettings::shared().soundDevice = device;
    ASSERT_TRUE(open("clip.mp4"));
    EXPECT_TRUE(playTo(1));
  }
  EXPECT_THAT(words, testing::ElementsAre(testing::HasSubstr("such"), testing::HasSubstr("can't be opened")));
  g_log_remove_handler("ymr", handler);
}

}  // namespace
