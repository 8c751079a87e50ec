// The stand-alone ad screen: an ad from its tag to its dismissal, each step that can fail, and hosts and viewers who do
// anything at any moment.
#include "VAST/SKLogger.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "net/SKReachability.h"
#include "platform/avfoundation/layer/AVPlayerLayer.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/player/AdDocument.h"
#include "tests/support/ScreenTest.h"
#include "tests/support/ScriptedMediaEngine.h"
#include "tests/support/ScriptedURLLoader.h"
#include "vastscreen/SKVASTViewController.h"

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* tag = "http://ads.example/tag";
const NSError broken{AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"};

// A host of the screen, on virtual time. Its tag has the ad "a" of 6 s, unless a test answers otherwise; it plays what
// is ready, and closes by Menu two seconds after the end.
struct Rig {
  Rig() {
    SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
    media.otherwise().duration = 6;
    window.setRootViewController(root);
    window.makeKeyAndVisible();
    using Sender = SKVASTViewControllerDelegate::Sender;
    delegate->vastReady = [this](const Sender& sender) { hear("vastReady"), sender->play(); };
    delegate->vastError = [this](const Sender&, SKVASTError error) { hear("vastError", " " + std::to_string(error)); };
    delegate->vastWillPresentFullScreen = [this](const Sender&) { hear("vastWillPresentFullScreen"); };
    delegate->vastDidDismissFullScreen = [this](const Sender&) { hear("vastDidDismissFullScreen"); };
    delegate->vastOpenBrowseWithUrl = [this](const NSURL& url) { hear("vastOpenBrowseWithUrl", " " + url.path()); };
    delegate->vastTrackingEvent = [this](const std::string& event) {
      hear(event);
      if (event == "complete") loop.schedule(2s, [this] { window.sendPress(UIPressTypeMenu); });
    };
    screen = SKVASTViewController::initWithDelegate(delegate, root);
    loop.runUntilIdle();
  }

  void hear(const std::string& callback, const std::string& value = "") {
    heard.push_back(callback + value);
    if (const auto act = inside.extract(callback)) act.mapped()();
  }
  void load() {
    if (!isAnswered) answer({.body = adDocument({{"a"}})});
    screen->loadVideoWithURL(NSURL::URLWithString(tag));
  }
  void answer(ScriptedURLLoader::Answer answer) {
    net.loader->answer(tag, std::move(answer));
    isAnswered = true;
  }
  bool runUntilHeard(const std::string& line) {
    return loop.advanceUntil([&] { return count(line) > 0; }, 60s);
  }
  std::ptrdiff_t count(const std::string& line) const { return std::ranges::count(heard, line); }
  // What was heard besides tracking events.
  Lines course() const {
    Lines lines;
    std::ranges::copy_if(heard, std::back_inserter(lines), [](const auto& line) { return line.rfind("vast", 0) == 0; });
    return lines;
  }
  // The tracking requests of an ad in order: "start", "error-402".
  Lines tracked(const std::string& ad = "a") const { return trackingAmong(net.loader->sentURLs(), ad); }
  void letGo() {
    screen.reset();
    root->dismissViewControllerAnimated(false);
  }
  // What holds whatever happened: one dismissal for each presentation, each event once, and nothing left behind.
  void expectOrderedAndNothingLeft() {
    letGo();
    loop.advance(90s);
    EXPECT_EQ(count("vastWillPresentFullScreen"), count("vastDidDismissFullScreen"));
    for (const auto* event : {"impression", "start", "complete"}) {
      for (const auto* ad : {"a", "b"}) EXPECT_LE(std::ranges::count(tracked(ad), event), 1) << ad << event;
    }
    EXPECT_LE(std::ranges::count_if(tracked(), [](const auto& line) { return line.rfind("error", 0) == 0; }), 1);
    EXPECT_EQ(media.aliveEngines() + net.loader->inFlight(), 0);
    EXPECT_EQ(root->presentedViewController(), nullptr);
    EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
    EXPECT_FALSE(UIApplication::sharedApplication().isIdleTimerDisabled());
  }

  QGuiApplication& application = screenApplication();
  VirtualRunLoop loop;
  ScriptedMedia media;
  ScriptedLoaderInPlace net;
  const std::size_t observers = NSNotificationCenter::defaultCenter().observerCount();
  UIWindow window{CGSize{640, 360}, UIGraphics::software};
  std::shared_ptr<UIViewController> root = std::make_shared<UIViewController>();
  std::shared_ptr<SKVASTViewControllerDelegate> delegate = std::make_shared<SKVASTViewControllerDelegate>();
  std::shared_ptr<SKVASTViewController> screen;
  Lines heard;                                          // "vastReady", "vastError 7", "start"
  std::map<std::string, std::function<void()>> inside;  // what to do, once, inside the callback or event of that name
  bool isAnswered = false;
};

// A step that fails, what the host hears then, and what the trackers of the ad "a" get.
struct Fault {
  const char* name;
  Lines course, tracked;
  std::function<void(Rig&)> arrange;
};

const std::vector<Fault>& faults() {
  static const auto body = [](const std::string& text) { return [text](Rig& rig) { rig.answer({.body = text}); }; };
  static const auto film = [](MediaScript script) {
    return [script](Rig& rig) { rig.media.script("http://media.example/a.mp4") = script; };
  };
  static const auto wraps = [](const std::string& url) {
    return body(vast::document(vast::wrapper(url, "", "<Error>http://track.example/a/[ERRORCODE]</Error>")));
  };
  static const Lines seen{"vastReady", "vastWillPresentFullScreen", "vastError 9", "vastDidDismissFullScreen"};
  static const Lines begun{"impression", "start", "error-402", "close"};
  static const std::vector<Fault> faults{
      {"silence", {"vastError 7"}, {}, [](Rig& rig) { rig.answer({.never = true}); }},
      {"a page", {"vastError 2"}, {}, body("<html><body>Welcome<br></body></html>")},
      {"no linear ad", {"vastError 0"}, {"error-303"}, body(adDocument({{"a", ""}}))},
      {"wraps nothing", {"vastError 6"}, {"900"}, wraps("ftp://ads.example/a")},
      {"a type nobody plays", {"vastError 5"}, {"error-401"}, body(adDocument({{"a", "video/webm"}}))},
      {"no network when it is ready",
       {"vastReady", "vastError 6"},
       {},
       [](Rig& rig) {
         rig.inside["vastReady"] = [&rig] { rig.screen->reachability()->reachabilityChanged(0); };
         rig.inside["vastError"] = [&rig] { rig.screen->reachability()->reachabilityChanged(2); };
       }},
      {"nobody free to present it",
       {"vastReady", "vastError 9"},
       {},
       [](Rig& rig) {
         rig.root->presentViewController(std::make_shared<UIViewController>(), false);
         rig.inside["vastError"] = [&rig] { rig.root->dismissViewControllerAnimated(false); };
       }},
      {"no player", {"vastReady", "vastError 9"}, {"error-400"}, film({.cannotBeMade = true})},
      {"does not load", seen, {"error-402", "close"}, film({.loadFailure = broken})},
      {"breaks in the middle", seen, begun, film({.duration = 6, .failure = {{4, broken}}})},
      {"runs dry", seen, begun, film({.duration = 6, .stalls = {{4.5, 1000}}})},
      {"is late with its first picture",
       {"vastReady", "vastWillPresentFullScreen", "vastDidDismissFullScreen", "vastError 7"},
       {"impression", "start", "close", "error-900"},
       film({.duration = 6, .loadDelay = 12})},
  };
  return faults;
}

}  // namespace

