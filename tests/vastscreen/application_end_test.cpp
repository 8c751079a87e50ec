// Players and ad screens that outlive one application object after another; the last ones go after main().
#include <gtest/gtest.h>

#include <QGuiApplication>

#include "ads/core/SKVASTMediaFilePicker.h"
#include "platform/uikit/UIWindow.h"
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/player/AdDocument.h"
#include "tests/support/HTTPServer.h"
#include "vastscreen/SKVASTViewController.h"

static std::unique_ptr<YMRVideoPlayer> player;
static std::shared_ptr<SKVASTViewController> screen;

TEST(ApplicationEnd, endsPlayersAndAdScreensInSilenceWhateverTheyAreDoing) {
  SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
  HTTPServer server;
  server.on("/silent", HTTPServer::Reply{.silent = true});
  server.onFile("/film/ad.mp4", YMR_SAMPLES "/minute.mp4", "video/mp4");
  server.on("/tag", adDocument({{"ad"}}, {server.url("/film"), server.url("/track")}), "application/xml");
  const auto film = YMRMediaItem::itemWithUrl(NSURL::URLFromUserInput(YMR_SAMPLES "/minute.mp4"));
  int argc = 1;
  char name[] = "host", *argv[] = {name, nullptr};
  for (const std::string tag : {"/silent", "/tag"}) {
    auto application = std::make_unique<QGuiApplication>(argc, argv);
    static auto& windows = *new std::vector<std::unique_ptr<UIWindow>>;  // forgotten by the host, so shown to the end
    const auto root = [] {
      const auto& window = windows.emplace_back(std::make_unique<UIWindow>(CGSize{320, 180}));
      window->setRootViewController(std::make_shared<UIViewController>());
      return window->rootViewController();
    };
    const auto url = NSURL::URLWithString(server.url(tag));
    const auto host = std::make_shared<YMRVideoPlayerDelegate>();
    const auto adHost = std::make_shared<SKVASTViewControllerDelegate>();
    adHost->vastReady = [](const auto& ready) { ready->play(); };
    player = std::make_unique<YMRVideoPlayer>();
    player->setDelegate(host);
    player->setAdSchedule(std::make_shared<YMRAdSchedule>());
    player->adSchedule()->addAdBreak(YMRAd::initPreRollWithVastUrl(url));
    player->presentWithController(root());
    player->playWithMediaItem(film, 0);
    screen = SKVASTViewController::initWithDelegate(adHost, root());
    screen->loadVideoWithURL(url);
    const auto isUnderWay = [&] {
      if (tag == "/silent") return server.count(tag) == 2;
      return player->ymrPlayer()->isPlayingAd() && screen->isPlaying();
    };
    while (!isUnderWay()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    host->playerWillDismiss = host->playerDidDismiss = [] { FAIL(); };
    adHost->vastDidDismissFullScreen = [](const auto&) { FAIL(); };
    adHost->vastTrackingEvent = [](const auto& event) { FAIL() << event; };
    application = nullptr;
    player->setSubtitle(YMRSubtitleConfig::initWithSubtitles(std::vector<YMRSubtitle>()));
    player->disableAutoClosedCaptionOptions();
    player->playWithMediaItem(film, 0);
    player->dismiss();
    screen->loadVideoWithURL(url);
    screen->play();
    screen->close();
  }
}
