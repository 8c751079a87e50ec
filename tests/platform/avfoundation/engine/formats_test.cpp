// What can be played, and what is known of it once it is ready.
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

struct Format {
  std::string where;
  double duration;
  double frameRate;
  int width, height;
  std::size_t sounds;
};

class EveryFormat : public EngineTest, public testing::WithParamInterface<Format> {};

TEST_P(EveryFormat, isReadyWithItsFirstPictureAndItsFacts) {
  const Format& format = GetParam();
  ASSERT_TRUE(open(format.where)) << (told.failures.empty() ? "no answer" : told.failures[0].message);
  // Fragments may still be on their way.
  EXPECT_TRUE(runUntil([&] { return std::abs(CMTimeGetSeconds(engine->duration()) - format.duration) < 0.1; }))
      << CMTimeGetSeconds(engine->duration());
  EXPECT_FALSE(engine->isLive());
  const auto tracks = engine->tracks();
  const auto count = [&tracks](MediaTrack::Kind kind) {
    return static_cast<std::size_t>(std::ranges::count(tracks, kind, &MediaTrack::kind));
  };
  EXPECT_EQ(count(MediaTrack::Kind::audio), format.sounds);
  EXPECT_EQ(count(MediaTrack::Kind::video), format.width > 0);
  EXPECT_EQ(frames->numbers(), std::vector<int>(format.width > 0, 0)) << "the first picture";
  EXPECT_EQ(frames->last().width, format.width);
  EXPECT_EQ(frames->last().height, format.height);
  if (format.width > 0) {
    EXPECT_NEAR(tracks[0].nominalFrameRate, format.frameRate, 0.01);
    EXPECT_EQ(tracks[0].width, format.width);
    EXPECT_EQ(tracks[0].height, format.height);
  }
  EXPECT_LT(position(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Engine, EveryFormat,
    testing::Values(Format{"clip.mp4", 10, 25, 640, 360, 1}, Format{"indexlast.mp4", 10, 25, 640, 360, 1},
                    // Its index names the start of the last fragment only.
                    Format{"fragmented.mp4", 9.08, 25, 640, 360, 1}, Format{"clip.mkv", 10, 25, 640, 360, 1},
                    Format{"clip.webm", 4, 25, 320, 180, 1}, Format{"clip.ts", 10, 25, 640, 360, 1},
                    Format{"ntsc.mp4", 2, 30000 / 1001.0, 320, 180, 1}, Format{"audio.m4a", 10, 0, 0, 0, 1},
                    Format{"video.mp4", 10, 25, 640, 360, 0}, Format{"odd.mp4", 0.5, 25, 319, 179, 0},
                    Format{"@clip.mp4", 10, 25, 640, 360, 1}, Format{"@indexlast.mp4", 10, 25, 640, 360, 1},
                    Format{"@fragmented.mp4", 9.08, 25, 640, 360, 1}, Format{"@clip.mkv", 10, 25, 640, 360, 1},
                    Format{"@clip.ts", 10, 25, 640, 360, 1}, Format{"@hls/low/index.m3u8", 20, 25, 320, 180, 1}),
    [](const auto& test) { return caseName(test.param.where); });

}  // namespace
