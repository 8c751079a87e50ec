#include "ads/YMROutlinedLabel.h"

#include <algorithm>
#include <cmath>
#include <utility>

YMROutlinedLabel::YMROutlinedLabel(QQuickItem* parent) : UILabel(parent) {
  commonInit();
}

YMROutlinedLabel::YMROutlinedLabel(const CGRect& frame) : YMROutlinedLabel() {
  setFrame(frame);
}

YMROutlinedLabel::~YMROutlinedLabel() = default;

void YMROutlinedLabel::commonInit() {
  setTextAlignment(NSTextAlignmentCenter);
  setNumberOfLines(0);
}

std::shared_ptr<YMROutlinedLabel> YMROutlinedLabel::init() {
  auto label = std::make_shared<YMROutlinedLabel>();
  label->setTextAlignment(NSTextAlignmentNatural);
  label->setNumberOfLines(1);
  return label;
}

void YMROutlinedLabel::setParagraphStyle(std::optional<NSParagraphStyle> style) {
  paragraphStyle_ = style;
  setNeedsDisplay();
}

void YMROutlinedLabel::setBackgroundAttributes(std::optional<NSTextAttributes> attributes) {
  backgroundAttributes_ = std::move(attributes);
  setNeedsDisplay();
}

void YMROutlinedLabel::setForegroundAttributes(std::optional<NSTextAttributes> attributes) {
  foregroundAttributes_ = std::move(attributes);
  setNeedsDisplay();
}

void YMROutlinedLabel::drawTextInRect(QPainter& painter, const CGRect& rect) {
  const std::string plain = text().value_or("");
  if (plain.empty()) return UILabel::drawTextInRect(painter, rect);
  if (!paragraphStyle_) paragraphStyle_ = NSParagraphStyle{textAlignment()};
  if (!backgroundAttributes_) {
    backgroundAttributes_ = {.font = font(),
                             .foregroundColor = strokeColor_,
                             .strokeColor = strokeColor_,
                             .strokeWidth = -strokeWidth_,
                             .paragraphStyle = paragraphStyle_};
  }
  setAttributedText(NSAttributedString(plain, *backgroundAttributes_));
  UILabel::drawTextInRect(painter, rect);
  if (!foregroundAttributes_) {
    foregroundAttributes_ = {.font = font(), .foregroundColor = foregroundColor_, .paragraphStyle = paragraphStyle_};
  }
  drawAttributedString(painter, NSAttributedString(plain, *foregroundAttributes_), rect, drawingContext());
}

// With the look that the text will have, whatever has been set on the label since.
std::optional<NSAttributedString> YMROutlinedLabel::drawnText() const {
  const auto plain = text();
  if (!plain || !backgroundAttributes_) return UILabel::drawnText();
  return NSAttributedString(*plain, *backgroundAttributes_);
}

double YMROutlinedLabel::contentMargin() const {
  const NSTextAttributes look = backgroundAttributes_.value_or(NSTextAttributes{.strokeWidth = strokeWidth_});
  const double outside = std::min(std::abs(look.strokeWidth), 100.0) / 200;
  return look.font.value_or(font()).pointSize * std::max(outside, 1.0 / 8);
}
