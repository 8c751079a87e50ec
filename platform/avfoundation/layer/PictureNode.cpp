#include "platform/avfoundation/layer/PictureNode.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <QSGRenderNode>
#include <QSGTexture>
#include <algorithm>
#include <memory>

#include "platform/avfoundation/layer/PictureGeometry.h"

namespace {

// A frame's pixels as one image.
class FrameImage {
 public:
  // Null for a frame whose rows are shorter than its width says. A frame other than that of the last call is drawn,
  // into the memory of the one before when nobody else holds that.
  const QImage& of(const VideoFrame& frame) {
    if (!frame.isValid() || (!frame.decoded && (!frame.bits || frame.stride < frame.width * 4))) {
      image_ = {};
    } else if (frame.bits) {
      auto* held = new VideoFrame(frame);
      image_ = QImage(
          frame.bits, frame.width, frame.height, frame.stride, QImage::Format_RGB32,
          [](void* owner) { delete static_cast<VideoFrame*>(owner); }, held);
    } else if (frame.decoded != drawn_ || image_.isNull()) {
      draw(frame);
    }
    drawn_ = frame.decoded;
    return image_;
  }

 private:
  void draw(const VideoFrame& frame) {
    const QSize size(frame.width, frame.height);
    if (!drawn_ || image_.size() != size || !image_.isDetached()) image_ = QImage(size, QImage::Format_RGB32);
    const int stride = static_cast<int>(image_.bytesPerLine());
    for (int row = 0; row < frame.height; row += frame.decoded->rowsAtOnce()) {
      frame.decoded->draw(row, image_.scanLine(row), stride);
    }
  }

  std::shared_ptr<const DecodedPicture> drawn_;
  QImage image_;
};

// The fourth byte of a pixel may be anything, which Qt only looks at when it blends.
void makeOpaque(QImage& image) {
  for (int y = 0; y < image.height(); ++y) {
    auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) row[x] |= 0xff000000;
  }
}

QImage withOpaquePixels(const QImage& image) {
  QImage copy = image.copy();
  makeOpaque(copy);
  return copy;
}

// For the software scene graph: paints the pixels straight from where the decoder put them, a few rows at a time where
// they go as they are.
class PaintedPicture final : public QSGRenderNode, public PictureNode {
 public:
  explicit PaintedPicture(QQuickWindow& window) : window_(window) {}

  QSGNode* node() override { return this; }

  void show(const VideoFrame& frame, bool isNew, const QRectF& area, const QRectF& rect) override {
    const bool moved = area != area_ || rect != target_;
    if (isNew) frame_ = frame;
    area_ = area;
    target_ = rect;
    if (isNew || moved) markDirty(moved ? DirtyMaterial | DirtyGeometry : DirtyMaterial);
  }

  StateFlags changedStates() const override { return {}; }
  RenderingFlags flags() const override { return BoundedRectRendering | OpaqueRendering | DepthAwareRendering; }
  QRectF rect() const override { return area_; }

  void render(const RenderState* state) override {
    const auto* interface = window_.rendererInterface();
    auto* painter = static_cast<QPainter*>(interface->getResource(&window_, QSGRendererInterface::PainterResource));
    if (!painter) return;
    painter->save();
    const QRegion* clip = state->clipRegion();
    if (clip && !clip->isEmpty()) painter->setClipRegion(*clip, Qt::ReplaceClip);  // in the window's coordinates
    painter->setTransform(matrix()->toTransform());
    painter->setOpacity(inheritedOpacity());
    if (isByRows(*painter)) {
      image_ = {};
      fillAround(*painter);
      drawRows(*painter);
    } else if (const QImage& image = image_.of(frame_); !image.isNull()) {
      fillAround(*painter);
      drawImage(*painter, image);
    } else {
      painter->fillRect(area_, Qt::black);
    }
    painter->restore();
  }

 private:
  void fillAround(QPainter& painter) const {
    const QRectF above(area_.topLeft(), QPointF(area_.right(), target_.top()));
    const QRectF below(QPointF(area_.left(), target_.bottom()), area_.bottomRight());
    const QRectF left(QPointF(area_.left(), target_.top()), target_.bottomLeft());
    const QRectF right(target_.topRight(), QPointF(area_.right(), target_.bottom()));
    for (const QRectF& bar : {above, below, left, right}) {
      if (!bar.isEmpty()) painter.fillRect(bar, Qt::black);
    }
  }

