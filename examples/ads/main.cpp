// A film with an ad break before it, one ten seconds into it and one after it, all from one tag:
//
//   ads FILM TAG [PROBE-HOST]
//
// It prints what becomes of the ads. Exit status: 0 when the film was shown, 1 when it could not be, 2 for wrong usage.
#include <ads/YMRAdSchedule.h>
#include <ads/core/SKVASTMediaFilePicker.h>
#include <platform/uikit/UIWindow.h>
#include <player/YMRVideoPlayer.h>

#include <QGuiApplication>
#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::fprintf(stderr, "usage: ads FILM TAG [PROBE-HOST]\n");
    return 2;
  }
  QGuiApplication application(argc, argv);
  const auto tag = NSURL::URLFromUserInput(argv[2]);
  if (!tag) {
    std::fprintf(stderr, "ads: %s is no URL\n", argv[2]);
    return 2;
  }
  // No ad is shown without a network. That the ad server has answered tells that there is one; so does a route to this
  // host, a host in the Internet unless another one is named.
  if (argc == 4) SKVASTMediaFilePicker::setProbeHost(argv[3]);

  UIWindow window;
  window.setRootViewController(std::make_shared<UIViewController>());
  window.makeKeyAndVisible();

  auto schedule = std::make_shared<YMRAdSchedule>();
  schedule->addAdBreak(YMRAd::initPreRollWithVastUrl(tag));
  schedule->addAdBreak(YMRAd::initMidRollWithVastUrl(tag, 10));
  schedule->addAdBreak(YMRAd::initPostRollWithVastUrl(tag));
  schedule->setAdLoadingText("One moment, an ad");
  schedule->setAdCountdownText("The film goes on in %d s");

  YMRVideoPlayer player;
  int status = 0;
  auto delegate = std::make_shared<YMRVideoPlayerDelegate>();
  delegate->videoAdOnStart = [](const std::shared_ptr<YMRAd>& ad) {
    std::printf("%s at %llu s: %s\n", YMRAd::getNameFromRoll(ad->roll()).c_str(),
                static_cast<unsigned long long>(ad->offset()), ad->adTitle().value_or("an ad without a title").c_str());
  };
  delegate->videoAdOnErrorDesc = [](const std::shared_ptr<YMRAd>& ad, int code, const std::string& message) {
    // The film goes on by itself: nothing is to be done but to know of it.
    std::printf("%s: no ad, error %d: %s\n", YMRAd::getNameFromRoll(ad->roll()).c_str(), code, message.c_str());
  };
  delegate->videoOnError = [&](const NSError& error) {
    std::fprintf(stderr, "ads: %s\n", error.message.c_str());
    status = 1;
    player.dismiss();
  };
  delegate->playerDidDismiss = [&] { QCoreApplication::exit(status); };
  player.setDelegate(delegate);
  player.setAdSchedule(schedule);
  player.presentWithController(window.rootViewController());
  player.playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::URLFromUserInput(argv[1])), 0);
  return application.exec();
}
