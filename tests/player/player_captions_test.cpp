// The subtitle and caption renditions that the media carry.
#include <gmock/gmock.h>

#include "platform/avfoundation/AVMediaFormat.h"
#include "tests/player/PlayerRig.h"

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Captions, areListedChosenByTheirExactTagAndReportedWhenTheViewerChooses) {
  PlayerRig rig;
  const auto expectNone = [&] {
    EXPECT_THAT(rig.player->getClosedCaptionLanguageList(), IsEmpty());
    EXPECT_FALSE(rig.player->setClosedCaption("en"));
    EXPECT_EQ(rig.player->currentClosedCaption(), "");
  };
  expectNone();
  using Kind = MediaTrack::Kind;
  rig.media.script(PlayerRig::film).tracks = {{Kind::video, "v", "", ""},
                                              {Kind::subtitle, "a", "en", ""},
                                              {Kind::closedCaption, "b", "de-CH", ""},
                                              {Kind::subtitle, "c", "", ""},
                                              {Kind::subtitle, "d", "en", ""}};
  rig.playFilm();
  rig.loop.advance(1s);
  EXPECT_THAT(rig.player->getClosedCaptionLanguageList(), ElementsAre("en", "de-CH", "en"));
  EXPECT_EQ(rig.player->currentClosedCaption(), "");
  EXPECT_TRUE(rig.player->setClosedCaption("en"));
  EXPECT_EQ(rig.engine().log().legibleTrack, "a");
  EXPECT_TRUE(rig.player->setClosedCaption("de-CH"));
  for (const auto* tag : {"de", "DE-CH", "fr", ""}) EXPECT_FALSE(rig.player->setClosedCaption(tag)) << tag;
  EXPECT_EQ(rig.player->currentClosedCaption(), "de-CH");

  const auto screen = rig.hub().avPlayerVC();
  EXPECT_EQ(screen->allowedSubtitleOptionLanguages(), std::nullopt);
  rig.player->disableAutoClosedCaptionOptions();
  EXPECT_EQ(screen->allowedSubtitleOptionLanguages(), (Lines{"en", "de-CH", "en"}));

  const auto group = rig.hub().vodPlayer()->currentItem()->asset()->mediaSelectionGroupForMediaCharacteristic(
      AVMediaCharacteristicLegible);
  rig.host.heard.clear();
  for (const auto& option : group->options()) screen->delegate()->playerViewController(screen, option, group);
  screen->delegate()->playerViewController(screen, nullptr, group);
  EXPECT_THAT(rig.host.heard, ElementsAre("videoClosedCaptionDidChange:en",
                                          "videoClosedCaptionDidChange:", "videoClosedCaptionDidChange:en"))
      << "of subtitles only";
  rig.player->dismiss();
  expectNone();
}
