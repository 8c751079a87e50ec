// What is read out of playlists and texts, and what is refused.
#include <gmock/gmock.h>

#include "platform/avfoundation/hls/HLSPlaylist.h"
#include "platform/avfoundation/segments/SegmentBegin.h"
#include "platform/avfoundation/segments/WebVTT.h"

namespace {

using testing::HasSubstr;

constexpr std::int64_t second = 1'000'000'000;

HLSMediaPlaylist list(const std::string& text) {
  const auto read = readHLSPlaylist("#EXTM3U\n#EXT-X-TARGETDURATION:6\n" + text);
  const auto* found = std::get_if<HLSMediaPlaylist>(&read);
  EXPECT_TRUE(found) << std::get<HLSFault>(read).reason;
  return found ? *found : HLSMediaPlaylist();
}

std::string faultOf(const std::string& text) {
  const auto read = readHLSPlaylist(text);
  const auto* fault = std::get_if<HLSFault>(&read);
  return fault ? fault->reason : "none";
}

TEST(Playlist, tellsSegmentsWithTheirRangesKeysMapsGapsAndBreaks) {
  const auto read = list(
      "#EXT-X-MEDIA-SEQUENCE:7\r\n#EXT-X-DISCONTINUITY-SEQUENCE:3\r\n"
      "#EXT-X-KEY:METHOD=AES-128,URI=\"k, 1\",IV=0x0A\n#EXT-X-MAP:URI=\"i.mp4\",BYTERANGE=\"700@0\"\n"
      "#EXTINF:5.005, a title\n#EXT-X-BYTERANGE:1000@700\na.mp4\n#EXTINF:5,\n#EXT-X-BYTERANGE:500\na.mp4\n"
      "#EXT-X-DISCONTINUITY\n#EXT-X-KEY:METHOD=NONE\n#EXT-X-UNKNOWN:x\n#EXT-X-GAP\n#EXTINF:7\n b c.mp4 "
      "\n#EXT-X-ENDLIST");
  ASSERT_EQ(read.segments.size(), 3u);
  EXPECT_EQ(read.firstSequence, 7u);
  EXPECT_EQ(read.targetDuration, 7 * second) << "what is longer than it was said to be";
  EXPECT_TRUE(read.hasEnded);
  EXPECT_EQ(read.segments[0].duration, 5'005'000'000);
  EXPECT_EQ(read.segments[1].range->first, 1700u);
  EXPECT_EQ(read.keys[*read.segments[1].key].uri, "k, 1");
  EXPECT_EQ(read.keys[0].iv->at(15), 10);
  EXPECT_EQ(read.maps[*read.segments[0].map].range->length, 700u);
  EXPECT_EQ(read.segments[1].discontinuity, 3u);
  EXPECT_EQ(read.segments[2].discontinuity, 4u);
  EXPECT_FALSE(read.segments[2].key);
  EXPECT_TRUE(read.segments[2].isGap);
  EXPECT_EQ(read.segments[2].uri, "b c.mp4");
}

TEST(Playlist, tellsVariantsAndTheRenditionsThatCanBeUsed) {
  const auto read = readHLSPlaylist(
      "\xEF\xBB\xBF#EXTM3U\n#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"x\",LANGUAGE=\"en\",DEFAULT=YES,URI=\"en."
      "m3u8\"\n"
      "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"t\",NAME=\"no "
      "address\"\n#EXT-X-MEDIA:TYPE=CLOSED-CAPTIONS,GROUP-ID=\"c\"\n"
      "#EXT-X-STREAM-INF:BANDWIDTH=400000,CODECS=\"avc1,mp4a\",RESOLUTION=320x180,AUDIO=\"a\"\nlow.m3u8\n"
      "#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=1,URI=\"i.m3u8\"\n#EXT-X-STREAM-INF:BANDWIDTH=x\n\nhigh.m3u8\n");
  const auto& master = std::get<HLSMasterPlaylist>(read);
  ASSERT_EQ(master.variants.size(), 2u);
  EXPECT_EQ(master.variants[0].height, 180);
  EXPECT_EQ(master.variants[0].audioGroup, "a");
  EXPECT_EQ(master.variants[1].uri, "high.m3u8");
  ASSERT_EQ(master.renditions.size(), 1u);
  EXPECT_TRUE(master.renditions[0].isDefault);
}

TEST(Playlist, refusesWhatIsNoneIsProtectedOrHasNoBound) {
  const std::string start = "#EXTM3U\n#EXT-X-TARGETDURATION:6\n";
  EXPECT_THAT(faultOf("<html>"), HasSubstr("no playlist"));
  EXPECT_THAT(faultOf("#EXTM3U\nlow.m3u8"), HasSubstr("no length"));
  EXPECT_THAT(faultOf(start + "#EXT-X-ENDLIST"), HasSubstr("no segments"));
  EXPECT_THAT(faultOf(start + "#EXTINF:6,\n" + std::string(50'000, 'a')), HasSubstr("too long"));
  EXPECT_THAT(faultOf(std::string(50'000'000, 'a')), HasSubstr("too long"));
  EXPECT_THAT(faultOf(start + "#EXTINF:nan,\na.ts"), HasSubstr("no length"));
  std::string many = start;
  for (int i = 0; i < 120'000; ++i) many += "#EXTINF:2,\na\n";
  EXPECT_THAT(faultOf(many), HasSubstr("too long"));
  const std::string drm = "#EXT-X-KEY:METHOD=SAMPLE-AES,KEYFORMAT=\"com.example\",URI=\"skd://x\"\n";
  EXPECT_THAT(faultOf(start + drm + "#EXTINF:6,\na.ts"), HasSubstr("SAMPLE-AES, DRM"));
  const std::string both = drm + "#EXT-X-KEY:METHOD=AES-128,URI=\"k\"\n";
  EXPECT_EQ(faultOf(start + both + "#EXTINF:6,\na.ts"), "none") << "another way is offered";
}

TEST(Texts, areReadCueByCueWithTheirTimeMap) {
  const auto read = readWebVTT(
      "WEBVTT - x\nX-TIMESTAMP-MAP=LOCAL:00:00:01.000,MPEGTS:900000\n\nNOTE 1 --> x\n\n7\n00:01.500 --> 00:02.250 "
      "line:0\n"
      "<i>one</i>\r\ntwo\r\n\r\n00:05.000 --> 00:04.000\nbackwards\n\n100:00:00.000-->100:00:01.000\nthree");
  ASSERT_TRUE(read && read->map);
  EXPECT_EQ(read->map->ticks, 900'000u);
  EXPECT_EQ(read->map->local, second);
  ASSERT_EQ(read->cues.size(), 2u);
  EXPECT_EQ(read->cues[0].start, 1'500'000'000);
  EXPECT_EQ(read->cues[0].text, "<i>one</i>\ntwo");
  EXPECT_EQ(read->cues[1].end, 360'001 * second);
  EXPECT_FALSE(readWebVTT("<html>"));
}

TEST(Segments, areKnownByTheirFirstBytes) {
  const auto looks = [](std::string_view text) { return SegmentBegin::looksLikeMedia(std::as_bytes(std::span(text))); };
  using namespace std::string_view_literals;
  for (const auto media : {"G@\0\x10"sv,
                           "\0\0\0\x18"
                           "ftypmp42"sv,
                           "\0\0\0\x18moof"sv, "ID3\4"sv, "\xFF\xF1\x50"sv, "WEBVTT"sv}) {
    EXPECT_TRUE(looks(media)) << media;
  }
  for (const auto other : {""sv, "<!DOCTYPE html>"sv, "#EXTM3U"sv, "{\"error\":404}"sv}) EXPECT_FALSE(looks(other));
}

}  // namespace
