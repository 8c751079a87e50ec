#include "platform/uikit/GlyphDrawing.h"

#include <QCache>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr double plainLetterLimit = 64;       // pixels; Qt itself keeps pictures of smaller letters
constexpr int pictureSideLimit = 256;         // pixels; larger letters are few
constexpr int picturesBytesLimit = 32 << 20;  // of one run
constexpr int steps = 4;                      // places of a picture in a pixel, along each side

struct Picture {
  QImage image;
  QPoint offset;
};

QPainterPath pathOf(const QRawFont& font, quint32 glyph) {
  QPainterPath path = font.pathForGlyph(glyph);
  path.setFillRule(Qt::WindingFill);
  return path;
}

bool isColored(const QRawFont& font) {
  for (const char* table : {"CBDT", "sbix", "COLR"}) {
    if (!font.fontTable(table).isEmpty()) return true;
  }
  return false;
}

// Whether the painter's pixels are the image's, upright.
bool bearsPictures(const QPainter& painter) {
  const QTransform transform = painter.worldTransform();
  return painter.device()->devType() == QInternal::Image && painter.device()->devicePixelRatio() == 1 &&
         transform.type() <= QTransform::TxScale && transform.m11() > 0 && transform.m22() > 0;
}

// The glyphs of one run in one look.
class Letters {
 public:
  Letters(QPainter& painter, const QBrush& filling, const QPen& outline)
      : painter_(painter), transform_(painter.worldTransform()), bearsPictures_(bearsPictures(painter)) {
    painter.setBrush(filling);
    painter.setPen(outline);
  }

  void draw(const QRawFont& font, quint32 glyph, const QPointF& at) {
    if (!bearsPictures_) return drawPath(pathOf(font, glyph), at);
    const QPointF place = transform_.map(at) * steps;
    const QPoint step(int(std::lround(place.x())), int(std::lround(place.y())));
    const QPoint pixel(int(std::floor(double(step.x()) / steps)), int(std::floor(double(step.y()) / steps)));
    const QPoint phase = step - pixel * steps;
    const quint64 key = (quint64(glyph) * steps + quint64(phase.x())) * steps + quint64(phase.y());
    if (const Picture* kept = pictures_.object(key)) return drawPicture(*kept, pixel);

    const QPainterPath path = pathOf(font, glyph);
    if (path.isEmpty()) return;
    const QTransform inPicture = QTransform::fromScale(transform_.m11(), transform_.m22()) *
                                 QTransform::fromTranslate(double(phase.x()) / steps, double(phase.y()) / steps);
    const double outside = painter_.pen().style() == Qt::NoPen ? 0 : painter_.pen().widthF() / 2;
    const QRectF ink = path.boundingRect().adjusted(-outside, -outside, outside, outside);
    const QRect box = inPicture.mapRect(ink).toAlignedRect().adjusted(-1, -1, 1, 1);
    if (!QRect(0, 0, painter_.device()->width(), painter_.device()->height()).intersects(box.translated(pixel))) return;
    if (box.width() > pictureSideLimit || box.height() > pictureSideLimit) return drawPath(path, at);
    auto picture =
        std::make_unique<Picture>(Picture{QImage(box.size(), QImage::Format_ARGB32_Premultiplied), box.topLeft()});
    picture->image.fill(Qt::transparent);
    QPainter drawing(&picture->image);
    drawing.setRenderHint(QPainter::Antialiasing);
    drawing.setTransform(inPicture * QTransform::fromTranslate(-box.left(), -box.top()));
    drawing.setBrush(painter_.brush());
    drawing.setPen(painter_.pen());
    drawing.drawPath(path);
    drawing.end();
    drawPicture(*picture, pixel);
    const auto bytes = int(picture->image.sizeInBytes());
    pictures_.insert(key, picture.release(), bytes);
  }

 private:
  void drawPath(const QPainterPath& path, const QPointF& at) {
    painter_.translate(at);
    painter_.drawPath(path);
    painter_.setWorldTransform(transform_);
  }

  void drawPicture(const Picture& picture, const QPoint& pixel) {
    painter_.resetTransform();
    painter_.drawImage(pixel + picture.offset, picture.image);
    painter_.setWorldTransform(transform_);
  }

  QPainter& painter_;
  const QTransform transform_;
  const bool bearsPictures_;
  QCache<quint64, Picture> pictures_{picturesBytesLimit};
};

void drawOpaque(QPainter& painter, const QGlyphRun& glyphs, const QPointF& origin, const QBrush& filling,
                const QPen& outline) {
  painter.save();
  Letters letters(painter, filling, outline);
  const QRawFont font = glyphs.rawFont();
  const auto indexes = glyphs.glyphIndexes();
  const auto positions = glyphs.positions();
  for (qsizetype i = 0; i < std::min(indexes.size(), positions.size()); ++i) {
    letters.draw(font, indexes[i], origin + positions[i]);
  }
  painter.restore();
}

// A translucent colour goes through a layer, so that letters that overlap are no denser there than elsewhere.
void drawPart(QPainter& painter, const QGlyphRun& glyphs, const QPointF& origin, QBrush filling, QPen outline) {
  const QColor color = filling.style() == Qt::NoBrush ? outline.color() : filling.color();
  if (color.alpha() == 0) return;
  if (color.alpha() == 255 || !bearsPictures(painter)) return drawOpaque(painter, glyphs, origin, filling, outline);
  QImage layer(painter.device()->width(), painter.device()->height(), QImage::Format_ARGB32_Premultiplied);
  layer.fill(Qt::transparent);
  QColor opaque = color;
  opaque.setAlpha(255);
  filling.setColor(opaque);
  outline.setColor(opaque);
  QPainter drawing(&layer);
  drawing.setRenderHints(painter.renderHints());
  drawing.setWorldTransform(painter.worldTransform());
  drawOpaque(drawing, glyphs, origin, filling, outline);
  drawing.end();
  painter.save();
  painter.resetTransform();
  painter.setOpacity(painter.opacity() * color.alphaF());
  painter.drawImage(0, 0, layer);
  painter.restore();
}

}  // namespace

void drawGlyphs(QPainter& painter, const QGlyphRun& glyphs, const QPointF& origin, const QBrush& filling,
                const QPen& outline) {
  const bool isOutlined = outline.style() != Qt::NoPen;
  const bool isFilled = filling.style() != Qt::NoBrush;
  const QTransform transform = painter.worldTransform();
  const double pixels = glyphs.rawFont().pixelSize() * std::sqrt(std::abs(transform.determinant()));
  if (isFilled && !isOutlined && (pixels < plainLetterLimit || isColored(glyphs.rawFont()))) {
    QGlyphRun plain = glyphs;
    plain.setFlags({});
    painter.setPen(filling.color());
    painter.drawGlyphRun(origin, plain);
  } else if (isFilled && isOutlined && filling.color() == outline.color() && filling.color().alpha() == 255) {
    drawPart(painter, glyphs, origin, filling, outline);
  } else {
    if (isFilled) drawPart(painter, glyphs, origin, filling, Qt::NoPen);
    if (isOutlined) drawPart(painter, glyphs, origin, Qt::NoBrush, outline);
  }
}
