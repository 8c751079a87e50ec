// Playlists, live and not, servers that stall, and the texts that come along.
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

using testing::HasSubstr;

class Streaming : public EngineTest {};

TEST_F(Streaming, aPlaylistOfSeveralBitratesSettlesOnOneThatComesInTime) {
  ASSERT_TRUE(open("@hls/master.m3u8"));
  EXPECT_NEAR(CMTimeGetSeconds(engine->duration()), 20, 0.1);
  EXPECT_EQ(frames->lastNumber(), 0);
  ASSERT_EQ(seek(10), true);
  EXPECT_EQ(frames->lastNumber(), 250);
  engine->setRate(1);
  EXPECT_TRUE(runUntil([this] { return frames->last().width == 640; })) << "a quick server is asked for the better";
  ASSERT_EQ(seek(4), true);
  EXPECT_EQ(position() >= 4 && position() < 6, true) << position();
  EXPECT_TRUE(playTo(4.5)) << "and goes on from there";
}

TEST_F(Streaming, aLivePlaylistHasNoEndAndGoesOn) {
  const auto began = std::chrono::steady_clock::now();
  server.on("/hls/low/live.m3u8", [began](const HTTPServer::Request& request) {
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(request.at - began).count();
    const int first = static_cast<int>(std::min<std::int64_t>(age / 2, 4));
    HTTPServer::Reply reply{.type = "application/vnd.apple.mpegurl"};
    reply.body =
        "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
    for (int i = first; i < first + 6; ++i) reply.body += "#EXTINF:2.0,\n0" + std::to_string(i) + ".ts\n";
    return reply;
  });
  ASSERT_TRUE(open("@hls/low/live.m3u8"));
  EXPECT_TRUE(engine->isLive());
  EXPECT_TRUE(CMTIME_IS_INDEFINITE(engine->duration()));
  const int number = frames->lastNumber();
  EXPECT_GE(number, 0);
  engine->setRate(1);
  EXPECT_TRUE(runUntil([&] { return frames->lastNumber() > number + 60; }));
  EXPECT_GT(server.count("/hls/low/live.m3u8"), 1u);
  EXPECT_EQ(told.ended, 0);
}

TEST_F(Streaming, aServerThatSaysNothingMoreIsAnErrorBeforeTheFirstPictureAndInAProgramme) {
  MediaEngineSettings::shared().firstFrameSilenceLimit = 0.5;
  MediaEngineSettings::shared().programmeSilenceLimit = 1;
  server.on("/silent.mp4", HTTPServer::Reply{.silent = true});
  EXPECT_FALSE(open("@silent.mp4"));
  ASSERT_EQ(told.failures.size(), 1u);
  EXPECT_EQ(told.failures[0].code, AVErrorNoDataReceived);
  MediaEngineSettings::shared().firstFrameSilenceLimit = 10;
  auto reply = fileReply("/minute.mp4");
  reply.stallAfter = 200'000;
  server.on("/stall.mp4", reply);
  ASSERT_TRUE(open("@stall.mp4"));
  EXPECT_FALSE(playTo(60));
  ASSERT_EQ(told.failures.size(), 1u);
  EXPECT_EQ(told.failures[0].code, AVErrorNoDataReceived);
}

TEST_F(Streaming, whatCanNotGoElsewhereTellsItsLengthRefusesSeeksAndPlaysOn) {
  for (const char* name : {"clip.mp4", "indexlast.mp4", "clip.mkv", "fragmented.mp4"}) {
    const double tolerance = std::string(name).starts_with("frag") ? 10 : 0.1;  // their index comes last
    for (const bool chunked : {false, true}) {
      SCOPED_TRACE(std::string(name) + (chunked ? ", of unknown length" : ""));
      auto reply = fileReply(std::string("/") + name);
      reply.ranges = false;
      reply.chunked = chunked;
      server.on("/once", reply);
      make("@once");
      std::optional<bool> atStart;
      engine->seek(CMTimeMake(5, 1), [&atStart](bool finished) { atStart = finished; });
      engine->load(kCMTimeZero);
      runUntil([&atStart] { return atStart.has_value(); });
      EXPECT_EQ(atStart, false);
      EXPECT_TRUE(playTo(0.3));
      EXPECT_TRUE(runUntil([&] { return std::abs(CMTimeGetSeconds(engine->duration()) - 10) < tolerance; }));
      EXPECT_EQ(seek(6), false);
      EXPECT_TRUE(playTo(position() + 0.3));
      EXPECT_LT(position(), 5);
    }
  }
}

TEST_F(Streaming, textsComeWhenTheyAreDueAndTheMediaEnds) {
  for (const char* where : {"titled.mp4", "clip.mkv", "@clip.mkv", "@hls/master.m3u8"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where));
    std::vector<MediaTrack> texts;
    std::ranges::copy_if(engine->tracks(), std::back_inserter(texts),
                         [](const MediaTrack& track) { return track.kind == MediaTrack::Kind::subtitle; });
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts[0].languageTag, "en");
    EXPECT_EQ(texts[1].languageTag, "de");
    engine->selectLegibleTrack(texts[1].identifier);
    engine->setRate(1);
    ASSERT_TRUE(runUntil([this] { return !told.captions.empty(); }));
    ASSERT_TRUE(told.captions[0].has_value());
    EXPECT_THAT(told.captions[0]->text, HasSubstr("Deutsch"));
    EXPECT_GE(position(), 0.9) << "not before it is due";
    engine->selectLegibleTrack(std::nullopt);
    ASSERT_TRUE(runUntil([this] { return told.captions.size() == 2; }));
    EXPECT_FALSE(told.captions[1].has_value());
    ASSERT_EQ(seek(CMTimeGetSeconds(engine->duration()) - 0.3), true);
    EXPECT_TRUE(runUntil([this] { return told.ended > 0; }));
    EXPECT_EQ(told.captions.size(), 2u);
  }
}

}  // namespace
