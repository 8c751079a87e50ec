#include "platform/avfoundation/AVMediaFormat.h"
#include "tests/platform/avfoundation/PlayerTest.h"

class Selection : public PlayerTest {
 protected:
  using Kind = MediaTrack::Kind;

  Selection() {
    media.script(programme).tracks = {{Kind::video, "v", "", ""},
                                      {Kind::audio, "a", "en", ""},
                                      {Kind::subtitle, "s1", "de", "Deutsch"},
                                      {Kind::closedCaption, "c1", "en-US", ""},
                                      {Kind::subtitle, "s2", "", ""},
                                      {Kind::closedCaption, "c2", "", ""}};
  }
  std::shared_ptr<AVMediaSelectionGroup> group() {
    return item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
  }
  void select(std::size_t index) { item->selectMediaOption(group()->options()[index], group()); }
};

TEST_F(Selection, offersTheLegibleTracksInTheMediasOrder) {
  open();
  EXPECT_EQ(group(), nullptr) << "not known yet";
  loop.advance(1s);
  ASSERT_TRUE(group());
  std::vector<std::string> seen;
  for (const auto& option : group()->options()) {
    seen.push_back(option->mediaType() + " " + option->extendedLanguageTag().value_or("nil") + " " +
                   option->displayName());
  }
  EXPECT_THAT(seen,
              ElementsAre("sbtl de Deutsch", "clcp en-US en-US", "sbtl nil Subtitles", "clcp nil Closed captions"));
  EXPECT_EQ(item->asset()->mediaSelectionGroupForMediaCharacteristic("audible"), nullptr);
}

TEST_F(Selection, isTheEnginesAlsoBeforeAPlayerTakesTheItemAndTellsTheTextThatIsDue) {
  const auto asset = std::make_shared<AVURLAsset>(NSURL::URLWithString(programme));
  asset->loadValuesAsynchronouslyForKeys({"playable"}, [] {});
  loop.advance(1s);
  item = AVPlayerItem::playerItemWithAsset(asset);
  EXPECT_EQ(item->selectedMediaOptionInMediaSelectionGroup(group()), nullptr);
  select(0);
  player = AVPlayer::playerWithPlayerItem(item);
  loop.advance(1ms);
  Diary::watch(diary, player, item);
  EXPECT_EQ(engine().log().legibleTrack, "s1");
  for (const auto& due : {std::optional(MediaCaption{"Guten Tag"}), {}, std::optional(MediaCaption{"Tschüss"})}) {
    engine().setCaption(due);
  }
  loop.runUntilIdle();
  EXPECT_THAT(diary->take(), ElementsAre("currentCaption Guten Tag", "currentCaption nil", "currentCaption Tschüss"));
  EXPECT_EQ(item->currentCaption(), (MediaCaption{"Tschüss"}));
  select(1);
  EXPECT_EQ(item->selectedMediaOptionInMediaSelectionGroup(group()), group()->options()[1]);
  const auto stranger = std::make_shared<AVMediaSelectionOption>("x", AVMediaTypeSubtitle, "fr", "");
  item->selectMediaOption(stranger, group());
  EXPECT_EQ(engine().log().legibleTrack, "c1") << "what is not the asset's own is ignored";
  item->selectMediaOption(nullptr, group());
  EXPECT_EQ(engine().log().legibleTrack, std::nullopt);
}

TEST_F(Selection, survivesAChangeOfTracks) {
  openReady();
  select(0);
  const auto before = group();
  auto tracks = engine().tracks();
  engine().setTracks(tracks);
  loop.runUntilIdle();
  EXPECT_EQ(group(), before) << "nothing to choose has changed";
  std::erase_if(tracks, [](const MediaTrack& track) { return track.identifier == "c1"; });
  engine().setTracks(tracks);
  loop.runUntilIdle();
  EXPECT_EQ(group()->options().size(), 3u);
  EXPECT_EQ(item->selectedMediaOptionInMediaSelectionGroup(group()), group()->options()[0]);
  engine().setTracks({});
  loop.runUntilIdle();
  EXPECT_EQ(group(), nullptr);
}
