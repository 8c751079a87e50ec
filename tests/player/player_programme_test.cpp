// A programme from the host's call to its ticks and its failure.
#include <gmock/gmock.h>

#include <cmath>

#include "platform/avfoundation/AVMetadataItem.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "tests/VAST/Parser/RecordedLog.h"
#include "tests/player/PlayerRig.h"

using testing::Contains;
using testing::ElementsAre;

namespace {

const UIImage& picture() {
  static const UIImage image = *UIImage::imageWithPixels(1, 1, {0xff336699});
  return image;
}

std::string pictureFile() {
  const auto png = UIImagePNGRepresentation(picture());
  return {png.begin(), png.end()};
}

// "title=…", "description=…", "artwork(<bytes>)", in the item's order.
Lines metadataOf(YMRVideoPlayerImpl& hub) {
  Lines lines;
  for (const auto& item : hub.vodPlayer()->currentItem()->externalMetadata()) {
    EXPECT_EQ(item.keySpace(), AVMetadataKeySpaceCommon);
    if (const auto* text = item.stringValue()) lines.push_back(item.key() + "=" + *text);
    if (const auto* data = item.dataValue()) lines.push_back(item.key() + "(" + std::to_string(data->size()) + ")");
  }
  return lines;
}

}  // namespace

TEST(Programme, startsIsReportedEverySecondAndAnswersForItsTime) {
  PlayerRig rig;
  EXPECT_EQ(rig.state(), "LoadingAd");
  EXPECT_TRUE(std::isnan(rig.player->currentPosition()));
  EXPECT_EQ(rig.player->videoDuration(), 0);
  rig.playFilm();
  rig.loop.advance(2500ms);
  EXPECT_EQ(rig.state(), "PlayingVideo");
  EXPECT_THAT(rig.host.heard, ElementsAre("videoOnPlay", "videoOnPlayDuration 0 60", "videoDidSeekTo 0",
                                          "videoOnTime 0", "videoOnTimeDuration 0 60", "videoOnTime 1",
                                          "videoOnTimeDuration 1 60", "videoOnTime 2", "videoOnTimeDuration 2 60"));
  EXPECT_NEAR(rig.player->currentPosition(), 2.5, 0.01);
  EXPECT_EQ(rig.player->videoDuration(), 60);
  EXPECT_EQ(rig.hub().adState(), YMRAdStatePostRoll);
  EXPECT_EQ(rig.media.logs().size(), 1u) << "the asset was opened more than once";
}

TEST(Programme, aStartPositionIsAppliedOnceWhereverItLies) {
  for (const auto& [start, jump] : {std::pair{0, 0.0}, {12, 12.0}, {-5, 0.0}}) {
    SCOPED_TRACE(start);
    PlayerRig rig;
    rig.media.script(PlayerRig::film).seekDelay = 0.3;
    rig.playFilm(start);
    EXPECT_EQ(rig.player->currentPosition(), jump);
    rig.loop.advance(3s);
    char place[64];
    std::snprintf(place, sizeof place, "videoOnPlayDuration %g 60", jump);
    EXPECT_EQ(rig.host.heard[1], place) << "it was made ready there";
    EXPECT_EQ(rig.engine().log().flushes, 0);
    rig.player->start();  // a second one changes nothing
    EXPECT_NEAR(rig.player->currentPosition(), jump + 3, 0.1);
    EXPECT_EQ(rig.host.count("videoDidSeekTo"), 1) << "one jump, whatever was asked for before";
    rig.hub().vodPlayer()->pause();
    rig.loop.advance(1s);
    rig.hub().vodPlayer()->play();
    rig.loop.advance(1s);
    EXPECT_EQ(rig.host.count("videoDidSeekTo"), 1);
    EXPECT_NEAR(rig.player->currentPosition(), jump + 4, 0.1);
    rig.hub().vodPlayer()->pause();
    rig.player->start();
    rig.loop.advance(1500ms);
    EXPECT_EQ(rig.host.heardOf({"videoDidSeekTo"}).back(), "videoDidSeekTo 0") << "a paused one begins again";
    EXPECT_EQ(rig.host.heard.back(), "videoOnTimeDuration 1 60");
  }
  PlayerRig rig;
  rig.playFilm(500);
  rig.loop.advance(1s);
  EXPECT_EQ(rig.host.count("videoDidPlayFinished"), 1);
  EXPECT_EQ(rig.state(), "CompletedVideo");
}

