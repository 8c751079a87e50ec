#pragma once

#include <QQuickItem>
#include <functional>
#include <memory>
#include <utility>

#include "platform/avfoundation/layer/FrameSlot.h"

// The item that draws a player's pictures, opaque. Main thread, but for what the scene graph asks for.
class PictureItem final : public QQuickItem {
 public:
  PictureItem();
  ~PictureItem() override;

  // Shows what comes into `slot` from now on, and black until something does; nil for black only.
  void setSlot(std::shared_ptr<FrameSlot> slot);
  // A picture is there. `changed` is called on the main thread when that changes; empty for nobody.
  bool hasPicture() const { return frame_.isValid(); }
  void setPictureChanged(std::function<void()> changed) { pictureChanged_ = std::move(changed); }
  void setPicturePresented(std::function<void(const CMTime&)> presented);

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

 private:
  class Presented;
  void takePicture();
  void watch(QQuickWindow* window);
  double density() const;

  std::shared_ptr<FrameSlot> slot_;
  VideoFrame frame_;
  bool frameIsNew_ = false;  // for the scene graph
  bool hadPicture_ = false;
  std::function<void()> pictureChanged_;
  std::shared_ptr<Presented> presented_;
  QMetaObject::Connection watching_;
};
