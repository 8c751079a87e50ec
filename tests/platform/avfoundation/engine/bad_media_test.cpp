// What can't be played says so, soon and in words; what can be played in part is; and the next one plays.
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct Bad {
  std::string where;
  std::string domain;
  int code;
  std::string says;  // a part of the message
};

class BadMedia : public EngineTest, public testing::WithParamInterface<Bad> {
 protected:
  BadMedia() {
    server.on("/404.mp4", HTTPServer::Reply{.status = 404});
    server.on("/gone.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n404.mp4\n#EXT-X-ENDLIST\n",
              "application/vnd.apple.mpegurl");
    server.on("/empty.mp4", HTTPServer::Reply{.ranges = false});
    server.on("/ended.mp4", HTTPServer::Reply{.ranges = false, .chunked = true});
    server.on("/none.mp4", HTTPServer::Reply{.status = 416, .headers = {{"Content-Range", "bytes */0"}}});
    server.on("/picture.png", "\x89PNG\r\n\x1a\n" + std::string(100, ' '), "image/png");
  }
};

TEST_P(BadMedia, failsInWordsAndTheNextOnePlays) {
  const Bad& bad = GetParam();
  EXPECT_FALSE(open(bad.where));
  ASSERT_EQ(told.failures.size(), 1u);
  EXPECT_EQ(told.failures[0].domain, bad.domain) << told.failures[0].message;
  EXPECT_EQ(told.failures[0].code, bad.code) << told.failures[0].message;
  EXPECT_THAT(told.failures[0].message, HasSubstr(bad.says));
  EXPECT_EQ(told.failures[0].message.back(), '.');
  // It is at rest: whatever it is asked now, it answers.
  engine->setRate(1);
  EXPECT_EQ(seek(1), false);
  EXPECT_THAT(engine->bufferedRanges(), IsEmpty());
  engine->selectLegibleTrack("none");
  EXPECT_EQ(position(), 0);
  runFor(50ms);
  EXPECT_EQ(told.failures.size(), 1u);
  EXPECT_EQ(told.ended, 0);

  ASSERT_TRUE(open("half.mp4"));
  EXPECT_EQ(frames->lastNumber(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Engine, BadMedia,
    testing::Values(Bad{"nowhere.mp4", NSURLErrorDomain, NSURLErrorFileDoesNotExist, "nowhere.mp4 does not exist"},
                    Bad{"hls", NSURLErrorDomain, NSURLErrorFileIsDirectory, "hls is a folder"},
                    Bad{"zero.mp4", NSURLErrorDomain, NSURLErrorZeroByteResource, "zero.mp4 is empty"},
                    Bad{"@empty.mp4", NSURLErrorDomain, NSURLErrorZeroByteResource, "/empty.mp4 is empty"},
                    Bad{"@none.mp4", NSURLErrorDomain, NSURLErrorZeroByteResource, "/none.mp4 is empty"},
                    Bad{"@ended.mp4", NSURLErrorDomain, NSURLErrorZeroByteResource, "/ended.mp4 is empty"},
                    Bad{"english.srt", AVFoundationErrorDomain, AVErrorFileFormatNotRecognized, "english.srt"},
                    Bad{"@picture.png", AVFoundationErrorDomain, AVErrorFileFormatNotRecognized, "image/png"},
                    Bad{"headless.mp4", AVFoundationErrorDomain, AVErrorFileFailedToParse, "headless.mp4"},
                    Bad{"headonly.mp4", AVFoundationErrorDomain, AVErrorFileFailedToParse, "incomplete"},
                    Bad{"@404.mp4", NSURLErrorDomain, NSURLErrorFileDoesNotExist, "404"},
                    Bad{"@page.mp4", AVFoundationErrorDomain, AVErrorFileFormatNotRecognized, "page.mp4 is a web page"},
                    Bad{"@gone.m3u8", AVFoundationErrorDomain, AVErrorContentIsUnavailable, "404"},
                    Bad{"ftp://127.0.0.1/clip.mp4", NSURLErrorDomain, NSURLErrorUnsupportedURL, "ftp:"}),
    [](const auto& test) { return caseName(test.param.where); });

class DamagedMedia : public EngineTest {};

TEST_F(DamagedMedia, playsAsFarAsItGoesAndHasFailedWhenTheRestIsMissing) {
  for (const char* where : {"truncated.mp4", "@truncated.mp4", "corrupt.mp4", "@corrupt.mp4"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where));
    EXPECT_EQ(frames->lastNumber(), 0);
    const bool isWhole = std::string(where).ends_with("corrupt.mp4");
    if (isWhole) {
      ASSERT_EQ(seek(8.5), true);
    }
    engine->setRate(1);
    EXPECT_TRUE(runUntil([this] { return told.ended > 0 || !told.failures.empty(); }));
    EXPECT_EQ(told.ended, isWhole);
    EXPECT_EQ(told.failures.size(), isWhole ? 0u : 1u);
    EXPECT_GT(frames->lastNumber(), 10);
  }
  ASSERT_TRUE(open("truncated.mp4"));
  EXPECT_EQ(seek(8), false) << "there is nothing";
  EXPECT_TRUE(runUntil([this] { return !told.failures.empty(); }));
}

TEST_F(DamagedMedia, aConnectionThatIsLostForGoodWhileItOpensIsAnError) {
  std::size_t cut = 0;
  server.on("/lost.mp4", [&cut](const HTTPServer::Request& request) {
    auto reply = fileReply("/clip.mp4");
    reply.cutAfter = request.has_header("Range") ? 0 : cut;
    return reply;
  });
  for (cut = 15'000; cut <= 90'000; cut += 5'000) {
    SCOPED_TRACE(cut);
    open("@lost.mp4");
    ASSERT_TRUE(runUntil([this] { return !told.failures.empty(); }));
    EXPECT_EQ(told.failures[0].code, NSURLErrorNetworkConnectionLost);
  }
}

// An advertisement comes from strangers: only what its picker would have taken is opened, whatever it is called.
class AdvertisementGate : public EngineTest {};

TEST_F(AdvertisementGate, opensTheAcceptedContainersOverHTTPOnly) {
  for (const char* name : {"@clip.mp4", "@captions.mov", "@audio.m4a", "@fragmented.mp4"}) {
    EXPECT_TRUE(open(name, MediaPurpose::advertisement)) << name;
  }
  for (const char* name : {"clip.mkv", "clip.webm", "clip.ts", "hls/master.m3u8"}) {
    SCOPED_TRACE(name);
    // Neither the address nor the server's word decides.
    server.on("/ad.mp4", [name](const HTTPServer::Request&) {
      auto reply = fileReply(std::string("/") + name);
      reply.type = "video/mp4";
      return reply;
    });
    EXPECT_FALSE(open("@ad.mp4", MediaPurpose::advertisement));
    ASSERT_EQ(told.failures.size(), 1u);
    EXPECT_EQ(told.failures[0].code, AVErrorFileFormatNotRecognized) << told.failures[0].message;
    EXPECT_THAT(frames->numbers(), IsEmpty());
  }
  for (const auto& request : server.log()) EXPECT_THAT(request.path, Not(HasSubstr(".ts"))) << "a segment was fetched";
  EXPECT_FALSE(open("clip.mp4", MediaPurpose::advertisement));
  EXPECT_EQ(told.failures.at(0).code, NSURLErrorUnsupportedURL);
}

// It need not be silent to hold the programme for ever.
TEST_F(AdvertisementGate, givesUpAnAdThatTakesMuchLongerThanItIs) {
  MediaEngineSettings::shared().adOvertimeLimit = -9.7;
  ASSERT_TRUE(open("@clip.mp4", MediaPurpose::advertisement));
  runFor(400ms);
  EXPECT_THAT(told.failures, IsEmpty()) << "it waited for its viewer";
  engine->setRate(1);
  ASSERT_TRUE(runUntil([this] { return !told.failures.empty(); }));
  EXPECT_EQ(told.ended, 0);
  EXPECT_THAT(told.failures[0].message, HasSubstr("longer"));
}

}  // namespace
