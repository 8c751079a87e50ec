#include "ads/YMROutlinedLabel.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Markup has colours in 256 steps, and no opacity.
bool looksLike(const UIColor& one, const UIColor& other) {
  const auto isNear = [](double a, double b) { return std::abs(a - b) < 1.0 / 255; };
  return isNear(one.red, other.red) && isNear(one.green, other.green) && isNear(one.blue, other.blue);
}

}  // namespace

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

void YMROutlinedLabel::setAttributedText(std::optional<NSAttributedString> text) {
  if (text == attributedText()) return;  // what was drawn, handed back, has lost its runs
  runs_ = text.value_or(NSAttributedString()).runs;
  UILabel::setAttributedText(std::move(text));
}

NSAttributedString YMROutlinedLabel::inTheLookOf(const NSTextAttributes& attributes) const {
  NSAttributedString text;
  for (const auto& [characters, own] : runs_) {
    NSTextAttributes look = attributes;
    if (own.font) {
      if (!look.font) look.font = font();
      look.font->italic = look.font->italic || own.font->italic;
      look.font->weight = std::max(look.font->weight, own.font->weight);
    }
    look.underline = look.underline || own.underline;
    text.runs.push_back({characters, look});
  }
  return text;
}

bool YMROutlinedLabel::isOfTheBody(const std::optional<UIColor>& color) const {
  return !color || looksLike(*color, textColor()) || looksLike(*color, foregroundColor_);
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
  UILabel::setAttributedText(NSAttributedString(plain, *backgroundAttributes_));
  if (!foregroundAttributes_) {
    foregroundAttributes_ = {.font = font(), .foregroundColor = foregroundColor_, .paragraphStyle = paragraphStyle_};
  }
  NSAttributedString letters = inTheLookOf(*foregroundAttributes_);
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    const auto& own = runs_[i].attributes.foregroundColor;
    if (!isOfTheBody(own)) letters.runs[i].attributes.foregroundColor = own;
  }
  drawAttributedStrings(painter, {inTheLookOf(*backgroundAttributes_), letters}, rect, drawingContext());
}

// In the look that the text will have, whatever has been set on the label since.
std::optional<NSAttributedString> YMROutlinedLabel::drawnText() const {
  if (!text()) return std::nullopt;
  return inTheLookOf(backgroundAttributes_.value_or(NSTextAttributes{.font = font()}));
}

double YMROutlinedLabel::contentMargin() const {
  const NSTextAttributes look = backgroundAttributes_.value_or(NSTextAttributes{.strokeWidth = strokeWidth_});
  const double outside = std::min(std::abs(look.strokeWidth), 100.0) / 200;
  return look.font.value_or(font()).pointSize * std::max(outside, 1.0 / 8);
}
