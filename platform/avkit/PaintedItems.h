#pragma once

#include <QColor>
#include <QImage>
#include <QQuickPaintedItem>

// What the interface file draws that plain items can't, painted once and kept as a texture: over a moving picture every
// visible item is drawn for every frame. Main thread.

// A picture as large as the item allows, with round corners.
class ArtworkItem : public QQuickPaintedItem {
  Q_OBJECT
  Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)
  Q_PROPERTY(double radius MEMBER radius_ NOTIFY imageChanged)
  // Width over height; 1 without a picture.
  Q_PROPERTY(double aspect READ aspect NOTIFY imageChanged)

 public:
  explicit ArtworkItem(QQuickItem* parent = nullptr);
  void paint(QPainter* painter) override;

  const QImage& image() const { return image_; }
  void setImage(const QImage& image);
  double aspect() const;

 Q_SIGNALS:
  void imageChanged();

 private:
  QImage image_;
  double radius_ = 0;
};

// A shade from nothing at the top to `color` at the bottom, on which light text can be read.
class ScrimItem : public QQuickPaintedItem {
  Q_OBJECT
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY colorChanged)

 public:
  explicit ScrimItem(QQuickItem* parent = nullptr);
  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void colorChanged();

 private:
  QColor color_ = Qt::black;
};
