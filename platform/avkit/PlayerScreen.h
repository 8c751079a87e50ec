#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/avfoundation/layer/AVPlayerLayer.h"
#include "platform/avkit/ControlsView.h"
#include "platform/uikit/UIView.h"

// The controller's view. From the bottom: black, the picture, the controls' shade, the host's overlay, the controls;
// what others add lies over all of it and is the cover. Main thread.
class PlayerScreen final : public UIView {
 public:
  static std::shared_ptr<PlayerScreen> make();

  const std::shared_ptr<AVPlayerLayer>& picture() const { return picture_; }
  const std::shared_ptr<UIView>& overlay() const { return overlay_; }
  const std::shared_ptr<ControlsView>& controls() const { return controls_; }

  // Something visible lies over the controls.
  bool isCovered() const;
  // Offers a press to what lies there, from the top; not to what has had it as the first responder's. Whether somebody
  // handled it.
  bool offerToCover(const UIPress& press);
  // Called when something was laid over the controls, or taken away. May come from inside a call to this view.
  void setCoverChanged(std::function<void()> changed) { coverChanged_ = std::move(changed); }

 protected:
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  PlayerScreen() = default;
  // What lies over the controls and can be seen, from the bottom.
  QList<QQuickItem*> cover() const;

  std::shared_ptr<UIView> canvas_;  // holds the picture
  std::shared_ptr<AVPlayerLayer> picture_;
  std::shared_ptr<UIView> shade_;
  std::shared_ptr<UIView> overlay_;
  std::shared_ptr<ControlsView> controls_;
  std::function<void()> coverChanged_;
};
