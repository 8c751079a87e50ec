#include "platform/uikit/UILabel.h"

#include <QScopeGuard>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/NSAttributedStringDrawing.h"
#include "platform/uikit/values/UIScreen.h"

UILabel::UILabel(QQuickItem* parent) : UIView(parent) {
  setDrawsContent(true);
}

UILabel::UILabel(const CGRect& frame) : UILabel() {
  setFrame(frame);
}

UILabel::~UILabel() = default;

void UILabel::changed() {
  YMR_ASSERT_MAIN_THREAD();
  if (drawing_) return;
  setNeedsDisplay();
  invalidateIntrinsicContentSize();
  Q_EMIT contentSizeChanged();
}

std::optional<std::string> UILabel::text() const {
  if (!text_) return std::nullopt;
  return text_->string();
}

void UILabel::setText(std::optional<std::string> text) {
  std::optional<NSAttributedString> plain;
  if (text) plain.emplace(std::move(*text), NSTextAttributes{});
  setAttributedText(std::move(plain));
}

std::optional<NSAttributedString> UILabel::attributedText() const {
  auto text = text_;
  if (!text) return text;
  for (auto& run : text->runs) {
    if (!run.attributes.font) run.attributes.font = font_;
    if (!run.attributes.foregroundColor) run.attributes.foregroundColor = textColor_;
  }
  return text;
}

void UILabel::setAttributedText(std::optional<NSAttributedString> text) {
  if (text_ == text) return;
  text_ = std::move(text);
  changed();
}

void UILabel::setFont(const UIFont& font) {
  if (font_ == font) return;
  font_ = font;
  changed();
}

void UILabel::setTextColor(const UIColor& color) {
  if (textColor_ == color) return;
  textColor_ = color;
  changed();
}

void UILabel::setTextAlignment(NSTextAlignment alignment) {
  if (alignment_ == alignment) return;
  alignment_ = alignment;
  changed();
}

void UILabel::setNumberOfLines(int lines) {
  if (numberOfLines_ == lines) return;
  numberOfLines_ = lines;
  changed();
}

void UILabel::setPreferredMaxLayoutWidth(double width) {
  if (preferredMaxLayoutWidth_ == width) return;
  preferredMaxLayoutWidth_ = width;
  invalidateIntrinsicContentSize();
  Q_EMIT contentSizeChanged();
}

NSStringDrawingContext UILabel::drawingContext() const {
  return {font_, textColor_, alignment_, std::max(0, numberOfLines_)};
}

double UILabel::contentMargin() const {
  return font_.pointSize / 8;
}

CGSize UILabel::intrinsicContentSize() const {
  const auto text = drawnText();
  if (!text) return {};
  double width = preferredMaxLayoutWidth_;
  if (numberOfLines_ == 1) {
    width = std::numeric_limits<double>::infinity();
  } else if (width <= 0) {
    width = std::floor(UIScreen::mainScreen().bounds().size.width * 0.9);
  }
  return sizeOfAttributedString(*text, width, drawingContext());
}

double UILabel::intrinsicHeightForWidth(double width) const {
  const auto text = drawnText();
  return text ? sizeOfAttributedString(*text, width, drawingContext()).height : 0;
}

void UILabel::drawRect(QPainter& painter, const CGRect& rect) {
  if (!text_) return;
  drawing_ = true;
  const auto done = qScopeGuard([this] { drawing_ = false; });
  drawTextInRect(painter, rect);
}

void UILabel::drawTextInRect(QPainter& painter, const CGRect& rect) {
  if (text_) drawAttributedString(painter, *text_, rect, drawingContext());
}

QSizeF UILabel::qmlContentSize() const {
  const CGSize size = intrinsicContentSize();
  return {size.width, size.height};
}
