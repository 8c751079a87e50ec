#include "platform/avfoundation/layer/PictureNode.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <QSGRenderNode>
#include <QSGTexture>
#include <memory>

#include "platform/avfoundation/layer/PictureGeometry.h"

namespace {

// The frame's pixels as an image that shares them; null for a texture and for rows that are not what they say.
QImage imageOf(const VideoFrame& frame) {
  if (!frame.isValid() || !frame.bits || frame.stride < frame.width * 4) return {};
  auto* held = new VideoFrame(frame);
  return QImage(
      frame.bits, frame.width, frame.height, frame.stride, QImage::Format_RGB32,
      [](void* owner) { delete static_cast<VideoFrame*>(owner); }, held);
}

// The fourth byte of a pixel may be anything, which Qt only looks at when it blends: a copy in which it is 255.
QImage withOpaquePixels(const QImage& image) {
  QImage copy = image.copy();
  for (int y = 0; y < copy.height(); ++y) {
    auto* row = reinterpret_cast<QRgb*>(copy.scanLine(y));
    for (int x = 0; x < copy.width(); ++x) row[x] |= 0xff000000;
  }
  return copy;
}

// For the software scene graph: paints the pixels straight from where the decoder put them.
class PaintedPicture final : public QSGRenderNode, public PictureNode {
 public:
  explicit PaintedPicture(QQuickWindow& window) : window_(window) {}

  QSGNode* node() override { return this; }

  void show(const VideoFrame& frame, bool isNew, const QRectF& area, const QRectF& rect) override {
    const bool moved = area != area_ || rect != target_;
    if (isNew) {
      frame_ = frame;
      image_ = imageOf(frame);
    }
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
    if (image_.isNull()) {
      painter->fillRect(area_, Qt::black);
    } else {
      fillAround(*painter);
      drawImage(*painter);
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

  void drawImage(QPainter& painter) const {
    const QImage image = painter.opacity() < 1 ? withOpaquePixels(image_) : image_;
    if (frame_.rotation == 0 && !frame_.mirrored) {
      const QSizeF pixels = target_.size() * window_.effectiveDevicePixelRatio();
      painter.setRenderHint(QPainter::SmoothPixmapTransform, pixels != QSizeF(image.size()));
      painter.drawImage(target_, image);
    } else {
      painter.setRenderHint(QPainter::SmoothPixmapTransform);
      painter.setTransform(picturePlacement(frame_, target_), true);
      painter.drawImage(0, 0, image);
    }
  }

  QQuickWindow& window_;
  VideoFrame frame_;
  QImage image_;
  QRectF area_;
  QRectF target_;
};

// For the GPU: a black rectangle below a textured one. Pixels are uploaded once a frame; textures are used in place.
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
      frame_ = frame;  // after the texture of the frame before has gone
    }
    if (picture_) placement_.setMatrix(QMatrix4x4(picturePlacement(frame_, rect)));
  }

 private:
  std::unique_ptr<QSGTexture> textureOf(const VideoFrame& frame) const {
    if (frame.isValid() && frame.glTexture) {
      return std::unique_ptr<QSGTexture>(QNativeInterface::QSGOpenGLTexture::fromNative(
          frame.glTexture, &window_, {frame.width, frame.height}, QQuickWindow::TextureIsOpaque));
    }
    const QImage image = imageOf(frame);
    if (image.isNull()) return nullptr;
    return std::unique_ptr<QSGTexture>(window_.createTextureFromImage(image, QQuickWindow::TextureIsOpaque));
  }

  QQuickWindow& window_;
  VideoFrame frame_;  // keeps a texture in place
  QSGRectangleNode* black_;
  QSGTransformNode placement_;
  std::unique_ptr<QSGImageNode> picture_;
};

}  // namespace

PictureNode* PictureNode::make(QQuickWindow& window) {
  if (window.rendererInterface()->graphicsApi() == QSGRendererInterface::Software) return new PaintedPicture(window);
  return new TexturedPicture(window);
}