TEST(AdScreen, showsAnAdAndTheControlsAndSaysSoInTheLog) {
  Lines log;
  SKLogger::installSink(SKLogLevelDebug, [&](int, std::string_view component, std::string_view message) {
    if (component == "VAST - View Controller") log.emplace_back(message);
  });
  Rig rig;
  rig.screen->play();
  rig.load();
  rig.load();
  ASSERT_TRUE(rig.runUntilHeard("start"));
  const auto showsControlsAfter = [&](RunLoop::Duration time) {
    rig.loop.advance(time);
    return rig.screen->controls()->isShowing();
  };
  rig.screen->view()->layoutIfNeeded();
  EXPECT_EQ(rig.screen->avplayerLayer()->frame(), rig.screen->view()->bounds());
  EXPECT_EQ(rig.screen->view()->subviews()[1]->frame(), CGRectMake(295, 155, 50, 50)) << "the wheel";
  EXPECT_FALSE(showsControlsAfter(3900ms));
  EXPECT_TRUE(showsControlsAfter(200ms)) << "4 s after the beginning";
  rig.screen->play();
  ASSERT_TRUE(rig.runUntilHeard("complete"));
  EXPECT_TRUE(showsControlsAfter(1900ms)) << "at the end";
  EXPECT_FALSE(rig.screen->isPlaying());
  rig.window.sendPress(UIPressTypePlayPause);
  EXPECT_TRUE(rig.screen->isPlaying()) << "from its beginning";
  ASSERT_TRUE(rig.runUntilHeard("vastDidDismissFullScreen"));
  rig.screen->play();
  rig.loop.advance(3s);
  rig.screen->info();
  for (int press = 0; press < 2; ++press) rig.window.sendPress(UIPressTypePlayPause);
  rig.screen->close();
  SKLogger::installSink(SKLogLevelNone, nullptr);
  EXPECT_THAT(rig.course(), ElementsAre("vastError 8", "vastReady", "vastWillPresentFullScreen", "vastError 12",
                                        "vastDidDismissFullScreen", "vastWillPresentFullScreen",
                                        "vastOpenBrowseWithUrl /a/shop", "vastDidDismissFullScreen"));
  EXPECT_THAT(rig.tracked(), ElementsAre("impression", "start", "complete", "resume", "close", "resume", "click",
                                         "pause", "resume", "close"));
  EXPECT_THAT(
      log,
      ElementsAre("Ignoring call to playVideo before the player has sent vastReady.",
                  "Ignoring loadVideo because a load is in progress.", "Sending vastReady: callback",
                  "Sending Impressions requests", "Ignoring call to playVideo while playback is already in progress",
                  "Dismissing VASTViewController", "Sending clickTracking requests", "Dismissing VASTViewController"));
}

