#include "platform/avfoundation/layer/PictureItem.h"

#include <QQuickWindow>
#include <mutex>
#include <utility>

#include "platform/avfoundation/layer/PictureGeometry.h"
#include "platform/avfoundation/layer/PictureNode.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/dispatch/Weakly.h"

// Follows a picture from the scene graph to the screen, and tells `told` when it is there.
class PictureItem::Presented : public std::enable_shared_from_this<Presented> {
 public:
  std::function<void(const CMTime&)> told;  // main thread

  // The scene graph has taken the picture over; its thread.
  void onTheWay(const CMTime& time) {
    std::lock_guard lock(mutex_);
    onTheWay_ = time;
  }

  // A frame of the window has come to the screen; the scene graph's thread.
  void swapped() {
    std::optional<CMTime> time;
    {
      std::lock_guard lock(mutex_);
      time.swap(onTheWay_);
    }
    if (!time) return;
    RunLoop::whileInstalled([&](RunLoop& loop) {
      loop.post(weakly(weak_from_this(), [time = *time](const Presented& self) {
        if (const auto tell = self.told) tell(time);
      }));
    });
  }

 private:
  std::mutex mutex_;
  std::optional<CMTime> onTheWay_;
};

PictureItem::PictureItem() {
  setFlag(ItemHasContents);
}

PictureItem::~PictureItem() {
  disconnect(watching_);
  if (slot_) slot_->setArrived({});
}

void PictureItem::setSlot(std::shared_ptr<FrameSlot> slot) {
  if (slot_) slot_->setArrived({});
  slot_ = std::move(slot);
  if (slot_) slot_->setArrived([this] { takePicture(); });
  frame_ = {};
  frameIsNew_ = true;
  takePicture();
}

void PictureItem::takePicture() {
  if (auto frame = slot_ ? slot_->take() : std::nullopt) {
    frame_ = std::move(*frame);
    frameIsNew_ = true;
  }
  update();
  const bool has = hasPicture();
  if (std::exchange(hadPicture_, has) == has) return;
  if (const auto changed = pictureChanged_) changed();
}

double PictureItem::density() const {
  return window() ? window()->effectiveDevicePixelRatio() : 1;
}

void PictureItem::setPicturePresented(std::function<void(const CMTime&)> presented) {
  if (!presented_) presented_ = std::make_shared<Presented>();
  presented_->told = std::move(presented);
  watch(window());
}

void PictureItem::watch(QQuickWindow* window) {
  disconnect(watching_);
  if (!window || !presented_ || !presented_->told) return;
  watching_ = connect(
      window, &QQuickWindow::frameSwapped, this, [presented = presented_] { presented->swapped(); },
      Qt::DirectConnection);
}

void PictureItem::itemChange(ItemChange change, const ItemChangeData& data) {
  QQuickItem::itemChange(change, data);
  if (change == ItemSceneChange) watch(data.window);
  if (change == ItemDevicePixelRatioHasChanged) update();
}

// On the scene graph's thread, while the main thread waits.
QSGNode* PictureItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* picture = dynamic_cast<PictureNode*>(old);
  bool isNew = std::exchange(frameIsNew_, false);
  if (!picture) {
    picture = PictureNode::make(*window());
    isNew = true;
  }
  picture->show(frame_, isNew, boundingRect(), pictureRect(frame_, boundingRect(), density()));
  if (isNew && hasPicture() && presented_) presented_->onTheWay(frame_.time);
  return picture->node();
}
