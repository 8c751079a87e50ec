// The subtitle and caption renditions that the media carry.
#include <gmock/gmock.h>

#include "platform/avfoundation/AVMediaFormat.h"
#include "tests/player/PlayerRig.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

MediaTrack track(MediaTrack::Kind kind, const std::string& identifier, const std::string& tag) {
  MediaTrack result;
  result.kind = kind;
  result.identifier = identifier;
  result.languageTag = tag;
  return result;
}

class Captions : public testing::Test {
 protected:
  void play(const std::vector<MediaTrack>& legible) {
    auto& tracks = rig.media.script(PlayerRig::film).tracks;
    tracks.insert(tracks.end(), legible.begin(), legible.end());
    rig.playFilm();
    rig.loop.advance(1s);
  }
  void playWithFour() {
    play({track(MediaTrack::Kind::subtitle, "a", "en"), track(MediaTrack::Kind::closedCaption, "b", "de-CH"),
          track(MediaTrack::Kind::subtitle, "c", ""), track(MediaTrack::Kind::subtitle, "d", "en")});
  }
  std::optional<std::string> shown() { return rig.media.logs().back()->legibleTrack; }

  PlayerRig rig;
};

}  // namespace

TEST_F(Captions, areListedInTheirOrderWithDuplicatesAndWithoutThoseUntagged) {
  EXPECT_THAT(rig.player->getClosedCaptionLanguageList(), IsEmpty());
  playWithFour();
  EXPECT_THAT(rig.player->getClosedCaptionLanguageList(), ElementsAre("en", "de-CH", "en"));
}

TEST_F(Captions, areChosenByTheirExactTag) {
  playWithFour();
  EXPECT_EQ(rig.player->currentClosedCaption(), "");
  EXPECT_TRUE(rig.player->setClosedCaption("en"));
  EXPECT_EQ(shown(), "a");
  EXPECT_EQ(rig.player->currentClosedCaption(), "en");
  EXPECT_TRUE(rig.player->setClosedCaption("de-CH"));
  EXPECT_EQ(rig.player->currentClosedCaption(), "de-CH");
  for (const auto* tag : {"de", "DE-CH", "fr", ""}) {
    EXPECT_FALSE(rig.player->setClosedCaption(tag)) << tag;
    EXPECT_EQ(rig.player->currentClosedCaption(), "de-CH");
  }
}

TEST_F(Captions, ofMediaWithoutAnyAreNone) {
  EXPECT_FALSE(rig.player->setClosedCaption("en"));
  EXPECT_EQ(rig.player->currentClosedCaption(), "");
  play({});
  EXPECT_THAT(rig.player->getClosedCaptionLanguageList(), IsEmpty());
  EXPECT_FALSE(rig.player->setClosedCaption("en"));
  EXPECT_EQ(rig.player->currentClosedCaption(), "");
  rig.player->dismiss();
  EXPECT_FALSE(rig.player->setClosedCaption("en"));
}

TEST_F(Captions, theMenuCanBeLimitedToWhatTheMediaCarry) {
  playWithFour();
  EXPECT_EQ(rig.hub().avPlayerVC()->allowedSubtitleOptionLanguages(), std::nullopt);
  rig.player->disableAutoClosedCaptionOptions();
  EXPECT_EQ(rig.hub().avPlayerVC()->allowedSubtitleOptionLanguages(), (Lines{"en", "de-CH", "en"}));
}

TEST_F(Captions, onlyAViewersChoiceOfASubtitleIsReported) {
  playWithFour();
  const auto screen = rig.hub().avPlayerVC();
  const auto group = rig.hub().vodPlayer()->currentItem()->asset()->mediaSelectionGroupForMediaCharacteristic(
      AVMediaCharacteristicLegible);
  ASSERT_EQ(group->options().size(), 4u);
  rig.host.heard.clear();
  for (const auto& option : group->options()) screen->delegate()->playerViewController(screen, option, group);
  screen->delegate()->playerViewController(screen, nullptr, group);
  EXPECT_THAT(rig.host.heard, ElementsAre("videoClosedCaptionDidChange:en",
                                          "videoClosedCaptionDidChange:", "videoClosedCaptionDidChange:en"));
}
