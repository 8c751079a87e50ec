#include "ads/YMRSkipButton.h"

#include <QPainter>
#include <QPainterPath>

#include "ads/YMRAdSchedule.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSString.h"
#include "platform/uikit/QtValues.h"

namespace {

// Of a screen 1080 points high.
constexpr double buttonHeight = 88;
constexpr double margin = 40;
constexpr double gap = 22;
constexpr double glyphWidth = 34;
constexpr double glyphHeight = 32;

// The colours of the player's own controls.
constexpr UIColor plate = UIColor::colorWithRed(20 / 255.0, 22 / 255.0, 25 / 255.0, 0.86);
constexpr UIColor accent = UIColor::colorWithRed(1, 0xb8 / 255.0, 0x1c / 255.0, 1);
constexpr UIColor onAccent = UIColor::colorWithWhite(20 / 255.0, 1);

// On to what comes next: a triangle and the bar that it runs against.
void drawGlyph(QPainter& painter, const QPointF& topLeft) {
  QPainterPath triangle(topLeft);
  triangle.lineTo(topLeft + QPointF(glyphWidth - 9, glyphHeight / 2));
  triangle.lineTo(topLeft + QPointF(0, glyphHeight));
  triangle.closeSubpath();
  painter.drawPath(triangle);
  painter.drawRoundedRect(QRectF(topLeft.x() + glyphWidth - 7, topLeft.y(), 7, glyphHeight), 2, 2);
}

}  // namespace

YMRSkipButton::YMRSkipButton(QQuickItem* parent) : UILabel(parent) {
  setFont(UIFont::systemFontOfSize(38, UIFont::weightSemibold));
  confWithAdSchedule(std::make_shared<YMRAdSchedule>());
  follow();
}

YMRSkipButton::~YMRSkipButton() = default;

void YMRSkipButton::confWithAdSchedule(const std::shared_ptr<YMRAdSchedule>& adSchedule) {
  if (!adSchedule) return;
  skipText_ = adSchedule->adSkipText();
  countdownText_ = adSchedule->adSkipCountdownText();
}

void YMRSkipButton::setSecondsLeft(std::optional<std::int64_t> seconds) {
  YMR_ASSERT_MAIN_THREAD();
  if (seconds == secondsLeft_) return;
  secondsLeft_ = seconds;
  follow();
}

void YMRSkipButton::setHasRemote(bool hasRemote) {
  YMR_ASSERT_MAIN_THREAD();
  if (hasRemote == hasRemote_) return;
  hasRemote_ = hasRemote;
  follow();
}

void YMRSkipButton::follow() {
  setHidden(!secondsLeft_);
  setUserInteractionEnabled(isReady());
  if (!secondsLeft_) return;
  setTextColor(isReady() && hasRemote_ ? onAccent : UIColor::whiteColor());
  setText(isReady() ? skipText_ : stringWithFormat(countdownText_, {*secondsLeft_}));
  setNeedsDisplay();
  Q_EMIT contentSizeChanged();  // the glyph comes and goes
}

void YMRSkipButton::press() {
  if (!isReady()) return;
  const auto alive = weak_from_this().lock();
  if (const auto pressed = pressed_) pressed();
}

CGSize YMRSkipButton::intrinsicContentSize() const {
  const double text = UILabel::intrinsicContentSize().width;
  return {margin + text + (isReady() ? gap + glyphWidth : 0) + margin, buttonHeight};
}

void YMRSkipButton::drawTextInRect(QPainter& painter, const CGRect& rect) {
  const bool isFocused = isReady() && hasRemote_;
  painter.setPen(Qt::NoPen);
  painter.setBrush(toQColor(isFocused ? accent : plate));
  painter.drawRoundedRect(QRectF(0, 0, rect.size.width, rect.size.height), rect.size.height / 2, rect.size.height / 2);
  painter.setBrush(toQColor(textColor()));
  double textWidth = rect.size.width - 2 * margin;
  if (isReady()) {
    textWidth -= gap + glyphWidth;
    drawGlyph(painter, {rect.size.width - margin - glyphWidth, (rect.size.height - glyphHeight) / 2});
  }
  UILabel::drawTextInRect(painter, CGRectMake(margin, 0, textWidth, rect.size.height));
}

void YMRSkipButton::touchesEnded(const UIEvent& event) {
  const CGPoint place = event.allTouches().front().locationInView(*this);
  if (boundingRect().contains(place.x, place.y)) press();
}
