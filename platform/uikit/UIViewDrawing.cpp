// Views: background and drawn content.
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/uikit/QtValues.h"
#include "platform/uikit/UIView.h"

namespace {

// Pixels on a side of drawn content; what is larger is drawn coarser.
constexpr double drawnSideLimit = 8192;

// What a view puts into the scene: a background below, drawn content above; both may be missing. A transform without
// effect: below a plain node the software scene graph loses the place of what is added later.
struct ViewNode : QSGTransformNode {
  QSGRectangleNode* background = nullptr;
  QSGImageNode* content = nullptr;
};

}  // namespace

void UIView::setDrawsContent(bool draws) {
  drawsContent_ = draws;
  setFlag(ItemHasContents);
  connect(this, &QQuickItem::scaleChanged, this, &UIView::setNeedsDisplay, Qt::UniqueConnection);
  setNeedsDisplay();
}

void UIView::setNeedsDisplay() {
  if (!drawsContent_) return;
  needsDisplay_ = true;
  polish();
}

void UIView::setContentScaleFactor(double factor) {
  if (!(factor > 0) || factor == contentScaleFactor_) return;
  contentScaleFactor_ = factor;
  setNeedsDisplay();
}

void UIView::drawRect(QPainter&, const CGRect&) {}

void UIView::updatePolish() {
  const auto alive = weak_from_this().lock();
  layoutIfNeeded();
  if (needsDisplay_ && isVisible()) draw();
}

void UIView::draw() {
  needsDisplay_ = false;
  contentChanged_ = true;
  content_ = QImage();
  update();
  if (width() < 1 || height() < 1) return;
  const CGRect rect = bounds();
  const double density = window() ? window()->effectiveDevicePixelRatio() : 1;
  const double wanted = density * std::max(0.01, scale() * contentScaleFactor_);
  // Of whole pixels, so that what is drawn meets the screen's where the view does.
  drawnMargin_ = std::ceil(contentMargin() * wanted) / wanted;
  const double across = rect.size.width + 2 * drawnMargin_;
  const double down = rect.size.height + 2 * drawnMargin_;
  const double drawn = std::min(wanted, drawnSideLimit / std::max(across, down));
  content_ = QImage(int(std::ceil(across * drawn)), int(std::ceil(down * drawn)), QImage::Format_ARGB32_Premultiplied);
  if (content_.isNull()) return;
  content_.fill(Qt::transparent);
  QPainter painter(&content_);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
  painter.scale(drawn, drawn);  // not the image's own, which Qt takes for 1 when it is less
  painter.translate(drawnMargin_, drawnMargin_);
  drawRect(painter, rect);
  drawnSize_ = QSizeF(content_.size()) / drawn;
}

// On the scene graph's thread, while the main thread waits.
QSGNode* UIView::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* node = static_cast<ViewNode*>(old);
  if (!node) node = new ViewNode;

  if (backgroundColor_.alpha > 0) {
    if (!node->background) node->prependChildNode(node->background = window()->createRectangleNode());
    node->background->setRect(boundingRect());
    node->background->setColor(toQColor(backgroundColor_));
  } else {
    delete std::exchange(node->background, nullptr);
  }

  if (content_.isNull()) {
    delete std::exchange(node->content, nullptr);
  } else if (contentChanged_ || !node->content) {
    const bool isNew = !node->content;
    if (isNew) {
      node->content = window()->createImageNode();
      node->content->setOwnsTexture(true);
      node->content->setFiltering(QSGTexture::Linear);
    }
    node->content->setTexture(window()->createTextureFromImage(content_, QQuickWindow::TextureHasAlphaChannel));
    node->content->setRect(QRectF({-drawnMargin_, -drawnMargin_}, drawnSize_));
    if (isNew) node->appendChildNode(node->content);  // complete: the scene looks at it at once
  }
  contentChanged_ = false;
  return node;
}
