#include "platform/uikit/UIActivityIndicatorView.h"

#include <QPainter>
#include <algorithm>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/QtValues.h"

namespace {

constexpr int dots = 12;
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
  setAnimating(true);
}

void UIActivityIndicatorView::stopAnimating() {
  setAnimating(false);
}

void UIActivityIndicatorView::setAnimating(bool animating) {
  YMR_ASSERT_MAIN_THREAD();
  if (animating == isAnimating()) return;
  const auto step = [this] { setRotation(int(rotation() + 360.0 / dots) % 360); };
  timer_ = animating ? NSTimer::scheduledTimerWithTimeInterval(turn / dots, true, step) : nullptr;
  setHidden(!animating);
  Q_EMIT animatingChanged();
}

CGSize UIActivityIndicatorView::intrinsicContentSize() const {
  return {176, 176};
}

void UIActivityIndicatorView::drawRect(QPainter& painter, const CGRect& rect) {
  const double side = std::min(rect.size.width, rect.size.height);
  painter.translate(rect.size.width / 2, rect.size.height / 2);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0, 0, 0, 140));
  painter.drawEllipse(QPointF(), side / 2, side / 2);
  for (int dot = 0; dot < dots; ++dot) {  // the brightest one last
    const double brightness = std::max(0.14, 1 - (dots - 1 - dot) / 9.0);
    painter.setBrush(toQColor(UIColor::whiteColor().colorWithAlphaComponent(brightness)));
    painter.drawEllipse(QPointF(0, -side * 0.32), side * 0.04, side * 0.04);
    painter.rotate(360.0 / dots);
  }
}
