// The stand-alone ad screen: what it is made of, the network, and loading an ad.
#include "vastscreen/SKVASTViewController.h"

#include <algorithm>
#include <utility>

#include "VAST/HostCall.h"
#include "VAST/Parser/SKVAST2Parser.h"
#include "VAST/SKLogger.h"
#include "ads/core/SKVASTEventProcessor.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "ads/core/YMRAdQueue.h"
#include "ads/core/YMRPlayerErrorHandler.h"
#include "net/SKReachability.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "ui/Autolayout.h"

namespace {

constexpr const char* tag = "VAST - View Controller";

}  // namespace

std::shared_ptr<SKVASTViewController> SKVASTViewController::initWithDelegate(
    std::weak_ptr<SKVASTViewControllerDelegate> delegate, std::weak_ptr<UIViewController> viewController) {
  YMR_ASSERT_MAIN_THREAD();
  std::shared_ptr<SKVASTViewController> screen(
      new SKVASTViewController(std::move(delegate), std::move(viewController)));
  screen->startReachability();
  screen->addObservers();
  // By another key than what close() removes: it is followed for the screen's whole life.
  NSNotificationCenter::defaultCenter().addObserver(
      &screen->stage_, UIApplicationWillTerminateNotification, nullptr,
      weakly(std::weak_ptr(screen), &SKVASTViewController::applicationWillTerminate));
  return screen;
}

std::shared_ptr<SKVASTViewController> SKVASTViewController::init() {
  return initWithDelegate({}, {});
}

SKVASTViewController::SKVASTViewController(std::weak_ptr<SKVASTViewControllerDelegate> delegate,
                                           std::weak_ptr<UIViewController> viewController)
    : delegate_(std::move(delegate)),
      viewController_(std::move(viewController)),
      network_(std::make_shared<std::atomic<Network>>(Network::unknown)) {
  videoHangTest_.reserve(20);
}

SKVASTViewController::~SKVASTViewController() {
  removeObservers();
  NSNotificationCenter::defaultCenter().removeObserver(&stage_);
  if (reachability_) reachability_->stopNotifier();
}

std::shared_ptr<SKVASTViewController> SKVASTViewController::own() {
  return std::static_pointer_cast<SKVASTViewController>(shared_from_this());
}

void SKVASTViewController::setDelegate(const std::weak_ptr<SKVASTViewControllerDelegate>& delegate) {
  YMR_ASSERT_MAIN_THREAD();
  delegate_ = delegate;
  for (const auto& ad : {ad_, shown_}) {
    if (ad) ad->events->setDelegate(delegate);
  }
}

void SKVASTViewController::startReachability() {
  reachability_ = SKReachability::reachabilityWithHostname(SKVASTMediaFilePicker::probeHost());
  if (!reachability_) {
    *network_ = Network::unreachable;
    return;
  }
  reachability_->setReachableOnWWAN(true);
  reachability_->setReachableBlock([network = network_](const auto&) {
    SKLogger::debug(tag, "Network reachable");
    *network = Network::reachable;
  });
  reachability_->setUnreachableBlock([network = network_](const auto&) {
    SKLogger::debug(tag, "Network not reachable");
    *network = Network::unreachable;
  });
  reachability_->startNotifier();
  const auto flags = reachability_->reachabilityRef()->flags();
  if (!flags) return;
  auto unknown = Network::unknown;  // unless a change has been reported meanwhile
  const bool isReachable = reachability_->isReachableWithFlags(*flags);
  network_->compare_exchange_strong(unknown, isReachable ? Network::reachable : Network::unreachable);
}

void SKVASTViewController::addObservers() {
  if (std::exchange(isObserving_, true)) return;
  const auto weak = std::weak_ptr(own());
  auto& center = NSNotificationCenter::defaultCenter();
  center.addObserver(this, UIApplicationDidBecomeActiveNotification, nullptr,
                     weakly(weak, &SKVASTViewController::applicationDidBecomeActive));
  center.addObserver(this, UIApplicationDidEnterBackgroundNotification, nullptr,
                     weakly(weak, &SKVASTViewController::applicationDidEnterBackground));
}

void SKVASTViewController::removeObservers() {
  isObserving_ = false;
  NSNotificationCenter::defaultCenter().removeObserver(this);
}

// As when it is destroyed; besides, no view may outlive Qt.
void SKVASTViewController::applicationWillTerminate() {
  const auto self = own();
  const auto presenter = presentingViewController();
  stage_ = Stage::over;
  setDelegate({});
  removeObservers();
  if (reachability_) reachability_->stopNotifier();
  stopTimers();
  film_ = nullptr;
  nextFilm_.letGo();
  wakefulness_.setAwake(false);
  if (presenter) presenter->dismissViewControllerAnimated(false);
  if (isViewLoaded()) view()->removeFromSuperview();
  setView(nullptr);
  controls_ = nullptr;
  skipButton_ = nullptr;
  indicator_ = nullptr;
  picture_ = nullptr;
  shown_ = ad_ = nullptr;
}

