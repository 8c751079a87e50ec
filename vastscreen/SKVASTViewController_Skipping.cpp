// The stand-alone ad screen: the button that skips its ad, and how it shares the remote with the controls.
#include <algorithm>
#include <cmath>

#include "ads/core/SKVASTEventProcessor.h"
#include "platform/dispatch/Weakly.h"
#include "platform/uikit/UIToolbar.h"
#include "vastscreen/SKVASTViewController.h"

namespace {

// At the right, above the toolbar, whether that is to be seen or not; scaled as the screen is to one of 1080.
void place(YMRSkipButton& button, const CGSize& size) {
  constexpr double gap = 28;
  const double unit = std::min(size.height / 1080, size.width / 1600);
  const CGSize own = button.intrinsicContentSize();
  button.setScale(unit);
  button.setFrame(CGRectMake(std::round(size.width * 0.95 - own.width * unit),
                             std::round(size.height * 0.95 - (UIToolbar::standardHeight + gap + own.height) * unit),
                             own.width, own.height));
}

}  // namespace

void SKVASTViewController::addSkipButton() {
  skipButton_ = std::make_shared<YMRSkipButton>();
  skipButton_->setTransformOrigin(QQuickItem::TopLeft);
  skipButton_->setPressed(weakly(std::weak_ptr(own()), &SKVASTViewController::skip));
  view()->addSubview(skipButton_);
  auto* const button = skipButton_.get();
  const auto fit = [button, root = view().get()] { place(*button, root->bounds().size); };
  QObject::connect(view().get(), &QQuickItem::widthChanged, button, fit);
  QObject::connect(view().get(), &QQuickItem::heightChanged, button, fit);
  QObject::connect(button, &UILabel::contentSizeChanged, button, fit);
  fit();
  const auto* const bar = controls_->toolbar().get();
  QObject::connect(bar, &QQuickItem::visibleChanged, button, [button, bar] { button->setHasRemote(bar->isHidden()); });
}

void SKVASTViewController::offerSkipping(double second, double duration) {
  const auto& offset = shown_->prepared.skipOffset;
  const bool isOffered = offset && allowsSkipping_ && !shown_->hasEnded;
  skipButton_->setSecondsLeft(isOffered ? offset->secondsLeft(second, duration) : std::nullopt);
}

void SKVASTViewController::skip() {
  if (stage_ != Stage::presented) return;
  shown_->hasEnded = true;
  shown_->events->trackSkip();
  close();
}

bool SKVASTViewController::skipTakesPress(UIPressType type) {
  skipIsDown_ = false;
  if (stage_ != Stage::presented || !skipButton_->isReady()) return false;
  const bool controlsShow = controls_->isShowing();
  if (type == UIPressTypeUpArrow && controlsShow) {
    controls_->hideControls();
    return true;
  }
  return skipIsDown_ = type == UIPressTypeSelect && !controlsShow;
}
