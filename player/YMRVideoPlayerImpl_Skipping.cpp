// Skipping an ad: when that is offered, what a press does, and a press that comes too late.
#include <chrono>
#include <utility>

#include "ads/core/SKVASTEventProcessor.h"
#include "platform/dispatch/Weakly.h"
#include "player/YMRVideoPlayerImpl.h"

namespace {

// Whoever presses twice, or just as the ad ends by itself, means the ad.
constexpr std::chrono::milliseconds latePressLimit{600};

}  // namespace

void YMRVideoPlayerImpl::addSkipping() {
  const auto button = adContainerView_->skipButton();
  button->setPressed(weakly(weak_from_this(), &YMRVideoPlayerImpl::skipAd));
  const auto skip = std::make_shared<UITapGestureRecognizer>([held = std::weak_ptr(button)](const auto&) {
    if (const auto one = held.lock()) one->press();
  });
  skip->setAllowedPressTypes({UIPressTypeSelect});
  adContainerView_->addGestureRecognizer(skip);
  enterGuard_ = std::make_shared<UITapGestureRecognizer>([](const auto&) {});
  avPlayerVC_->view()->addGestureRecognizer(enterGuard_);
}

// How long the film really is counts, which may be known only later.
void YMRVideoPlayerImpl::offerSkipping(double second) {
  const auto button = adContainerView_->skipButton();
  if (!button) return;
  const bool isAllowed = ad_.skipOffset && (!adSchedule_ || adSchedule_->allowsSkipping());
  button->setSecondsLeft(isAllowed ? ad_.skipOffset->secondsLeft(second, adDuration()) : std::nullopt);
}

// In place of its completion. Nothing that the film still does, its end included, is heard of any more.
void YMRVideoPlayerImpl::skipAd() {
  if (!isPlayingAd_) return;
  const auto number = adNumber_;
  isPlayingAd_ = false;
  removeObserverOfAdPlayer();
  endSkipping();
  eventProcessor_->trackSkip();
  tell(&YMRVideoPlayerDelegate::videoAdOnSkip, currentAdBreak_);
  if (isAtHand(number) && endPod()) adPlayDidEnd(true, true);
}

void YMRVideoPlayerImpl::endSkipping() {
  const auto button = adContainerView_->skipButton();
  if (!button) return;
  if (button->isReady()) {
    enterGuard_->setAllowedPressTypes({UIPressTypeSelect});
    enterGuardTime_ = NSTimer::scheduledTimerWithTimeInterval(
        latePressLimit, false, [guard = enterGuard_] { guard->setAllowedPressTypes({}); });
  }
  button->setSecondsLeft(std::nullopt);
}
