// External subtitle tracks: chosen, shown with the programme's time, restyled, and gone with the presentation.
#include <gmock/gmock.h>

#include <QPointer>

#include "platform/avfoundation/AVPlayer.h"
#include "subtitles/ASBPlayerSubtitling.h"
#include "tests/player/PlayerRig.h"

namespace {

using namespace std::string_literals;

constexpr auto first = "http://texts.example/1.srt";
constexpr auto second = "http://texts.example/2.srt";
constexpr auto gone = "http://texts.example/gone.srt";

std::string cues(const std::string& name) {
  return "1\n00:00:02,000 --> 00:00:04,000\n" + name + " two\n\n2\n00:00:04,000 --> 00:00:09,000\n" + name +
         " four\n\n";  // and one without text at the end
}

class Subtitles : public testing::Test {
 protected:
  Subtitles() {
    rig.net.loader->answer(first, cues("first"));
    rig.net.loader->answer(second, {.status = 200, .body = cues("second"), .delay = 300ms});
    rig.net.loader->answer(gone, {.status = 404, .body = "1\n00:00:00,000 --> 00:01:00,000\nNot found\n"});
    std::vector<YMRSubtitle> tracks;
    for (const auto* url : {first, second, gone}) {
      tracks.push_back(YMRSubtitle::subtitleWithUrl(*NSURL::URLWithString(url), "a name"));
    }
    config = YMRSubtitleConfig::initWithSubtitles(std::move(tracks));
    config->setLoadDidFail([this](const YMRSubtitle& track, const NSError& error) {
      failures.push_back(track.url().absoluteString() + " " + std::to_string(error.code));
    });
    config->setDidLoad([this](const YMRSubtitle& track, std::size_t count) {
      loads.push_back(track.url().absoluteString() + " " + std::to_string(count));
    });
    rig.player->setSubtitle(config);
  }

  ASBPlayerSubtitling& engine() { return *rig.hub().subtitling(); }
  UILabel& label() { return *engine().label(); }
  // What a viewer reads; empty for nothing.
  std::string shown() { return engine().containerView()->isHidden() ? "" : label().text().value_or(""); }
  // What is shown when the programme has come to that second.
  std::string shownAt(double seconds) {
    const auto there = [&] { return rig.hub().currentPosition() >= seconds; };
    EXPECT_TRUE(rig.loop.advanceUntil(there, 60s));
    rig.loop.advance(10ms);
    return shown();
  }

  PlayerRig rig;
  std::shared_ptr<YMRSubtitleConfig> config;
  std::vector<std::string> failures, loads;
};

}  // namespace

TEST_F(Subtitles, showTheFirstTrackWithTheProgrammesTimeAndSwitchAndHide) {
  rig.playFilm();
  EXPECT_EQ(shownAt(1), "");
  EXPECT_EQ(shownAt(2), "first two");
  EXPECT_EQ(shownAt(4), "first four") << "where one stops and the next starts, the later one";
  for (const int none : {-1, 3, 1 << 30}) rig.player->switchSubtitle(none);
  rig.player->switchSubtitle(2);
  EXPECT_EQ(shownAt(5), "first four");
  EXPECT_THAT(failures, testing::ElementsAre(testing::StartsWith(gone)));
  rig.player->switchSubtitle(1);
  EXPECT_EQ(shown(), "first four") << "until the next tick";
  EXPECT_EQ(shownAt(6), "second four");
  EXPECT_THAT(loads, testing::ElementsAre(first + " 2"s, second + " 2"s)) << "with how many have text";
  rig.player->toggleSubtitle(false);
  EXPECT_EQ(shown(), "");
  rig.hub().vodPlayer()->seekToTime(CMTimeMake(5, 2));
  rig.loop.advance(100ms);
  EXPECT_EQ(shown(), "");
  rig.player->toggleSubtitle(true);
  EXPECT_EQ(shown(), "second two") << "right after a seek";
  EXPECT_EQ(shownAt(10), "");
}

TEST_F(Subtitles, readElsewhereTakeEffectWhenTheyAreThereAndTheLastChoiceWins) {
  config->setLoadsInBackground(true);
  rig.playFilm();
  rig.loop.advance(50ms);
  rig.player->switchSubtitle(1);  // takes 300 ms
  rig.player->switchSubtitle(2);
  rig.player->switchSubtitle(0);
  EXPECT_EQ(shownAt(2), "first two");
  EXPECT_THAT(failures, testing::IsEmpty()) << "of a choice that was taken back";
  rig.player->switchSubtitle(1);
  EXPECT_EQ(shownAt(3), "second two");
  EXPECT_THAT(loads, testing::ElementsAre(first + " 2"s, first + " 2"s, second + " 2"s));
  rig.player->switchSubtitle(2);
  rig.player->dismiss();
  rig.loop.advance(1s);
  EXPECT_THAT(failures, testing::IsEmpty());
}

TEST_F(Subtitles, takeTheirLookFromTheConfigurationAndTellTheImporterThatOfTheStart) {
  config->setSubtitleFont({.familyName = "Noto Sans", .pointSize = 44});
  rig.player->setSubtitle(config);
  rig.playFilm();
  EXPECT_EQ(label().font().pointSize, 44);
  EXPECT_EQ(engine().cssStyle(), "color: #FFFFFF; font-size: 44.000000px; font-family: Noto Sans; text-align: center");
  config->setSubtitleFont(UIFont::systemFontOfSize(60));
  rig.player->setSubtitle(config);
  rig.player->setSubtitle(nullptr);
  rig.player->switchSubtitle(1);
  EXPECT_EQ(label().font().pointSize, 60);
  EXPECT_THAT(engine().cssStyle(), testing::HasSubstr("44.0"));
  EXPECT_EQ(shownAt(2), "first two") << "no configuration: nothing to switch to";
  EXPECT_EQ(ASBPlayerSubtitling::cssValueForColor({0.5, 1, 0.0019, 0}), "#80FF00");
}

TEST_F(Subtitles, leaveNothingBehindThemWhenThePlayerIsDismissedOrGoesFromInsideACallback) {
  rig.playFilm();
  EXPECT_EQ(shownAt(2), "first two");
  rig.player->dismiss();
  rig.loop.advance(100ms);
  EXPECT_EQ(rig.media.aliveEngines(), 0) << "though the engine of the subtitles keeps the player";
  EXPECT_NE(engine().player(), nullptr);
  const QPointer<UIView> container = engine().containerView().get();
  rig.player.reset();
  rig.loop.advance(100ms);
  EXPECT_TRUE(container.isNull());

  rig.player = std::make_unique<YMRVideoPlayer>();
  config->setLoadDidFail([this](const YMRSubtitle&, const NSError&) { rig.player.reset(); });
  config->setSubtitles({YMRSubtitle::subtitleWithUrl(*NSURL::URLWithString(gone), "")});
  rig.player->setSubtitle(config);
  rig.player->playWithMediaItem(PlayerRig::item(), 0);
  EXPECT_TRUE(rig.loop.advanceUntil([this] { return !rig.player; }, 5s));
  rig.loop.advance(1s);
  EXPECT_EQ(rig.media.aliveEngines(), 0);
}
