// The smallest host there is, as the README shows it, against a window without a screen.
#include <gmock/gmock.h>

#include "platform/uikit/UIWindow.h"
#include "tests/player/PlayerRig.h"

TEST(HostExample, showsAFilmUntilItEndsOrTheHostGoes) {
  for (const bool hostGoes : {false, true}) {
    VirtualRunLoop loop;
    ScriptedMedia media;
    media.otherwise().duration = 5;

    UIWindow window(CGSize{320, 180});
    window.setRootViewController(std::make_shared<UIViewController>());
    window.makeKeyAndVisible();
    bool isOver = false;
    auto delegate = std::make_shared<YMRVideoPlayerDelegate>();  // keep it: the player does not
    delegate->playerDidDismiss = [&] { isOver = true; };
    auto player = std::make_unique<YMRVideoPlayer>();
    player->setDelegate(delegate);
    player->presentWithController(window.rootViewController());
    player->playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::URLWithString("https://example.com/film.mp4")), 0);

    loop.advance(2s);
    EXPECT_EQ(window.rootViewController()->presentedViewController(), player->ymrPlayer()->avPlayerVC());
    if (hostGoes) {
      player.reset();
    } else {
      EXPECT_TRUE(loop.advanceUntil([&] { return isOver; }, 10s));
      loop.advance(2s);
    }
    EXPECT_EQ(window.rootViewController()->presentedViewController(), nullptr);
    EXPECT_EQ(media.aliveEngines(), 0);
  }
}
