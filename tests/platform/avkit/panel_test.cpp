// The panel: what the host tells of the programme, and the captions menu.
#include <QBuffer>
#include <cstring>

#include "tests/platform/avkit/PlayerScreenTest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::byte> pngOf(int width, int height, const QColor& color) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(color);
  QBuffer file;
  file.open(QIODevice::WriteOnly);
  image.save(&file, "PNG");
  std::vector<std::byte> bytes(static_cast<std::size_t>(file.data().size()));
  std::memcpy(bytes.data(), file.data().constData(), bytes.size());
  return bytes;
}

std::vector<std::string> texts(const QStringList& list) {
  std::vector<std::string> all;
  for (const QString& text : list) all.push_back(text.toStdString());
  return all;
}

struct Choices final : AVPlayerViewControllerDelegate {
  std::vector<std::string> tags;  // "off" for nil
  std::function<void()> chosen;
  void playerViewController(const std::shared_ptr<AVPlayerViewController>& sender,
                            const std::shared_ptr<AVMediaSelectionOption>& option,
                            const std::shared_ptr<AVMediaSelectionGroup>& group) override {
    EXPECT_TRUE(sender);
    EXPECT_TRUE(group);
    tags.push_back(option ? option->extendedLanguageTag().value_or("none") : "off");
    if (chosen) chosen();
  }
};

class PanelTest : public PlayerScreenTest {
 protected:
  void addSubtitles() {
    auto& script = media.script(kURL);
    script.tracks.push_back(track(MediaTrack::Kind::subtitle, "s1", "en-GB", "English"));
    script.tracks.push_back(track(MediaTrack::Kind::subtitle, "s2", "de", ""));
    script.tracks.push_back(track(MediaTrack::Kind::closedCaption, "s3", "", "For the deaf"));
  }
  void addInformation() {
    information = {metadata(AVMetadataCommonKeyTitle, "The Long Crossing"),
                   metadata(AVMetadataCommonKeyDescription, "Eleven days without a bird.")};
  }
  std::shared_ptr<AVMediaSelectionOption> selection() {
    const auto group = item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
    return group ? item->selectedMediaOptionInMediaSelectionGroup(group) : nullptr;
  }
};