  bool isUpright() const { return frame_.rotation == 0 && !frame_.mirrored; }
  // On the screen it has the size that it is stored in.
  bool isUnscaled() const {
    return target_.size() * window_.effectiveDevicePixelRatio() == QSizeF(frame_.width, frame_.height);
  }

  bool isByRows(const QPainter& painter) const {
    return frame_.decoded && frame_.decoded->rowsAtOnce() < frame_.height && isUpright() && isUnscaled() &&
           painter.transform().type() <= QTransform::TxTranslate;
  }

  void drawRows(QPainter& painter) {
    const int rows = frame_.decoded->rowsAtOnce();
    if (rows_.size() != QSize(frame_.width, rows)) rows_ = QImage(frame_.width, rows, QImage::Format_RGB32);
    const QRectF visible = painter.hasClipping() ? painter.clipBoundingRect() : target_;
    const double height = target_.height() / frame_.height;  // of a row
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    for (int row = 0; row < frame_.height; row += rows) {
      const int count = std::min(rows, frame_.height - row);
      const QRectF place(target_.x(), target_.y() + row * height, target_.width(), count * height);
      if (!place.intersects(visible)) continue;
      frame_.decoded->draw(row, rows_.bits(), static_cast<int>(rows_.bytesPerLine()));
      if (painter.opacity() < 1) makeOpaque(rows_);
      painter.drawImage(place, rows_, QRectF(0, 0, frame_.width, count));
    }
  }

  void drawImage(QPainter& painter, const QImage& pixels) const {
    const QImage image = painter.opacity() < 1 ? withOpaquePixels(pixels) : pixels;
    if (isUpright()) {
      painter.setRenderHint(QPainter::SmoothPixmapTransform, !isUnscaled());
      painter.drawImage(target_, image);
    } else {
      painter.setRenderHint(QPainter::SmoothPixmapTransform);
      painter.setTransform(picturePlacement(frame_, target_), true);
      painter.drawImage(0, 0, image);
    }
  }

  QQuickWindow& window_;
  VideoFrame frame_;
  FrameImage image_;
  QImage rows_;
  QRectF area_;
  QRectF target_;
};

// For the GPU: a black rectangle below a textured one. Pixels are uploaded once a frame.
class TexturedPicture final : public QSGNode, public PictureNode {
 public:
  explicit TexturedPicture(QQuickWindow& window) : window_(window), black_(window.createRectangleNode()) {
    black_->setColor(Qt::black);
    appendChildNode(black_);
    appendChildNode(&placement_);
    placement_.setFlag(OwnedByParent, false);
  }

  QSGNode* node() override { return this; }

  void show(const VideoFrame& frame, bool isNew, const QRectF& area, const QRectF& rect) override {
    black_->setRect(area);
    if (isNew) {
      if (auto texture = textureOf(frame)) {
        const bool isFirst = !picture_;
        if (isFirst) {
          picture_.reset(window_.createImageNode());
          picture_->setFlag(OwnedByParent, false);
          picture_->setOwnsTexture(true);
          picture_->setFiltering(QSGTexture::Linear);
        }
        picture_->setTexture(texture.release());
        picture_->setRect(0, 0, frame.width, frame.height);
        picture_->setSourceRect(QRectF(0, 0, frame.width, frame.height));
        if (isFirst) placement_.appendChildNode(picture_.get());
      } else {
        placement_.removeAllChildNodes();
        picture_.reset();
      }
    }
    if (picture_) placement_.setMatrix(QMatrix4x4(picturePlacement(frame, rect)));
  }

 private:
  std::unique_ptr<QSGTexture> textureOf(const VideoFrame& frame) {
    const QImage& image = image_.of(frame);
    if (image.isNull()) return nullptr;
    return std::unique_ptr<QSGTexture>(window_.createTextureFromImage(image, QQuickWindow::TextureIsOpaque));
  }

  QQuickWindow& window_;
  FrameImage image_;
  QSGRectangleNode* black_;
  QSGTransformNode placement_;
  std::unique_ptr<QSGImageNode> picture_;
};

}  // namespace

PictureNode* PictureNode::make(QQuickWindow& window) {
  if (window.rendererInterface()->graphicsApi() == QSGRendererInterface::Software) return new PaintedPicture(window);
  return new TexturedPicture(window);
}