TEST(Programme, ownsItsStartPositionAloneAlsoWhenItWasLoadedBeforeOrFails) {
  PlayerRig rig;
  rig.playFilm();
  rig.hub().vodPlayer()->pause();
  const auto loaded = std::make_shared<AVURLAsset>(NSURL::URLWithString("http://media.example/second.mp4"));
  loaded->loadValuesAsynchronouslyForKeys({"playable"}, [] {});
  rig.loop.advance(1s);
  rig.host.heard.clear();
  rig.player->playWithMediaItem(PlayerRig::item(), loaded, 20);
  rig.hub().vodPlayer()->play();
  rig.loop.runUntilIdle();
  EXPECT_THAT(rig.host.heardOf({"videoDidSeekTo"}), ElementsAre("videoDidSeekTo 20"))
      << "the old one stays where it is";
  EXPECT_EQ(rig.media.engine("http://media.example/second.mp4")->log().flushes, 1);
  rig.media.script(PlayerRig::film).loadFailure = NSError{AVFoundationErrorDomain, AVErrorUnknown, ""};
  rig.player->playWithMediaItem(PlayerRig::item(), 30);
  rig.loop.advance(1s);
  EXPECT_EQ(rig.player->currentPosition(), 30) << "a host that keeps the place keeps this one";
}

TEST(Programme, tellsThePanelWhatTheHostSaysOfItAndArtworkThatFailsNeverHoldsItUpForLong) {
  struct Row {
    const char* address;
    ScriptedURLLoader::Answer answer;
    double begins;  // seconds after the call at which the programme plays
    bool hasArtwork;
  };
  const RecordedLog log;
  const std::string file = pictureFile(), gone = "http://media.example/gone.png";
  const std::vector<Row> table{
      {"http://media.example/a.png", {.body = file}, 0.05, true},
      {"http://media.example/slow.png", {.body = file, .delay = 1500ms}, 1.5, true},
      {"http://media.example/never.png", {.never = true}, 2.05, false},
      {gone.c_str(), {.status = 404, .body = file}, 0.05, false},
      {"http://media.example/page.png", {.body = "<html>Sorry</html>"}, 0.05, false},
      {"http://media.example/huge.png", {.body = std::string((8 << 20) + 1, 'x')}, 0.05, false},
      {"file:///srv/poster.png", {.body = file}, 0.05, true},
      {"poster.png", {.body = file}, 0.05, false},
      {"", {.body = file}, 0.05, false},
  };
  const std::string artwork = "artwork(" + std::to_string(file.size()) + ")";
  for (const auto& row : table) {
    for (const bool hasPicture : {false, true}) {
      SCOPED_TRACE(row.address);
      PlayerRig rig;
      rig.net.loader->answer(row.address, row.answer);
      const auto item = PlayerRig::item();
      item->setVideoDescription("Two goats cross a bridge.");
      item->setVideoTitle("Goats");
      item->setVideoThumbnailUrl(row.address);
      Lines told;
      item->setVideoThumbnailDidFail([&](const std::string& url, const NSError&) { told.push_back(url); });
      if (hasPicture) item->setVideoThumbnail(picture());
      const auto asked = rig.loop.now();
      rig.player->playWithMediaItem(item, 0);
      ASSERT_TRUE(rig.loop.advanceUntil([&] { return rig.host.count("videoOnPlay") > 0; }, 10s));
      const auto begins = std::chrono::duration<double>(rig.loop.now() - asked).count();
      EXPECT_NEAR(begins, hasPicture ? 0.05 : row.begins, 0.02);
      Lines expected{"title=Goats", "description=Two goats cross a bridge."};
      if (hasPicture || row.hasArtwork) expected.push_back(artwork);
      EXPECT_EQ(metadataOf(rig.hub()), expected);
      EXPECT_TRUE(rig.net.loader->asked().empty() || !hasPicture);
      rig.loop.advance(10s);
      const bool isLeftOut = !hasPicture && !row.hasArtwork && *row.address;
      EXPECT_EQ(told, isLeftOut ? Lines{row.address} : Lines{});
      EXPECT_EQ(rig.net.loader->inFlight(), 0);
      EXPECT_EQ(rig.state(), "PlayingVideo");
    }
  }
  const std::string without = "warning YMRVideoPlayer: No artwork from ";
  EXPECT_THAT(log.lines(), Contains(without + gone + ": The server answered 404."));
  EXPECT_THAT(log.lines(), Contains(without + "poster.png: This is no URL."));
}