TEST(AdScreen, readsBroadlyWhatItIsToldToAndTellsWithTheFirstPicture) {
  Rig rig;
  rig.screen->setTagProfile(YMRTagProfileBroad);
  rig.answer({.body = adDocument({{"b", "image/png"}, {"a"}})});
  rig.media.script("http://media.example/a.mp4") = {.duration = 6, .loadDelay = 5};
  rig.load();
  ASSERT_TRUE(rig.runUntilHeard("vastWillPresentFullScreen"));
  rig.loop.advance(4s);
  EXPECT_THAT(rig.tracked(), IsEmpty()) << "the screen is there, and black";
  ASSERT_TRUE(rig.runUntilHeard("vastDidDismissFullScreen"));
  EXPECT_THAT(rig.tracked("b"), ElementsAre("error-403"));
  EXPECT_THAT(rig.tracked(), ElementsAre("impression", "start", "creativeView", "complete", "close"));
  rig.expectOrderedAndNothingLeft();
}

TEST(AdScreen, letsTheViewerSkipAnAdOnceItMay) {
  for (const bool allows : {true, false}) {
    Rig rig;
    rig.answer({.body = adDocument({{"a", "video/mp4", "", "00:00:03"}})});
    rig.screen->setTagProfile(YMRTagProfileBroad);
    rig.screen->setAllowsSkipping(allows);
    rig.load();
    rig.runUntilHeard("start");
    const auto& button = *rig.screen->skipButton();
    EXPECT_EQ(rig.loop.advanceUntil([&] { return button.text() == "Skip ad in 1"; }, 3s), allows);
    rig.window.sendPress(UIPressTypeSelect);  // brings the controls
    rig.loop.advance(1s);
    EXPECT_EQ(button.isReady() && !button.hasRemote(), allows);
    rig.window.sendPress(UIPressTypeUpArrow);
    rig.loop.advance(1500ms);
    EXPECT_EQ(rig.screen->controls()->isShowing(), !allows) << "nor do they come by themselves";
    for (int press = 0; press < 2; ++press) rig.window.sendPress(UIPressTypeSelect);
    EXPECT_EQ(rig.count("vastDidDismissFullScreen"), allows);
    rig.screen->play();
    rig.loop.advance(20s);
    EXPECT_EQ(std::ranges::count(rig.tracked(), "complete"), !allows) << "nor later, when it is shown again";
    rig.expectOrderedAndNothingLeft();
  }
}

TEST(AdScreen, makesTheFilmOfAnAdReadyThatWaitsForTheOneThatPlays) {
  for (const bool isPlayed : {true, false}) {
    Rig rig;
    rig.media.otherwise().duration = 16;
    for (const auto* ad : {"a", "b"}) rig.answer({.body = adDocument({{ad}})});
    rig.load();
    rig.runUntilHeard("start");
    rig.load();
    rig.loop.advance(11s);
    EXPECT_EQ(rig.media.aliveEngines(), 1);
    rig.loop.advance(2s);
    EXPECT_EQ(rig.media.aliveEngines(), 2);
    rig.screen->close();
    rig.loop.advance(isPlayed ? 9s : 10s);
    if (isPlayed) rig.screen->play();
    EXPECT_EQ(rig.media.aliveEngines(), isPlayed);
    rig.loop.advance(20s);
    EXPECT_EQ(rig.media.logs("http://media.example/b.mp4").size(), 1u);
    rig.expectOrderedAndNothingLeft();
  }
}