void SKVASTViewController::loadView() {
  if (stage_ == Stage::over) return UIViewController::loadView();
  const auto root = std::make_shared<UIView>();
  root->setBackgroundColor(UIColor::blackColor());
  picture_ = std::make_shared<UIView>();
  addSubViewWithAutolayout(root, picture_);
  indicator_ = std::make_shared<UIActivityIndicatorView>();
  indicator_->setTranslatesAutoresizingMaskIntoConstraints(false);
  root->addSubview(indicator_);
  const auto constrain = [&](NSLayoutAttribute attribute, const std::shared_ptr<UIView>& to, double constant) {
    root->addConstraint(NSLayoutConstraint::constraintWithItem(indicator_, attribute, NSLayoutRelationEqual, to,
                                                               to ? attribute : NSLayoutAttributeNotAnAttribute, 1,
                                                               constant));
  };
  constrain(NSLayoutAttributeCenterX, root, 0);
  constrain(NSLayoutAttributeCenterY, root, 0);
  constrain(NSLayoutAttributeWidth, nullptr, 50);
  constrain(NSLayoutAttributeHeight, nullptr, 50);
  setView(root);
}

void SKVASTViewController::viewDidLoad() {
  if (stage_ == Stage::over) return;
  controls_ = SKVASTControls::initWithVASTPlayer(own());
  setUpTapGestureRecognizer();
  addSkipButton();
}

bool SKVASTViewController::shouldAutorotate() const {
  const auto& supported = UIApplication::sharedApplication().supportedInterfaceOrientations();
  const auto supports = [&](const char* name) {
    return std::find(supported.begin(), supported.end(), name) != supported.end();
  };
  return supports("UIInterfaceOrientationLandscapeLeft") && supports("UIInterfaceOrientationLandscapeRight");
}

UIInterfaceOrientation SKVASTViewController::preferredInterfaceOrientationForPresentation() const {
  return UIApplication::sharedApplication().statusBarOrientation();
}

std::optional<NSURL> SKVASTViewController::clickThrough() const {
  const auto* ad = current();
  return ad ? ad->clickThrough : std::nullopt;
}

std::shared_ptr<SKVASTEventProcessor> SKVASTViewController::eventProcessor() const {
  const auto* ad = current();
  return ad ? ad->events : nullptr;
}

void SKVASTViewController::loadVideoWithURL(const std::optional<NSURL>& url) {
  loadVideoUsingSource(url);
}

void SKVASTViewController::loadVideoWithData(const VASTDocument& document) {
  loadVideoUsingSource(document);
}

void SKVASTViewController::loadVideoUsingSource(const Source& source) {
  YMR_ASSERT_MAIN_THREAD();
  if (stage_ == Stage::over) return;
  if (isLoading_) return SKLogger::warning(tag, "Ignoring loadVideo because a load is in progress.");
  const auto self = own();
  addObservers();
  ad_ = nullptr;
  nextFilm_.letGo();
  if (!networkCurrentlyReachable()) return refuseWithoutNetwork();
  isLoading_ = true;
  const auto didLoad = weakly(
      std::weak_ptr(self),
      [](SKVASTViewController& screen, const std::shared_ptr<YMRVastModel>& model) { screen.vastDidLoad(*model); });
  SKVAST2ParserOptions options;
  options.profile = tagProfile_;
  options.macroValues = macroValues();
  SKVAST2Parser parser(std::move(options));
  if (const auto* url = std::get_if<std::optional<NSURL>>(&source)) {
    parser.parseWithUrl(*url, didLoad);
  } else {
    parser.parseWithData(std::get<VASTDocument>(source), didLoad);
  }
}

void SKVASTViewController::vastDidLoad(YMRVastModel& model) {
  const auto self = own();
  isLoading_ = false;
  if (stage_ == Stage::over) return;
  std::optional<SKVASTError> failure;  // of the first ad, which is the one reported
  std::string reason;
  for (YMRAdQueue queue(model); !queue.isEmpty();) {
    const auto next = queue.next();
    const auto ad = std::make_shared<Ad>();
    ad->prepared = queue.takeNext();
    ad->events = std::make_shared<SKVASTEventProcessor>(ad->prepared.trackingEvents, delegate_);
    ad->events->setProgress(ad->prepared.progress);
    ad->events->setRules(ad->prepared.rules(), [weak = std::weak_ptr(self), weakAd = std::weak_ptr(ad)] {
      const auto screen = weak.lock();
      return screen ? screen->macroValues(weakAd.lock().get()) : VASTMacroValues();
    });
    if (!ad->prepared.failure) {
      const auto click = next->clickThrough();
      ad->clickThrough = click ? click->url() : std::nullopt;
      ad->clickTracking = next->clickTracking();
      ad_ = ad;
      SKLogger::debug(tag, "Sending vastReady: callback");
      return callDelegate(tag, delegate_, &SKVASTViewControllerDelegate::vastReady, self);
    }
    ad->events->sendVASTError(ad->prepared.errors, ad->prepared.errorCode());
    if (failure) continue;
    failure = ad->prepared.failure;
    reason = ad->prepared.reason;
  }
  SKLogger::error(tag, failure == SKVASTErrorMediaFileNotCompatible
                           ? "Error - VASTMediaFilePicker did not find a compatible mediaFile - VASTViewcontroller "
                             "will not be presented"
                           : "parser error");
  tellError(failure.value_or(SKVASTErrorNoAd), reason);
}

void SKVASTViewController::refuseWithoutNetwork() {
  SKLogger::error(tag, "No network available - VASTViewcontroller will not be presented");
  tellError(SKVASTErrorNoInternet);
}

void SKVASTViewController::tellError(SKVASTError error, const std::string& reason) {
  errorMessage_ = YMRPlayerErrorHandler::messageOf(error, reason);
  callDelegate(tag, delegate_, &SKVASTViewControllerDelegate::vastError, own(), error);
}
