// Toolbars: the plate, the buttons and their glyphs.
#include <QPainter>
#include <QPainterPath>

#include "platform/uikit/QtValues.h"
#include "platform/uikit/UIControlsLook.h"
#include "platform/uikit/UIToolbar.h"

namespace {

// Each glyph is drawn around 0, 0 in points of a bar of standard height, with the painter's brush and a pen of its
// colour, round at the ends.
void drawPlayPause(QPainter& painter) {
  QPainterPath triangle;
  triangle.moveTo(-38, -19);
  triangle.lineTo(-7, 0);
  triangle.lineTo(-38, 19);
  triangle.closeSubpath();
  painter.drawPath(triangle);
  painter.drawLine(QPointF(16, -18), QPointF(16, 18));
  painter.drawLine(QPointF(36, -18), QPointF(36, 18));
}

void drawInfo(QPainter& painter) {
  painter.drawEllipse(QPointF(0, -21), 2.5, 2.5);
  painter.drawLine(QPointF(0, -4), QPointF(0, 22));
}

void drawStop(QPainter& painter) {
  painter.drawLine(QPointF(-16, -16), QPointF(16, 16));
  painter.drawLine(QPointF(-16, 16), QPointF(16, -16));
}

void drawGlyph(QPainter& painter, UIBarButtonSystemItem item, const QColor& color) {
  const double stroke = item == UIBarButtonSystemItemPlayPause ? 6 : 8;
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
  painter.setBrush(toQColor(UIControlsLook::plate));
  painter.drawRoundedRect(QRectF(0, 0, rect.size.width / unit(), standardHeight), 24, 24);
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
    painter.setBrush(toQColor(isFocused ? UIControlsLook::accent : UIControlsLook::button));
    painter.drawRoundedRect(QRectF(-width / 2, -height / 2, width, height), height / 2, height / 2);
    drawGlyph(painter, item->systemItem(), toQColor(isFocused ? UIControlsLook::ink : UIColor::whiteColor()));
    painter.restore();
  }
}
