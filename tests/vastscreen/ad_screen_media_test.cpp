// Ads on the stand-alone screen with real media from a real server, one after the other on one screen.
//
// With YMR_ADS=500 in the environment it is a soak, which prints what an ad costs in the long run.
#include "tests/player/Soak.h"
#include "vastscreen/SKVASTViewController.h"

using AdScreenMedia = Soak;

TEST_F(AdScreenMedia, manyAdsInARowOnOneScreenLeaveNothingBehind) {
  const auto delegate = std::make_shared<SKVASTViewControllerDelegate>();
  const auto screen = SKVASTViewController::initWithDelegate(delegate, root);
  using Sender = SKVASTViewControllerDelegate::Sender;
  std::vector<std::string> heard;
  delegate->vastReady = [](const Sender& sender) { sender->play(); };
  delegate->vastError = [&](const Sender&, SKVASTError error) { heard.push_back("error " + std::to_string(error)); };
  delegate->vastDidDismissFullScreen = [&](const Sender&) { heard.emplace_back("dismissed"); };
  delegate->vastTrackingEvent = [&](const std::string& event) { heard.push_back(event); };
  run("YMR_ADS", [&](int) {
    heard.clear();
    screen->loadVideoWithURL(ads.tag());
    EXPECT_TRUE(runEventsUntil([&] { return heard.size() >= 2; }));
    window.sendPress(UIPressTypeMenu);
    ASSERT_EQ(heard, (std::vector<std::string>{"start", "complete", "close", "dismissed"}));
  });
}
