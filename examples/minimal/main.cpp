#include <platform/uikit/UIWindow.h>
#include <player/YMRVideoPlayer.h>

#include <QGuiApplication>
#include <iostream>

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  UIWindow window;
  window.setRootViewController(std::make_shared<UIViewController>());
  window.makeKeyAndVisible();

  YMRVideoPlayer player;
  int status = 0;
  auto delegate = std::make_shared<YMRVideoPlayerDelegate>();  // keep it: the player does not
  delegate->videoOnError = [&](NSError error) {
    std::cerr << error.message << '\n';
    status = 1;
    player.dismiss();
  };
  delegate->playerDidDismiss = [&] { QCoreApplication::exit(status); };
  player.setDelegate(delegate);
  player.presentWithController(window.rootViewController());
  player.playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::URLFromUserInput(argc > 1 ? argv[1] : "")), 0);
  return application.exec();
}
