#include "ads/YMRAdContainerView.h"

#include <QCoreApplication>
#include <QQmlEngine>
#include <utility>

#include "ads/YMRAdSchedule.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/PerformSelector.h"
#include "platform/uikit/UINib.h"

// Outside every namespace, as Qt asks; it also makes the linker take the resource out of the archive.
static void takeResources() {
  Q_INIT_RESOURCE(ads);
}

namespace {

// How long an ad may take before the viewer is told that it loads, and how fast that comes up.
constexpr auto unseenWaitLimit = std::chrono::milliseconds(500);
constexpr auto fading = std::chrono::milliseconds(250);

void registerTypes() {
  takeResources();
  qmlRegisterType<YMRAdContainerView>("YMRAds", 1, 0, "YMRAdContainerView");
  qmlRegisterType<YMROutlinedLabel>("YMRAds", 1, 0, "YMROutlinedLabel");
  qmlRegisterType<YMRSkipButton>("YMRAds", 1, 0, "YMRSkipButton");
}

template <typename View>
std::shared_ptr<View> held(View* view) {
  return view ? std::static_pointer_cast<View>(view->weak_from_this().lock()) : nullptr;
}

}  // namespace

YMRAdContainerView::YMRAdContainerView(QQuickItem* parent) : UIView(parent) {}

YMRAdContainerView::~YMRAdContainerView() {
  cancelPreviousPerformRequestsWithTarget(this);
}

std::shared_ptr<YMRAdContainerView> YMRAdContainerView::make() {
  YMR_ASSERT_MAIN_THREAD();
  if (QCoreApplication::instance()) {
    static const bool registered = (registerTypes(), true);
    static_cast<void>(registered);
    const auto view = std::dynamic_pointer_cast<YMRAdContainerView>(UINib::instantiate("YMRAdContainerView"));
    if (view && view->label_ && view->adPlayerView_ && view->lastPictureView_ && view->indicator_ && view->skipButton_)
      return view;
  }
  const auto bare = std::make_shared<YMRAdContainerView>();
  const auto add = [&bare](const auto& part) {
    bare->addSubview(part);
    return part.get();
  };
  bare->adPlayerView_ = add(std::make_shared<UIView>());
  bare->lastPictureView_ = add(std::make_shared<UIView>());
  bare->indicator_ = add(std::make_shared<UIActivityIndicatorView>());
  bare->label_ = add(std::make_shared<YMROutlinedLabel>());
  bare->skipButton_ = add(std::make_shared<YMRSkipButton>());
  return bare;
}

std::shared_ptr<YMROutlinedLabel> YMRAdContainerView::timeRemainLabel() const {
  return held(label_.data());
}

std::shared_ptr<UIView> YMRAdContainerView::adPlayerView() const {
  return held(adPlayerView_.data());
}

std::shared_ptr<UIActivityIndicatorView> YMRAdContainerView::loadingIndicator() const {
  return held(indicator_.data());
}

std::shared_ptr<YMRSkipButton> YMRAdContainerView::skipButton() const {
  return held(skipButton_.data());
}

void YMRAdContainerView::confWithAdSchedule(const std::shared_ptr<YMRAdSchedule>& adSchedule) {
  YMR_ASSERT_MAIN_THREAD();
  if (const auto button = skipButton()) button->confWithAdSchedule(adSchedule);
  const auto label = timeRemainLabel();
  if (!label || !adSchedule) return;
  label->setFont(adSchedule->adCountdownFont());
  label->setTextColor(adSchedule->adCountdownTextColor());
  label->setStrokeWidth(adSchedule->adCountdownStrokeWidth());
  label->setStrokeColor(adSchedule->adCountdownStrokeColor());
}

void YMRAdContainerView::awaitPicture() {
  endWaiting();
  setAlpha(0);
  setPatient(true);
  performSelectorAfterDelay(this, "waitLonger", unseenWaitLimit, [this] {
    setPatient(false);
    if (alpha() < 1) animateWithDuration(fading, [this] { setAlpha(1); });
  });
}

void YMRAdContainerView::pictureDidArrive() {
  dropKeptPicture();
  setAlpha(1);
}

void YMRAdContainerView::endWaiting() {
  cancelPreviousPerformRequestsWithTarget(this);
  setPatient(false);
  setAlpha(1);
  dropKeptPicture();
}

void YMRAdContainerView::keepPicture(const std::shared_ptr<CALayer>& layer) {
  if (!layer || !lastPictureView_) return;
  dropKeptPicture();
  cancelPreviousPerformRequestsWithTarget(this, "dropKeptPicture");
  lastPictureView_->layer()->addSublayer(layer);
  performSelectorAfterDelay(this, "dropKeptPicture", unseenWaitLimit, [this] { dropKeptPicture(); });
}

void YMRAdContainerView::dropKeptPicture() {
  if (!lastPictureView_) return;
  for (const auto kept = lastPictureView_->layer()->sublayers(); const auto& layer : kept)
    layer->removeFromSuperlayer();
}

void YMRAdContainerView::setPatient(bool patient) {
  if (std::exchange(isPatient_, patient) != patient) Q_EMIT patienceDidChange();
}
