// A programme from the host's call to its ticks and its failure.
#include <gmock/gmock.h>

#include <cmath>

#include "VAST/SKLogger.h"
#include "platform/avfoundation/AVMetadataItem.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "tests/player/PlayerRig.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

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

double virtualSeconds(const VirtualRunLoop& loop) {
  return std::chrono::duration<double>(loop.now()).count();
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
  struct Row {
    std::int64_t start;
    double jump;
  };
  for (const auto& row : std::vector<Row>{{0, 0}, {12, 12}, {-5, 0}}) {
    SCOPED_TRACE(row.start);
    PlayerRig rig;
    rig.playFilm(row.start);
    rig.loop.advance(3s);
    EXPECT_NEAR(rig.player->currentPosition(), row.jump + 3, 0.1);
    EXPECT_EQ(rig.host.count("videoDidSeekTo"), 1) << "one jump, whatever was asked for before";
    rig.hub().vodPlayer()->pause();
    rig.loop.advance(1s);
    rig.hub().vodPlayer()->play();
    rig.loop.advance(1s);
    EXPECT_EQ(rig.host.count("videoDidSeekTo"), 1);
    EXPECT_NEAR(rig.player->currentPosition(), row.jump + 4, 0.1);
  }
}

TEST(Programme, aStartPositionBeyondTheEndEndsIt) {
  PlayerRig rig;
  rig.playFilm(500);
  rig.loop.advance(1s);
  EXPECT_EQ(rig.host.count("videoDidPlayFinished"), 1);
  EXPECT_EQ(rig.state(), "CompletedVideo");
}

TEST(Programme, tellsThePanelWhatTheHostSaysOfIt) {
  struct Row {
    const char* what;
    std::function<void(YMRMediaItem&)> say;
    Lines metadata;
    std::size_t fetches;
  };
  const std::string bytes = "artwork(" + std::to_string(pictureFile().size()) + ")";
  const std::vector<Row> table{
      {"nothing", [](YMRMediaItem&) {}, {}, 0},
      {"texts",
       [](YMRMediaItem& item) {
         item.setVideoDescription("Two goats cross a bridge.");
         item.setVideoTitle("Goats");
       },
       {"title=Goats", "description=Two goats cross a bridge."},
       0},
      {"a picture", [](YMRMediaItem& item) { item.setVideoThumbnail(picture()); }, {bytes}, 0},
      {"a picture's address",
       [](YMRMediaItem& item) {
         item.setVideoTitle("");
         item.setVideoThumbnailUrl("http://media.example/poster.png");
       },
       {"title=", bytes},
       1},
      {"both",
       [](YMRMediaItem& item) {
         item.setVideoThumbnail(picture());
         item.setVideoThumbnailUrl("http://media.example/poster.png");
       },
       {bytes},
       0},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.what);
    PlayerRig rig;
    rig.net.loader->answer("http://media.example/poster.png", pictureFile());
    const auto item = PlayerRig::item();
    row.say(*item);
    rig.player->playWithMediaItem(item, 0);
    rig.loop.advance(1s);
    EXPECT_EQ(metadataOf(rig.hub()), row.metadata);
    EXPECT_EQ(rig.net.loader->asked().size(), row.fetches);
  }
}

