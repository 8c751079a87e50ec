#pragma once

#include <QPointer>
#include <QQuickItem>
#include <memory>
#include <vector>

#include "platform/foundation/NSObject.h"
#include "platform/uikit/values/CGGeometry.h"

class UIView;

// Something drawn inside a view that is not a view: pictures of a video. Every view has one of its own, to which others
// are added. Held by its superlayer and whoever made it. Main thread.
//
// Kept from the platform: sublayers lie among the subviews in the order in which both were added. Left out: everything
// that a layer draws by itself.
class YMR_API CALayer : public NSObject {
 public:
  CALayer();
  ~CALayer() override;

  // In the superlayer's coordinates.
  CGRect frame() const;
  void setFrame(const CGRect& frame);
  bool isHidden() const;
  void setHidden(bool hidden);
  // Keeps the frame equal to the superlayer's bounds from now on, whatever its size becomes. Not of the platform.
  void setFillsSuperlayer(bool fills);

  // On top of what is there; takes it out of where it was.
  void addSublayer(const std::shared_ptr<CALayer>& layer);
  void removeFromSuperlayer();
  // nil while it is in no layer. A view's own layer has none.
  std::shared_ptr<CALayer> superlayer() const { return superlayer_.lock(); }
  const std::vector<std::shared_ptr<CALayer>>& sublayers() const { return sublayers_; }

 protected:
  // For a layer that draws: it shows `item`, which it owns from now on.
  explicit CALayer(std::unique_ptr<QQuickItem> item);
  // What shows the layer; null when the view whose own layer this is has gone.
  QQuickItem* item() const { return item_; }

 private:
  friend class UIView;
  explicit CALayer(UIView& view);
  void follow();
  void superlayerDidResize();

  std::unique_ptr<QQuickItem> owned_;
  QPointer<QQuickItem> item_;
  std::weak_ptr<CALayer> superlayer_;
  std::vector<std::shared_ptr<CALayer>> sublayers_;
  bool fillsSuperlayer_ = false;
  bool hidden_ = false;
};
