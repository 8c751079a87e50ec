// A pod of real films from a real server, in a window that draws.
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/player/Soak.h"

using PodMedia = Soak;

TEST_F(PodMedia, isNeverBlackAndAsksForEachFilmOnce) {
  HTTPServer server;
  server.onOthers([](const auto&) { return HTTPServer::Reply(); });
  server.onFile("/a.mp4", YMR_SAMPLES "/ad.mp4", "video/mp4");
  server.onFile("/b.mp4", YMR_SAMPLES "/half.mp4", "video/mp4");
  server.on("/tag", adDocument({{"a", "video/mp4", "1"}, {"b", "video/mp4", "2"}}, {server.url(""), server.url("/t")}));
  const auto delegate = std::make_shared<YMRVideoPlayerDelegate>();
  int completed = 0, pictures = 0, black = 0;
  delegate->videoAdOnComplete = [&](const auto&) {
    ++completed;
    EXPECT_EQ(server.count("/b.mp4"), 1u);
  };
  const auto schedule = std::make_shared<YMRAdSchedule>();
  schedule->addAdBreak(YMRAd::initPreRollWithVastUrl(NSURL::URLWithString(server.url("/tag"))));
  auto player = std::make_unique<YMRVideoPlayer>();
  const std::weak_ptr<AVPlayerViewController> screen = player->ymrPlayer()->avPlayerVC();
  player->setDelegate(delegate);
  player->setAdSchedule(schedule);
  player->presentWithController(root);
  player->playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::fileURLWithPath(YMR_SAMPLES "/half.mp4")), 0);
  EXPECT_TRUE(runEventsUntil([&] {
    const bool isBlack = inkOf(window.snapshot(), {0, 120, 320, 60}).isEmpty();  // below the countdown
    isBlack ? black += pictures > 0 : ++pictures;
    return completed == 2;
  }));
  EXPECT_GT(pictures, 0);
  EXPECT_EQ(black, 0);
  player.reset();
  EXPECT_TRUE(runEventsUntil([&] { return !root->presentedViewController() && screen.expired(); }));
}