TEST(Programme, artworkThatFailsNeverHoldsItUpForLong) {
  struct Row {
    const char* address;
    ScriptedURLLoader::Answer answer;
    double begins;  // seconds after the call at which the programme plays
    bool hasArtwork;
  };
  const std::string file = pictureFile();
  const std::vector<Row> table{
      {"http://media.example/a.png", {.body = file}, 0.05, true},
      {"http://media.example/slow.png", {.body = file, .delay = 1500ms}, 1.5, true},
      {"http://media.example/slower.png", {.body = file, .delay = 2500ms}, 2.05, false},
      {"http://media.example/never.png", {.never = true}, 2.05, false},
      {"http://media.example/gone.png", {.status = 404, .body = file}, 0.05, false},
      {"http://media.example/refused.png", {.error = NSURLErrorCannotConnectToHost}, 0.05, false},
      {"http://media.example/page.png", {.body = "<html>Sorry</html>"}, 0.05, false},
      {"http://media.example/empty.png", {}, 0.05, false},
      {"http://media.example/huge.png", {.body = std::string((8 << 20) + 1, 'x')}, 0.05, false},
      {"file:///srv/poster.png", {.body = file}, 0.05, true},
      {"poster.png", {.body = file}, 0.05, false},
      {"", {.body = file}, 0.05, false},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.address);
    PlayerRig rig;
    rig.net.loader->answer(row.address, row.answer);
    const auto item = PlayerRig::item();
    item->setVideoThumbnailUrl(row.address);
    const double asked = virtualSeconds(rig.loop);
    rig.player->playWithMediaItem(item, 0);
    ASSERT_TRUE(rig.loop.advanceUntil([&] { return rig.host.count("videoOnPlay") > 0; }, 10s));
    EXPECT_NEAR(virtualSeconds(rig.loop) - asked, row.begins, 0.02);
    EXPECT_EQ(metadataOf(rig.hub()).size(), row.hasArtwork ? 1u : 0u);
    rig.loop.advance(10s);
    EXPECT_EQ(rig.net.loader->inFlight(), 0);
    EXPECT_EQ(rig.state(), "PlayingVideo");
  }
}

