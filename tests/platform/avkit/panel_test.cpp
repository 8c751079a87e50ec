// The panel: what the host tells of the programme, and the captions menu.
#include "platform/uikit/UIImage.h"
#include "tests/platform/avkit/PlayerScreenTest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

std::vector<std::byte> bytesOf(std::string_view text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

std::vector<std::byte> redPNG() {
  const std::vector<std::uint32_t> red(640 * 360, 0xffff0000);
  const auto file = UIImagePNGRepresentation(*UIImage::imageWithPixels(640, 360, red));
  return bytesOf(std::string(file.begin(), file.end()));
}

Texts texts(const QStringList& list) {
  Texts all;
  for (const QString& text : list) all.push_back(text.toStdString());
  return all;
}

struct Choices final : AVPlayerViewControllerDelegate {
  Texts tags;  // "off" for nil
  std::function<void()> chosen;
  void playerViewController(const std::shared_ptr<AVPlayerViewController>& sender,
                            const std::shared_ptr<AVMediaSelectionOption>& option,
                            const std::shared_ptr<AVMediaSelectionGroup>& group) override {
    EXPECT_TRUE(sender && group);
    tags.push_back(option ? option->extendedLanguageTag().value_or("none") : "off");
    if (chosen) chosen();
  }
};

class PanelTest : public PlayerScreenTest {
 protected:
  void addSubtitles() {
    using Kind = MediaTrack::Kind;
    media.script(kURL).tracks = {{Kind::video, "v", "", ""},          {Kind::subtitle, "s1", "en-GB", "English"},
                                 {Kind::subtitle, "s2", "de", ""},    {Kind::closedCaption, "s3", "", "For the deaf"},
                                 {Kind::subtitle, "s4", "fr-CA", ""}, {Kind::subtitle, "s5", "qaa", ""}};
  }
  std::shared_ptr<AVMediaSelectionOption> selection() {
    return item->selectedMediaOptionInMediaSelectionGroup(group());
  }

  const std::shared_ptr<Choices> choices = std::make_shared<Choices>();
};

TEST_F(PanelTest, offersThePagesThatThereIsSomethingToShowFor) {
  const std::tuple<bool, bool, Texts> rows[] = {
      {false, false, {}}, {true, false, {"Info"}}, {false, true, {"Subtitles"}}, {true, true, {"Info", "Subtitles"}}};
  for (const auto& [hasInformation, hasSubtitles, expected] : rows) {
    media.script(kURL).tracks.resize(1);
    information.clear();
    if (hasInformation) information = {metadata(AVMetadataCommonKeyDescription, "Eleven days without a bird.")};
    if (hasSubtitles) addSubtitles();
    play();
    EXPECT_EQ(texts(panel().titles()), expected);
    press(UIPressTypeDownArrow);
    EXPECT_EQ(panel().isOpen(), !expected.empty());
    EXPECT_EQ(bar().isShown(), expected.empty()) << "the bar makes way for the panel";
    screen->setPlayer(nullptr);
  }
}

TEST_F(PanelTest, staysOpenUntilTheViewerGoesUpAndOut) {
  information = {metadata(AVMetadataCommonKeyTitle, "The Long Crossing")};
  addSubtitles();
  play();
  item->selectMediaOption(group()->options()[1], group());
  press(UIPressTypeDownArrow);
  loop.advance(1min);
  EXPECT_TRUE(panel().showsInfo());
  press(UIPressTypeRightArrow);
  EXPECT_FALSE(panel().showsInfo());
  press(UIPressTypeDownArrow);
  EXPECT_EQ(panel().row(), 2) << "the viewer enters the list at what is selected";
  press(UIPressTypeDownArrow, 9);
  EXPECT_EQ(panel().row(), 5) << "the last row is the end";
  press(UIPressTypePlayPause);
  EXPECT_EQ(player->rate(), 0) << "Play/Pause keeps its meaning";
  press(UIPressTypeUpArrow, 6);
  EXPECT_TRUE(panel().isOpen());
  press(UIPressTypeUpArrow);
  EXPECT_FALSE(screen->showsPlaybackControls());
  EXPECT_THAT(seeks(), IsEmpty()) << "arrows in the panel do not seek";
}

TEST_F(PanelTest, offersTheAllowedLanguagesByNameAndToSwitchOffWhatIsSelected) {
  using Languages = std::optional<Texts>;
  addSubtitles();
  play();
  const std::pair<Languages, Texts> rows[] = {
      {std::nullopt, {"Off", "English", "German", "For the deaf", "French (Canada)", "qaa"}},
      {Languages({"en-GB", "de"}), {"Off", "English", "German"}},
      {Languages({"EN"}), {"Off", "English"}},
      {Languages({"en-GB-scotland", "d", ""}), {}},
      {Languages(Texts()), {}}};
  for (const auto& [allowed, expected] : rows) {
    screen->setAllowedSubtitleOptionLanguages(allowed);
    EXPECT_EQ(texts(menu().names()), expected);
    EXPECT_EQ(panel().hasPages(), !expected.empty());
  }
  item->selectMediaOption(group()->options()[1], group());
  screen->setAllowedSubtitleOptionLanguages(Texts());
  EXPECT_THAT(texts(menu().names()), ElementsAre("Off"));
  EXPECT_EQ(menu().selected(), -1);
  press(UIPressTypeDownArrow, 2);
  press(UIPressTypeSelect);
  EXPECT_FALSE(selection());
}

TEST_F(PanelTest, choosingSelectsAndTellsTheDelegate) {
  addSubtitles();
  play();
  screen->setDelegate(choices);
  press(UIPressTypeDownArrow, 4);
  press(UIPressTypeSelect);
  EXPECT_EQ(selection(), group()->options()[1]);
  EXPECT_EQ(menu().selected(), 2);
  EXPECT_EQ(engine().log().legibleTrack, "s2");
  press(UIPressTypeUpArrow, 2);
  press(UIPressTypeSelect);
  EXPECT_FALSE(selection());
  EXPECT_THAT(choices->tags, ElementsAre("de", "off"));

  press(UIPressTypeDownArrow);
  auto tracks = media.script(kURL).tracks;
  tracks.resize(1);
  engine().setTracks(tracks);
  loop.runUntilIdle();
  press(UIPressTypeSelect);
  EXPECT_EQ(choices->tags.size(), 2u) << "an option that the item no longer has";
  choices->chosen = [&] { letGo(); };
  press(UIPressTypeUpArrow);
  press(UIPressTypeSelect);
  loop.advance(1s);
  EXPECT_FALSE(isPresented()) << "the delegate may end it all from inside its call";
}

TEST_F(PanelTest, showsTextAsItStandsAndTheArtwork) {
  information = {metadata(AVMetadataCommonKeyTitle, " <b>Bold</b>\n<img src='file:///etc/passwd'> "),
                 metadata(AVMetadataCommonKeyDescription, std::string(100000, 'x')),
                 metadata(AVMetadataCommonKeyArtwork, redPNG())};
  play();
  EXPECT_EQ(controls().info()->title(), "<b>Bold</b> <img src='file:///etc/passwd'>");
  EXPECT_LT(controls().info()->description().size(), 10000);
  press(UIPressTypeDownArrow);
  run(500ms);
  const QImage picture = snapshot();
  EXPECT_EQ(colorAt(picture, 120, 130), "ff0000");
  EXPECT_FALSE(inkOf(picture, QRect(260, 60, 340, 40), picture.pixel(610, 60)).isEmpty());

  for (const AVMetadataItem::Value& value :
       {AVMetadataItem::Value("no picture"), AVMetadataItem::Value(bytesOf("no"))}) {
    information = {metadata(AVMetadataCommonKeyArtwork, value)};
    play();
    EXPECT_FALSE(panel().hasPages());
  }
  item->setExternalMetadata({metadata(AVMetadataCommonKeyArtwork, redPNG())});
  for (const auto& next : {std::shared_ptr<AVPlayer>(), player, std::shared_ptr<AVPlayer>()}) screen->setPlayer(next);
  loop.advance(1s);
  EXPECT_TRUE(controls().info()->isEmpty()) << "artwork that comes too late";
}

}  // namespace
