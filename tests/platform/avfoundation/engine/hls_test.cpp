// Playlists of segments with something missing: what is lost by it, and what is not.
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

using testing::HasSubstr;

// Six seconds in two sizes with texts, of the sample of twenty.
class Segments : public EngineTest {
 protected:
  Segments() {
    for (const char* variant : {"low", "high"}) put(std::string("/hls/") + variant + "/six.m3u8", list(""));
    put("/hls/six.m3u8",
        "#EXTM3U\n#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"t\",NAME=\"x\",LANGUAGE=\"en\",URI=\"English/index.m3u8\"\n"
        "#EXT-X-STREAM-INF:BANDWIDTH=400000,RESOLUTION=320x180,SUBTITLES=\"t\"\nlow/six.m3u8\n"
        "#EXT-X-STREAM-INF:BANDWIDTH=900000,RESOLUTION=640x360,SUBTITLES=\"t\"\nhigh/six.m3u8\n");
  }
  void put(const std::string& path, const std::string& text) { server.on(path, text, "application/vnd.apple.mpegurl"); }
  static std::string list(const std::string& beforeTheSecond) {
    return "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n00.ts\n" + beforeTheSecond +
           "#EXTINF:2,\n01.ts\n#EXTINF:2,\n02.ts\n#EXT-X-ENDLIST\n";
  }
  void lose(const std::string& name, const HTTPServer::Reply& reply = {.status = 404}) {
    server.on("/hls/" + name, reply);
  }
  void loseOfBoth(const std::string& name, const HTTPServer::Reply& reply = {.status = 404}) {
    for (const char* variant : {"low/", "high/"}) lose(variant + name, reply);
  }
  // Opens, goes to `from`, selects the texts and plays to the end of it.
  void play(double from) {
    ASSERT_TRUE(open("@hls/six.m3u8", MediaPurpose::programme, from)) << told.failures.at(0).message;
    for (const MediaTrack& track : engine->tracks()) {
      if (track.kind == MediaTrack::Kind::subtitle) engine->selectLegibleTrack(track.identifier);
    }
    engine->setRate(1);
    ASSERT_TRUE(runUntil([this] { return told.ended > 0 || !told.failures.empty(); }));
  }
  void expectEnd() {
    EXPECT_EQ(told.ended, 1);
    EXPECT_TRUE(told.failures.empty()) << told.failures[0].message;
    EXPECT_EQ(frames->lastNumber(), 149);
    EXPECT_NEAR(position(), 6, 0.1);
  }
};

TEST_F(Segments, playFromEndToEndWithTheirTextsAndEveryPictureOnce) {
  play(0);
  expectEnd();
  auto numbers = frames->numbers();
  EXPECT_EQ(numbers.size(), 150u);
  EXPECT_TRUE(std::ranges::is_sorted(numbers, std::less_equal{}));
  ASSERT_FALSE(told.captions.empty());
  EXPECT_THAT(told.captions[0]->text, HasSubstr("English from 1"));
}

TEST_F(Segments, ofADeadVariantComeFromTheOther) {
  lose("high/six.m3u8", {.silent = true});
  play(4.5);
  expectEnd();
  put("/hls/high/six.m3u8", list(""));
  for (const char* name : {"high/00.ts", "high/01.ts", "high/02.ts"})
    lose(name, {.body = "<html>", .type = "text/html"});
  play(3);
  expectEnd();
}

TEST_F(Segments, loseTheirTextsAndNothingElse) {
  for (const HTTPServer::Reply& reply :
       {HTTPServer::Reply{.status = 404}, {.silent = true}, {.body = std::string(50'000'000, 'x')}}) {
    lose("English/index.m3u8", reply);
    play(4.5);
    expectEnd();
  }
  lose("English/index.m3u8", fileReply("/hls/English/index.m3u8"));
  lose("English/0.vtt", {.body = "<html>"});
  play(4.5);
  expectEnd();
}

TEST_F(Segments, thatAreMissingOrMarkedAreLeftOut) {
  loseOfBoth("00.ts");
  const auto began = std::chrono::steady_clock::now();
  play(0);
  EXPECT_LT(std::chrono::steady_clock::now() - began, 10s) << "six seconds, two of them missing";
  expectEnd();
  EXPECT_EQ(frames->numbers().front(), 50);
  loseOfBoth("00.ts", fileReply("/hls/low/00.ts"));
  for (const char* variant : {"low", "high"}) put(std::string("/hls/") + variant + "/six.m3u8", list("#EXT-X-GAP\n"));
  const auto asked = [this] { return server.count("/hls/low/01.ts") + server.count("/hls/high/01.ts"); };
  const auto before = asked();
  play(1);
  expectEnd();
  EXPECT_EQ(asked(), before) << "what is marked as missing";
}

TEST_F(Segments, whoseEndIsMissingAreAFilmThatHasFailed) {
  loseOfBoth("02.ts");
  play(3);
  ASSERT_EQ(told.failures.size(), 1u);
  EXPECT_EQ(told.failures[0].code, AVErrorContentIsUnavailable);
  EXPECT_EQ(told.ended, 0);
  EXPECT_GE(frames->lastNumber(), 98) << "what is there is played";
}

TEST_F(Segments, ofFragmentsWithSoundOfTheirOwnAndEncryptedOnesPlayToo) {
  for (const char* where : {"@split/master.m3u8", "@split/sealed.m3u8"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where));
    EXPECT_EQ(frames->lastNumber(), 0);
    EXPECT_EQ(engine->tracks().size(), 2u);
    ASSERT_EQ(seek(4.5), true);
    EXPECT_EQ(frames->lastNumber(), 112);
    engine->setRate(1);
    ASSERT_TRUE(runUntil([this] { return told.ended > 0 || !told.failures.empty(); }));
    EXPECT_EQ(told.ended, 1);
    EXPECT_EQ(frames->lastNumber(), 154);
  }
}

TEST_F(Segments, whoseSoundIsMissingAreSilent) {
  for (const HTTPServer::Reply& reply : {HTTPServer::Reply{.status = 404}, {.silent = true}}) {
    server.on("/split/1.m3u8", reply);
    ASSERT_TRUE(open("@split/master.m3u8", MediaPurpose::programme, 4));
    engine->setRate(1);
    ASSERT_TRUE(runUntil([this] { return told.ended > 0 || !told.failures.empty(); }));
    EXPECT_EQ(frames->lastNumber(), 154);
  }
}

TEST_F(Segments, ofAPlaylistOnTheDiskPlayTooButNoneFromElsewhere) {
  ASSERT_TRUE(open("hls/master.m3u8"));
  ASSERT_EQ(seek(17.5), true);
  EXPECT_EQ(frames->lastNumber(), 437);
  EXPECT_TRUE(playTo(18.2));
}

TEST_F(Segments, thatAreProtectedAreToldSo) {
  put("/hls/drm.m3u8", list("#EXT-X-KEY:METHOD=SAMPLE-AES,URI=\"skd://x\"\n"));
  EXPECT_FALSE(open("@hls/drm.m3u8"));
  ASSERT_EQ(told.failures.size(), 1u);
  EXPECT_THAT(told.failures[0].message, HasSubstr("SAMPLE-AES"));
}

}  // namespace
