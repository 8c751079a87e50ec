// Ads on the stand-alone screen with real media from a real server, one after the other on one screen.
//
// With YMR_ADS=500 in the environment it is a soak, which prints what an ad costs in the long run.
#include "ads/core/SKVASTMediaFilePicker.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/uikit/UIWindow.h"
#include "tests/player/Soak.h"
#include "vastscreen/SKVASTViewController.h"

TEST(AdScreenMedia, manyAdsInARowOnOneScreenLeaveNothingBehind) {
  screenApplication();
  SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
  MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  const AdServerProcess ads;
  UIWindow window(CGSize{320, 180}, screenGraphics());
  const auto root = std::make_shared<UIViewController>();
  window.setRootViewController(root);
  window.makeKeyAndVisible();
  const auto delegate = std::make_shared<SKVASTViewControllerDelegate>();
  const auto screen = SKVASTViewController::initWithDelegate(delegate, root);
  using Sender = SKVASTViewControllerDelegate::Sender;
  std::vector<std::string> heard;
  delegate->vastReady = [](const Sender& sender) { sender->play(); };
  delegate->vastError = [&](const Sender&, SKVASTError error) { heard.push_back("error " + std::to_string(error)); };
  delegate->vastDidDismissFullScreen = [&](const Sender&) { heard.emplace_back("dismissed"); };
  delegate->vastTrackingEvent = [&](const std::string& event) { heard.push_back(event); };
  Soak soak("YMR_ADS");
  for (int done = 0; done < soak.rounds(); ++done) {
    heard.clear();
    screen->loadVideoWithURL(ads.tag());
    EXPECT_TRUE(runEventsUntil([&] { return heard.size() >= 2; }));
    window.sendPress(UIPressTypeMenu);
    ASSERT_EQ(heard, (std::vector<std::string>{"start", "complete", "close", "dismissed"}));
    soak.roundIsOver();
  }
  soak.isOver();
  MediaEngineSettings::shared() = {};
}
