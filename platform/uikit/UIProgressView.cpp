#include "platform/uikit/UIProgressView.h"

#include <QPainter>
#include <algorithm>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/QtValues.h"

UIProgressView::UIProgressView(const CGRect& frame) {
  setFrame(frame);
  setDrawsContent(true);
}

UIProgressView::~UIProgressView() = default;

void UIProgressView::setProgress(double progress) {
  YMR_ASSERT_MAIN_THREAD();
  progress = progress > 0 ? std::min(progress, 1.0) : 0;
  if (progress_ == progress) return;
  progress_ = progress;
  setNeedsDisplay();
}

void UIProgressView::setTrackTintColor(const UIColor& color) {
  trackTintColor_ = color;
  setNeedsDisplay();
}

CGSize UIProgressView::intrinsicContentSize() const {
  return {noIntrinsicMetric, 10};
}

void UIProgressView::drawRect(QPainter& painter, const CGRect& rect) {
  const double width = rect.size.width;
  const double height = rect.size.height;
  const auto line = [&](double length, double thickness, const UIColor& color) {
    painter.setBrush(toQColor(color));
    painter.drawRoundedRect(QRectF(0, (height - thickness) / 2, length, thickness), thickness / 2, thickness / 2);
  };
  painter.setPen(Qt::NoPen);
  line(width, height / 2, trackTintColor_);
  if (progress_ > 0) line(std::max(std::min(height, width), width * progress_), height, UIColor::whiteColor());
}
