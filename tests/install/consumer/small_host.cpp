#include <platform/uikit/UIWindow.h>
#include <player/YMRVideoPlayer.h>

#include <QGuiApplication>
#include <cstdio>

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  auto root = std::make_shared<UIViewController>();
  UIWindow window;
  window.setRootViewController(root);
  window.makeKeyAndVisible();

  YMRVideoPlayer player;
  auto delegate = std::make_shared<YMRVideoPlayerDelegate>();
  delegate->videoOnTime = [](double seconds) { std::printf("%.0f s\n", seconds); };
  delegate->videoOnError = [&](NSError error) {
    std::printf("%s\n", error.message.c_str());
    player.dismiss();
  };
  delegate->playerDidDismiss = [] { QCoreApplication::quit(); };
  player.setDelegate(delegate);
  player.presentWithController(root);
  auto item = YMRMediaItem::itemWithUrl(NSURL::URLFromUserInput(argc > 1 ? argv[1] : ""));
  item->setVideoTitle("My programme");
  player.playWithMediaItem(item, 0);
  return application.exec();
}
