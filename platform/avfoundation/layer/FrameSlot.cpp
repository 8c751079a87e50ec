#include "platform/avfoundation/layer/FrameSlot.h"

#include <utility>

#include "platform/dispatch/RunLoop.h"
#include "platform/dispatch/Weakly.h"

void FrameSlot::present(VideoFrame frame) {
  std::optional<VideoFrame> missed;  // destroyed after the lock is released: freeing a picture may take time
  {
    std::lock_guard lock(mutex_);
    missed = std::exchange(frame_, std::move(frame));
    if (std::exchange(told_, true)) return;
  }
  RunLoop::whileInstalled([this](RunLoop& loop) {
    loop.post(weakly(weak_from_this(), [](FrameSlot& slot) {
      {
        std::lock_guard lock(slot.mutex_);
        slot.told_ = false;
      }
      if (const auto arrived = slot.arrived_) arrived();
    }));
  });
}

std::optional<VideoFrame> FrameSlot::take() {
  std::lock_guard lock(mutex_);
  return std::exchange(frame_, std::nullopt);
}
