#include "platform/uikit/UIActivityIndicatorView.h"

#include <QPainter>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/QtValues.h"

namespace {

constexpr int spokes = 12;
constexpr RunLoop::Duration turn = std::chrono::seconds(1);

}  // namespace

UIActivityIndicatorView::UIActivityIndicatorView(QQuickItem* parent) : UIView(parent) {
  setDrawsContent(true);
  setTransformOrigin(Center);
  setHidden(true);
}

UIActivityIndicatorView::UIActivityIndicatorView(const CGRect& frame) : UIActivityIndicatorView() {
  setFrame(frame);
}

UIActivityIndicatorView::~UIActivityIndicatorView() = default;

void UIActivityIndicatorView::startAnimating() {
  YMR_ASSERT_MAIN_THREAD();
  if (timer_) return;
  setHidden(false);
  timer_ = NSTimer::scheduledTimerWithTimeInterval(turn / spokes, true,
                                                   [this] { setRotation(int(rotation() + 360.0 / spokes) % 360); });
}

void UIActivityIndicatorView::stopAnimating() {
  YMR_ASSERT_MAIN_THREAD();
  if (!timer_) return;
  timer_.reset();
  setHidden(true);
}

void UIActivityIndicatorView::setColor(const UIColor& color) {
  color_ = color;
  setNeedsDisplay();
}

CGSize UIActivityIndicatorView::intrinsicContentSize() const {
  return {80, 80};
}

void UIActivityIndicatorView::drawRect(QPainter& painter, const CGRect& rect) {
  const double side = std::min(rect.size.width, rect.size.height);
  painter.translate(rect.size.width / 2, rect.size.height / 2);
  painter.setPen(Qt::NoPen);
  for (int spoke = 0; spoke < spokes; ++spoke) {
    painter.setBrush(toQColor(color_.colorWithAlphaComponent(color_.alpha * (0.15 + 0.85 * (spoke + 1) / spokes))));
    painter.drawRoundedRect(QRectF(-side * 0.04, -side * 0.48, side * 0.08, side * 0.24), side * 0.04, side * 0.04);
    painter.rotate(360.0 / spokes);
  }
}
