// Toolbars: the plate, the buttons and their glyphs.
#include <QPainter>
#include <QPainterPath>
#include <cstddef>

#include "platform/uikit/UIToolbar.h"

namespace {

// The colours of the player's own controls.
constexpr QColor plate(20, 22, 25, 240);
constexpr QColor accent(0xff, 0xb8, 0x1c);
constexpr QColor onAccent(20, 20, 20);
constexpr QColor button(255, 255, 255, 51);
constexpr QColor onButton(255, 255, 255);

// Each glyph is drawn around 0, 0 in points of a bar of standard height, with the painter's brush and a pen of its
// colour, round at the ends.
void drawPlayPause(QPainter& painter) {
  QPainterPath triangle;
  triangle.moveTo(-38, -19);
  triangle.lineTo(-7, 0);
  triangle.lineTo(-38, 19);
  triangle.closeSubpath();
  painter.drawPath(triangle);
  painter.drawRoundedRect(QRectF(13, -19, 6, 38), 1, 1);
  painter.drawRoundedRect(QRectF(32, -19, 6, 38), 1, 1);
}

void drawInfo(QPainter& painter) {
  painter.drawLine(QPointF(0, -4), QPointF(0, 22));
  QPen dot = painter.pen();
  dot.setWidthF(13);
  painter.setPen(dot);
  painter.drawPoint(QPointF(0, -21));
}

void drawStop(QPainter& painter) {
  painter.drawLine(QPointF(-16, -16), QPointF(16, 16));
  painter.drawLine(QPointF(-16, 16), QPointF(16, -16));
}

void drawGlyph(QPainter& painter, UIBarButtonSystemItem item, const QColor& color) {
  const double stroke = item == UIBarButtonSystemItemPlayPause ? 5 : 9;
  painter.setBrush(color);
  painter.setPen(QPen(color, stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  switch (item) {
    case UIBarButtonSystemItemPlayPause:
      return drawPlayPause(painter);
    case UIBarButtonSystemItemInfo:
      return drawInfo(painter);
    case UIBarButtonSystemItemStop:
      return drawStop(painter);
    case UIBarButtonSystemItemFixedSpace:
      return;
  }
}

}  // namespace

void UIToolbar::drawRect(QPainter& painter, const CGRect& rect) {
  painter.scale(unit(), unit());
  painter.setPen(Qt::NoPen);
  painter.setBrush(plate);
  painter.drawRoundedRect(QRectF(0, 0, rect.size.width / unit(), standardHeight), standardHeight / 2,
                          standardHeight / 2);
  for (std::size_t index = 0; index < items_.size(); ++index) {
    const auto& item = items_[index];
    if (!item->isButton()) continue;
    const double width = frames_[index].size.width / unit();
    const double height = frames_[index].size.height / unit();
    painter.save();
    painter.translate(frames_[index].origin.x / unit() + width / 2, standardHeight / 2);
    if (item == pressed_) painter.scale(0.9, 0.9);
    const bool isFocused = item == focused_;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isFocused ? accent : button);
    painter.drawRoundedRect(QRectF(-width / 2, -height / 2, width, height), height / 2, height / 2);
    drawGlyph(painter, item->systemItem(), isFocused ? onAccent : onButton);
    painter.restore();
  }
}