TEST(AdScreen, tellsOneErrorOfEachStepThatFailsAndShowsTheNextAd) {
  MediaEngineSettings::shared().firstFrameSilenceLimit = 20;  // so that the screen's own bound comes first
  for (const auto& fault : faults()) {
    SCOPED_TRACE(fault.name);
    Rig rig;
    fault.arrange(rig);
    rig.load();
    rig.loop.advance(90s);
    EXPECT_EQ(rig.course(), fault.course);
    EXPECT_EQ(rig.tracked(), fault.tracked);
    rig.screen->play();
    rig.loop.advance(90s);
    rig.screen->loadVideoWithData(VASTDocument(adDocument({{"b"}})));
    rig.loop.advance(90s);
    EXPECT_THAT(rig.tracked("b"), ElementsAre("impression", "start", "complete", "close"));
    rig.expectOrderedAndNothingLeft();
  }
  MediaEngineSettings::shared() = {};
}

TEST(AdScreen, isLeftAtAnyMomentByAnyone) {
  const std::pair<const char*, std::function<void(Rig&)>> ways[]{
      {"the host closes", [](Rig& rig) { rig.screen->close(); }},
      {"Menu", [](Rig& rig) { rig.window.sendPress(UIPressTypeMenu); }},
      {"the presenting one dismisses", [](Rig& rig) { rig.root->dismissViewControllerAnimated(true); }},
      {"the host lets go", [](Rig& rig) { rig.letGo(); }},
      {"out of sight and back",
       [](Rig& rig) {
         UIApplication::sharedApplication().setVisible(false);
         rig.loop.advance(30s);
         EXPECT_FALSE(rig.screen->isPlaying());
         UIApplication::sharedApplication().setVisible(true);
       }},
  };
  for (const auto& [name, leave] : ways) {
    for (auto moment = 0ms; moment < 10s; moment += moment < 1s ? 60ms : 900ms) {
      SCOPED_TRACE(std::string(name) + " after " + std::to_string(moment.count()) + " ms");
      Rig rig;
      rig.answer({.body = adDocument({{"a"}}), .delay = 300ms});
      rig.load();
      rig.loop.advance(moment);
      leave(rig);
      rig.loop.advance(60s);
      EXPECT_TRUE(!rig.screen || rig.count("vastReady") == 1) << "a load goes on";
      rig.expectOrderedAndNothingLeft();
    }
  }
}

TEST(AdScreen, survivesWhatAHostDoesInsideItsCallbacks) {
  const std::pair<const char*, std::function<void(Rig&)>> acts[]{
      {"close", [](Rig& rig) { rig.screen->close(), rig.screen->close(); }},
      {"let go", [](Rig& rig) { rig.letGo(); }},
      {"play", [](Rig& rig) { rig.screen->play(), rig.screen->play(); }},
      {"load", [](Rig& rig) { rig.screen->loadVideoWithData(VASTDocument(adDocument({{"b"}}))), rig.load(); }},
      {"pause", [](Rig& rig) { rig.screen->pause(), rig.screen->resume(), rig.screen->info(); }},
      {"throw", [](Rig&) { throw 42; }},
  };
  for (const auto& [name, act] : acts) {
    for (const auto* callback : {"vastReady", "vastError", "vastWillPresentFullScreen", "vastDidDismissFullScreen",
                                 "vastOpenBrowseWithUrl", "start", "pause", "resume", "complete", "close"}) {
      SCOPED_TRACE(std::string(name) + " inside " + callback);
      Rig rig;
      if (callback == std::string("vastError")) rig.media.script("http://media.example/a.mp4").failure = {3, broken};
      rig.inside[callback] = [&rig, &act = act] { act(rig); };
      rig.load();
      rig.loop.advance(2s);
      for (int press = 0; press < 2; ++press) rig.window.sendPress(UIPressTypePlayPause);
      if (rig.screen) rig.screen->info();
      rig.loop.advance(90s);
      EXPECT_THAT(rig.inside, IsEmpty()) << "it was never called";
      rig.expectOrderedAndNothingLeft();
    }
  }
}
