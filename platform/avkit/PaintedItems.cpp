#include "platform/avkit/PaintedItems.h"

#include <QBrush>
#include <QLinearGradient>
#include <QPainter>
#include <algorithm>
#include <cmath>

ArtworkItem::ArtworkItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
  connect(this, &ArtworkItem::imageChanged, this, [this] { update(); });
}

void ArtworkItem::setImage(const QImage& image) {
  if (image.cacheKey() == image_.cacheKey()) return;
  image_ = image;
  Q_EMIT imageChanged();
}

double ArtworkItem::aspect() const {
  return image_.isNull() ? 1 : static_cast<double>(image_.width()) / image_.height();
}

void ArtworkItem::paint(QPainter* painter) {
  if (image_.isNull()) return;
  const QSizeF size = QSizeF(image_.size()).scaled(QSizeF(width(), height()), Qt::KeepAspectRatio);
  const QRectF area({(width() - size.width()) / 2, (height() - size.height()) / 2}, size);
  // Scaled down by halves and averages, not by leaving pixels out; a brush of the result has clean round edges.
  const double density = painter->device()->devicePixelRatio();
  QBrush brush(image_.scaled((size * density).toSize(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  brush.setTransform(QTransform::fromTranslate(area.x(), area.y()).scale(1 / density, 1 / density));
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(Qt::NoPen);
  painter->setBrush(brush);
  painter->drawRoundedRect(area, radius_, radius_);
}

ScrimItem::ScrimItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
  connect(this, &ScrimItem::colorChanged, this, [this] { update(); });
  // All columns are alike: painted a few wide and drawn out to the item's width.
  const auto fit = [this] { setTextureSize(QSize(8, std::max(1, static_cast<int>(std::ceil(height()))))); };
  connect(this, &QQuickItem::heightChanged, this, fit);
  fit();
}

void ScrimItem::paint(QPainter* painter) {
  // Eased: a straight ramp shows an edge where it begins.
  constexpr int kStops = 8;
  QLinearGradient shade(0, 0, 0, height());
  for (int stop = 0; stop <= kStops; ++stop) {
    const double place = static_cast<double>(stop) / kStops;
    QColor color = color_;
    color.setAlphaF(static_cast<float>(color_.alphaF() * place * (2 - place)));
    shade.setColorAt(place, color);
  }
  painter->fillRect(QRectF(0, 0, width(), height()), shade);
}