TEST(Programme, aFailureIsReportedOnceAndThePlayerStays) {
  const NSError broken{AVFoundationErrorDomain, AVErrorFileFailedToParse, "broken"};
  struct Row {
    const char* what;
    int code;
    MediaScript film;
    std::function<void(YMRVideoPlayer&)> play;
  };
  const std::vector<Row> table{
      {"no address", NSURLErrorBadURL, {}, [](auto& to) { to.playWithMediaItem(YMRMediaItem::itemWithUrl({}), 0); }},
      {"no item", NSURLErrorBadURL, {}, [](auto& to) { to.playWithMediaItem(nullptr, 5); }},
      {"no asset", NSURLErrorBadURL, {}, [](auto& to) { to.playWithMediaItem(PlayerRig::item(), nullptr, 0); }},
      {"does not load", AVErrorFileFailedToParse, {.loadFailure = broken}, {}},
      {"is never there", AVErrorNoDataReceived, {.neverLoads = true}, {}},
      {"breaks at 5 s", AVErrorFileFailedToParse, {.failure = {{5, broken}}}, {}},
      {"falls silent", AVErrorNoDataReceived, {.stalls = {{5, 1000}}}, {}},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.what);
    PlayerRig rig;
    rig.media.script(PlayerRig::film) = row.film;
    row.play ? row.play(*rig.player) : rig.player->playWithMediaItem(PlayerRig::item(), 0);
    rig.loop.advance(120s);
    EXPECT_THAT(rig.host.heardOf({"videoOnError", "videoDidPlayFinished", "playerWillDismiss"}),
                ElementsAre("videoOnError " + std::to_string(row.code)));
    EXPECT_NE(rig.hub().vodPlayer(), nullptr);
    EXPECT_EQ(rig.loop.pendingTimers(), 0u) << "somebody still polls a programme that has failed";
    rig.player->dismiss();
    rig.loop.advance(5s);
    EXPECT_EQ(rig.host.heard.back(), "playerDidDismiss");
    EXPECT_EQ(rig.media.aliveEngines(), 0);
    EXPECT_EQ(rig.loop.pendingTimers(), 0u);
  }
}

TEST(Programme, playsTheHostsOwnAssetOverTheHostsOwnView) {
  PlayerRig rig;
  const auto overlay = std::make_shared<UIView>();
  const auto& content = rig.hub().avPlayerVC()->contentOverlayView();
  content->addSubview(std::make_shared<UIView>());
  rig.player->setOverlayView(overlay);
  const auto asset = std::make_shared<AVURLAsset>(NSURL::URLWithString("http://media.example/own.mp4"));
  rig.player->playWithMediaItem(PlayerRig::item(), asset, 0);
  rig.loop.advance(1s);
  EXPECT_EQ(rig.hub().vodPlayer()->currentItem()->asset(), asset);
  ASSERT_EQ(rig.media.logs().size(), 1u);
  EXPECT_EQ(rig.media.logs()[0]->source.url.absoluteString(), "http://media.example/own.mp4");
  EXPECT_EQ(content->subviews().front(), overlay) << "under everything else";
  rig.hub().avPlayerVC()->view()->setFrame({{0, 0}, {640, 360}});
  rig.hub().avPlayerVC()->view()->layoutIfNeeded();
  EXPECT_EQ(overlay->frame().size.width, 640);
  EXPECT_EQ(overlay->frame().size.height, 360);
}

TEST(Programme, aSecondOneTakesTheFirstOnesPlace) {
  for (const auto wait : {0ms, 20ms, 3000ms}) {
    SCOPED_TRACE(wait.count());
    PlayerRig rig;
    rig.media.script(PlayerRig::film).loadDelay = 0.5;
    rig.player->playWithMediaItem(PlayerRig::item(), 0);
    rig.loop.advance(wait);
    rig.player->playWithMediaItem(PlayerRig::item("http://media.example/second.mp4"), 0);
    rig.loop.runUntilIdle();
    rig.host.heard.clear();
    rig.loop.advance(3100ms);
    EXPECT_THAT(rig.host.heardOf({"videoOnPlay", "videoOnTime"}),
                ElementsAre("videoOnPlay", "videoOnTime 0", "videoOnTime 1", "videoOnTime 2", "videoOnTime 3"));
    EXPECT_EQ(rig.media.aliveEngines(), 1);
    EXPECT_TRUE(rig.media.engine("http://media.example/second.mp4"));
    const auto observers = NSNotificationCenter::defaultCenter().observerCount();
    rig.player->playWithMediaItem(PlayerRig::item("http://media.example/third.mp4"), 0);
    rig.loop.advance(1s);
    EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
    EXPECT_EQ(rig.media.aliveEngines(), 1);
    rig.loop.advance(60s);
    EXPECT_EQ(rig.host.count("videoDidPlayFinished"), 1);
  }
}
