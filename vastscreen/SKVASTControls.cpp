#include "vastscreen/SKVASTControls.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSString.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIProgressView.h"
#include "platform/uikit/UIToolbar.h"

namespace {

// The playback time with its progress to the right of it, in the middle of the bar. Sizes in points of a bar of
// standard height.
class TimeView final : public UIView {
 public:
  TimeView(std::shared_ptr<UILabel> time, std::shared_ptr<UIProgressView> progress)
      : time_(std::move(time)), progress_(std::move(progress)) {
    connect(time_.get(), &UILabel::contentSizeChanged, this, &UIView::setNeedsLayout);
  }

 protected:
  void layoutSubviews() override {
    const CGSize size = bounds().size;
    const double unit = size.height / UIToolbar::standardHeight;
    time_->setFont(UIFont::systemFontOfSize(36 * unit, UIFont::weightMedium));
    const double timeWidth = std::min(size.width, time_->intrinsicContentSize().width);
    const double lineStart = (timeWidth > 0 ? timeWidth + 32 * unit : 0) + 12 * unit;
    const double lineHeight = 12 * unit;
    time_->setFrame(CGRectMake(12 * unit, 0, timeWidth, size.height));
    progress_->setFrame(CGRectMake(lineStart, (size.height - lineHeight) / 2, size.width - lineStart, lineHeight));
  }

 private:
  const std::shared_ptr<UILabel> time_;
  const std::shared_ptr<UIProgressView> progress_;
};

std::shared_ptr<UIBarButtonItem> fixedSpace(double width) {
  auto space = std::make_shared<UIBarButtonItem>(UIBarButtonSystemItemFixedSpace);
  space->setWidth(width);
  return space;
}

// At the foot of a view of this size.
CGRect barFrame(const CGSize& size) {
  const double height = UIToolbar::standardHeight * std::min(size.height / 1080, size.width / 1600);
  return CGRectMake(size.width * 0.05, size.height * 0.95 - height, size.width * 0.9, height);
}

}  // namespace

std::shared_ptr<SKVASTControls> SKVASTControls::initWithVASTPlayer(const std::weak_ptr<SKVASTControlsTarget>& player) {
  YMR_ASSERT_MAIN_THREAD();
  const auto target = player.lock();
  if (!target) return nullptr;
  auto controls = std::shared_ptr<SKVASTControls>(new SKVASTControls(player));
  controls->build(target->view());
  return controls;
}

void SKVASTControls::build(const std::shared_ptr<UIView>& view) {
  using Handler = void (SKVASTControls::*)(const UIBarButtonItem*);
  const auto button = [weak = weak_from_this()](UIBarButtonSystemItem kind, Handler handler) {
    return std::make_shared<UIBarButtonItem>(
        kind, weakly(weak, [handler](SKVASTControls& self, UIBarButtonItem& sender) { (self.*handler)(&sender); }));
  };
  toolbar_ = std::make_shared<UIToolbar>();
  playbackTime_ = std::make_shared<UILabel>();
  progressView_ = std::make_shared<UIProgressView>();
  progressView_->setTrackTintColor(UIColor::lightGrayColor());
  const auto time = std::make_shared<TimeView>(playbackTime_, progressView_);
  time->addSubview(playbackTime_);
  time->addSubview(progressView_);

  pausePlayItem_ = button(UIBarButtonSystemItemPlayPause, &SKVASTControls::pausePlay);
  toolbar_->setItems({pausePlayItem_, fixedSpace(16), std::make_shared<UIBarButtonItem>(time), fixedSpace(42),
                      button(UIBarButtonSystemItemInfo, &SKVASTControls::info), fixedSpace(22),
                      button(UIBarButtonSystemItemStop, &SKVASTControls::stopButtonTouched)});
  toolbar_->setUsed(weakly(weak_from_this(), [](SKVASTControls& self) {
    if (self.isShowing()) self.hideLater();
  }));
  toolbar_->setHidden(true);
  view->addSubview(toolbar_);
  const auto fit = [bar = toolbar_.get(), view = view.get()] { bar->setFrame(barFrame(view->bounds().size)); };
  QObject::connect(view.get(), &QQuickItem::widthChanged, toolbar_.get(), fit);
  QObject::connect(view.get(), &QQuickItem::heightChanged, toolbar_.get(), fit);
  fit();
}

SKVASTControls::~SKVASTControls() {
  if (!toolbar_) return;
  hideControls();
  toolbar_->removeFromSuperview();
}

bool SKVASTControls::isShowing() const {
  return !toolbar_->isHidden();
}

void SKVASTControls::showControls() {
  YMR_ASSERT_MAIN_THREAD();
  const auto view = toolbar_->superview();
  if (!view) return;
  if (!isShowing()) toolbar_->setFocusedItem(pausePlayItem_);
  toolbar_->setHidden(false);
  view->bringSubviewToFront(toolbar_);
  if (view->isFirstResponder()) toolbar_->becomeFirstResponder();
  hideLater();
}

void SKVASTControls::hideLater() {
  hideTimer_ = NSTimer::scheduledTimerWithTimeInterval(
      stays, false, [this] { toolbar_->isPressed() ? hideLater() : hideControls(); });
}

void SKVASTControls::hideControls() {
  YMR_ASSERT_MAIN_THREAD();
  hideTimer_ = nullptr;
  const auto view = toolbar_->superview();
  if (view && toolbar_->isFirstResponder()) view->becomeFirstResponder();
  toolbar_->setHidden(true);
}

void SKVASTControls::pausePlay(const UIBarButtonItem*) {
  const auto player = player_.lock();
  if (!player) return;
  player->isPlaying() ? player->pause() : player->resume();
}

void SKVASTControls::info(const UIBarButtonItem*) {
  if (const auto player = player_.lock()) player->info();
}

void SKVASTControls::stopButtonTouched(const UIBarButtonItem*) {
  if (const auto player = player_.lock()) player->close();
}

void SKVASTControls::toggleToPlayButton(bool) {}

void SKVASTControls::updateProgressBar(double, double playedSeconds, double totalDuration) {
  YMR_ASSERT_MAIN_THREAD();
  progressView_->setProgress(totalDuration > 0 ? playedSeconds / totalDuration : 0);
  // Past this no ad goes, and the conversion stays defined.
  const auto whole = [](double seconds) { return seconds > 0 ? int(std::min(seconds, 1e9)) : 0; };
  const int played = whole(playedSeconds);
  const int total = whole(totalDuration);
  playbackTime_->setText(stringWithFormat("%02d:%02d / %02d:%02d", {played / 60, played % 60, total / 60, total % 60}));
}