TEST_F(PanelTest, offersThePagesThatThereIsSomethingToShowFor) {
  for (const auto& [hasInformation, hasSubtitles, expected] :
       std::vector<std::tuple<bool, bool, std::vector<std::string>>>{{false, false, {}},
                                                                     {true, false, {"Info"}},
                                                                     {false, true, {"Subtitles"}},
                                                                     {true, true, {"Info", "Subtitles"}}}) {
    media.script(kURL).tracks.resize(1);
    information.clear();
    if (hasInformation) addInformation();
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
  addInformation();
  addSubtitles();
  play();
  press(UIPressTypeDownArrow);
  loop.advance(1min);
  EXPECT_TRUE(panel().showsInfo());
  press(UIPressTypeRightArrow);
  EXPECT_FALSE(panel().showsInfo());
  press(UIPressTypeDownArrow, 9);
  EXPECT_EQ(panel().row(), 3) << "the last row is the end";
  press(UIPressTypePlayPause);
  EXPECT_EQ(player->rate(), 0) << "Play/Pause keeps its meaning";
  press(UIPressTypeUpArrow, 4);
  EXPECT_TRUE(panel().isOpen());
  press(UIPressTypeUpArrow);
  EXPECT_FALSE(screen->showsPlaybackControls());
  EXPECT_THAT(seeks(), IsEmpty()) << "arrows in the panel do not seek";
}

TEST_F(PanelTest, listsOffAndTheOptionsWithTheSelectedOneMarked) {
  addSubtitles();
  play();
  press(UIPressTypeDownArrow);
  EXPECT_THAT(texts(menu().names()), ElementsAre("Off", "English", "German", "For the deaf"));
  EXPECT_EQ(menu().selected(), 0);
  const auto group = item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
  item->selectMediaOption(group->options()[1], group);
  press(UIPressTypeUpArrow);
  press(UIPressTypeDownArrow, 2);
  EXPECT_EQ(menu().selected(), 2);
  EXPECT_EQ(panel().row(), 2) << "the viewer enters the list at what is selected";
}

TEST_F(PanelTest, callsOptionsWithoutANameByTheirLanguage) {
  for (const char* tag : {"en", "fr-CA", "zh-Hans", "qaa", "x"}) {
    media.script(kURL).tracks.push_back(track(MediaTrack::Kind::subtitle, tag, tag, ""));
  }
  play();
  EXPECT_THAT(texts(menu().names()),
              ElementsAre("Off", "English", "French (Canada)", "Chinese (Simplified Han)", "qaa", "x"));
}

TEST_F(PanelTest, offersTheAllowedLanguagesOnly) {
  using Languages = std::optional<std::vector<std::string>>;
  addSubtitles();
  play();
  for (const auto& [allowed, expected] : std::vector<std::pair<Languages, std::vector<std::string>>>{
           {std::nullopt, {"Off", "English", "German", "For the deaf"}},
           {Languages({"en-GB", "de"}), {"Off", "English", "German"}},
           {Languages({"EN"}), {"Off", "English"}},
           {Languages({"en-GB-scotland", "d"}), {}},
           {Languages({""}), {}},
           {Languages(std::vector<std::string>()), {}},
       }) {
    screen->setAllowedSubtitleOptionLanguages(allowed);
    EXPECT_EQ(screen->allowedSubtitleOptionLanguages(), allowed);
    EXPECT_EQ(texts(menu().names()), expected);
    EXPECT_EQ(panel().hasPages(), !expected.empty());
  }
}

TEST_F(PanelTest, whatIsSelectedCanBeSwitchedOffThoughNotAllowed) {
  addSubtitles();
  play();
  const auto group = item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
  item->selectMediaOption(group->options()[1], group);
  screen->setAllowedSubtitleOptionLanguages(std::vector<std::string>());
  EXPECT_THAT(texts(menu().names()), ElementsAre("Off"));
  EXPECT_EQ(menu().selected(), -1);
  press(UIPressTypeDownArrow, 2);
  press(UIPressTypeSelect);
  EXPECT_FALSE(selection());
}

TEST_F(PanelTest, choosingSelectsAndTellsTheDelegate) {
  addSubtitles();
  play();
  const auto choices = std::make_shared<Choices>();
  screen->setDelegate(choices);
  press(UIPressTypeDownArrow, 3);
  press(UIPressTypeSelect);
  ASSERT_TRUE(selection());
  EXPECT_EQ(selection()->extendedLanguageTag(), "en-GB");
  EXPECT_EQ(menu().selected(), 1);
  press(UIPressTypeDownArrow, 2);
  press(UIPressTypeSelect);
  EXPECT_EQ(engine().log().legibleTrack, "s3");
  press(UIPressTypeUpArrow, 3);
  press(UIPressTypeSelect);
  EXPECT_FALSE(selection());
  EXPECT_THAT(choices->tags, ElementsAre("en-GB", "none", "off"));
}

TEST_F(PanelTest, optionsThatTheItemNoLongerHasAreNotChosen) {
  addSubtitles();
  play();
  const auto choices = std::make_shared<Choices>();
  screen->setDelegate(choices);
  press(UIPressTypeDownArrow, 3);
  auto tracks = media.script(kURL).tracks;
  tracks.resize(1);
  engine().setTracks(tracks);
  loop.runUntilIdle();
  press(UIPressTypeSelect);
  EXPECT_FALSE(selection());
  EXPECT_THAT(choices->tags, IsEmpty());
}

TEST_F(PanelTest, theDelegateMayEndItAllFromInsideItsCall) {
  addSubtitles();
  play();
  const auto choices = std::make_shared<Choices>();
  screen->setDelegate(choices);
  choices->chosen = [&] {
    controller->dismissViewControllerAnimated(false);
    screen->setPlayer(nullptr);
    screen = std::make_shared<AVPlayerViewController>();
    player = nullptr;
  };
  press(UIPressTypeDownArrow, 3);
  press(UIPressTypeSelect);
  loop.advance(1s);
  EXPECT_FALSE(isPresented());
}

TEST_F(PanelTest, showsTextAsItStandsAndTheArtwork) {
  information = {metadata(AVMetadataCommonKeyTitle, " <b>Bold</b>\n<img src='file:///etc/passwd'> "),
                 metadata(AVMetadataCommonKeyDescription, std::string(100000, 'x')),
                 metadata(AVMetadataCommonKeyArtwork, pngOf(640, 360, QColor("#ff0000")))};
  play();
  InfoModel& info = *controls().info();
  EXPECT_EQ(info.title(), "<b>Bold</b> <img src='file:///etc/passwd'>");
  EXPECT_LT(info.description().size(), 10000);
  press(UIPressTypeDownArrow);
  run(500ms);
  const QImage picture = snapshot();
  EXPECT_EQ(colorAt(picture, 120, 130), "ff0000");
  const QRect titleArea(260, 60, 340, 40);
  EXPECT_FALSE(inkOf(picture, titleArea, picture.pixel(610, 60)).isEmpty());
}

TEST_F(PanelTest, ignoresArtworkThatIsNoPicture) {
  struct Case {
    const char* name;
    AVMetadataItem::Value value;
  };
  auto cut = pngOf(640, 360, Qt::red);
  cut.resize(20);
  std::vector<std::byte> page(64);
  std::memcpy(page.data(), "<html><img src='http://example.com/a.png'></html>", 50);
  for (const Case& row : {Case{"text", std::string("no picture")}, Case{"nothing", {}},
                          Case{"empty", std::vector<std::byte>()}, Case{"a page", page}, Case{"cut short", cut}}) {
    information = {metadata(AVMetadataCommonKeyArtwork, row.value)};
    play();
    EXPECT_FALSE(controls().info()->hasArtwork()) << row.name;
    EXPECT_FALSE(panel().hasPages()) << row.name;
  }
}

TEST_F(PanelTest, artworkThatIsDecodedTooLateIsNotShown) {
  information = {metadata(AVMetadataCommonKeyArtwork, pngOf(64, 36, Qt::red))};
  item = AVPlayerItem::playerItemWithURL(NSURL::URLWithString(kURL));
  item->setExternalMetadata(information);
  player = AVPlayer::playerWithPlayerItem(item);
  screen->setPlayer(player);
  screen->setPlayer(nullptr);
  loop.advance(1s);
  EXPECT_FALSE(controls().info()->hasArtwork());
  EXPECT_TRUE(controls().info()->isEmpty());
}

}  // namespace