TEST(Programme, aFailureIsReportedOnceAndThePlayerStays) {
  const NSError broken{AVFoundationErrorDomain, AVErrorFileFailedToParse, "broken"};
  struct Row {
    const char* what;
    std::function<void(PlayerRig&)> play;
    int code;
  };
  const std::vector<Row> table{
      {"no address", [](PlayerRig& rig) { rig.player->playWithMediaItem(YMRMediaItem::itemWithUrl(std::nullopt), 0); },
       NSURLErrorBadURL},
      {"no item", [](PlayerRig& rig) { rig.player->playWithMediaItem(nullptr, 5); }, NSURLErrorBadURL},
      {"no asset", [](PlayerRig& rig) { rig.player->playWithMediaItem(PlayerRig::item(), nullptr, 0); },
       NSURLErrorBadURL},
      {"media that do not load",
       [&](PlayerRig& rig) {
         rig.media.script(PlayerRig::film).loadFailure = broken;
         rig.player->playWithMediaItem(PlayerRig::item(), 0);
       },
       AVErrorFileFailedToParse},
      {"media that are never there",
       [](PlayerRig& rig) {
         rig.media.script(PlayerRig::film).neverLoads = true;
         rig.player->playWithMediaItem(PlayerRig::item(), 0);
       },
       AVErrorNoDataReceived},
      {"media that break at 5 s",
       [&](PlayerRig& rig) {
         rig.media.script(PlayerRig::film).failure = {5, broken};
         rig.player->playWithMediaItem(PlayerRig::item(), 0);
       },
       AVErrorFileFailedToParse},
      {"media that fall silent",
       [](PlayerRig& rig) {
         rig.media.script(PlayerRig::film).stalls = {{5, 1000}};
         rig.player->playWithMediaItem(PlayerRig::item(), 0);
       },
       AVErrorNoDataReceived},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.what);
    PlayerRig rig;
    row.play(rig);
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

TEST(Programme, playsTheHostsOwnAsset) {
  PlayerRig rig;
  const auto asset = std::make_shared<AVURLAsset>(NSURL::URLWithString("http://media.example/own.mp4"));
  rig.player->playWithMediaItem(PlayerRig::item(), asset, 0);
  rig.loop.advance(1s);
  EXPECT_EQ(rig.hub().vodPlayer()->currentItem()->asset(), asset);
  ASSERT_EQ(rig.media.logs().size(), 1u);
  EXPECT_EQ(rig.media.logs()[0]->source.url.absoluteString(), "http://media.example/own.mp4");
}

TEST(Programme, theHostsOverlayLiesUnderEverythingAndFillsTheScreen) {
  PlayerRig rig;
  const auto other = std::make_shared<UIView>();
  const auto overlay = std::make_shared<UIView>();
  const auto& content = rig.hub().avPlayerVC()->contentOverlayView();
  content->addSubview(other);
  rig.player->setOverlayView(overlay);
  rig.playFilm();
  EXPECT_EQ(content->subviews().front(), overlay);
  rig.hub().avPlayerVC()->view()->setFrame({{0, 0}, {640, 360}});
  rig.hub().avPlayerVC()->view()->layoutIfNeeded();
  EXPECT_EQ(overlay->frame().size.width, 640);
  EXPECT_EQ(overlay->frame().size.height, 360);
}

TEST(Programme, isFollowedInTheLog) {
  Lines lines;
  SKLogger::installSink(SKLogLevelDebug, [&](int level, std::string_view tag, std::string_view message) {
    EXPECT_EQ(level, SKLogLevelDebug);
    EXPECT_EQ(tag, "YMRVideoPlayer");
    lines.emplace_back(message);
  });
  PlayerRig rig;
  rig.media.script(PlayerRig::film).stalls = {{1.5, 1}};
  rig.playFilm();
  rig.loop.advance(2s);
  SKLogger::installSink(SKLogLevelNone, nullptr);
  EXPECT_THAT(lines, ElementsAre("resumeVideoPlayer - 1", "Video onPlay", "Video did Seek 0.000000 / 60.000000",
                                 "playhead position = 0.000000", "playhead position = 1.000000", "Video ad onBuffer",
                                 "Video onPaused", "Video onPlay"));
}

TEST(Programme, aSecondOneTakesTheFirstOnesPlace) {
  for (const auto wait : {0ms, 20ms, 3000ms}) {
    SCOPED_TRACE(wait.count());
    PlayerRig rig;
    rig.media.script(PlayerRig::film).loadDelay = 0.5;
    rig.player->playWithMediaItem(PlayerRig::item(), 0);
    rig.loop.advance(wait);
    rig.player->playWithMediaItem(PlayerRig::item("http://media.example/second.mp4"), 0);
    rig.loop.advance(100ms);
    rig.host.heard.clear();
    rig.loop.advance(3s);
    EXPECT_THAT(rig.host.heardOf({"videoOnTime"}), ElementsAre("videoOnTime 1", "videoOnTime 2", "videoOnTime 3"));
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

TEST(Programme, aSecondStartChangesNothing) {
  PlayerRig rig;
  rig.player->start();  // nothing to start yet
  rig.playFilm(20);
  rig.loop.advance(2s);
  rig.player->start();
  rig.loop.advance(2s);
  EXPECT_NEAR(rig.player->currentPosition(), 24, 0.1);
  EXPECT_EQ(rig.host.count("videoOnPlay"), 1);
  EXPECT_EQ(rig.host.heard.back(), "videoOnTimeDuration 24 60");
}

TEST(Programme, startTakesAPausedOneBackToItsBeginning) {
  PlayerRig rig;
  rig.playFilm();
  rig.loop.advance(2s);
  rig.hub().vodPlayer()->pause();
  rig.host.heard.clear();
  rig.player->start();
  rig.loop.advance(1s);
  EXPECT_THAT(rig.host.heard, Contains("videoDidSeekTo 0"));
  EXPECT_THAT(rig.host.heard, Contains("videoOnPlay"));
  EXPECT_EQ(rig.host.heard.back(), "videoOnTimeDuration 1 60");
}

TEST(Programme, scanningIsNotPlaying) {
  PlayerRig rig;
  rig.playFilm();
  rig.loop.advance(1s);
  rig.hub().vodPlayer()->pause();
  rig.host.heard.clear();
  rig.hub().vodPlayer()->setRate(2);
  rig.loop.advance(2s);
  EXPECT_THAT(rig.host.heard, IsEmpty());
  rig.hub().vodPlayer()->setRate(1);
  EXPECT_EQ(rig.host.heard.front(), "videoOnPlay");
}

TEST(Programme, anEmptyBufferIsReportedWhileItPlays) {
  PlayerRig rig;
  rig.media.script(PlayerRig::film).stalls = {{5, 3}};
  rig.playFilm();
  rig.loop.advance(6s);
  EXPECT_THAT(rig.host.heardOf({"videoDidBuffer", "videoOnBuffer"}), ElementsAre("videoDidBuffer", "videoOnBuffer"));
}
