#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/avfoundation/engine/VideoFrame.h"

// Where a player's pictures wait for the screen: holds the newest one only. Always held by shared_ptr, by the player
// too.
class FrameSlot final : public VideoFrameSink, public std::enable_shared_from_this<FrameSlot> {
 public:
  // Called on the main thread, on a turn of its own, after pictures have come; once for all that came before it.
  void setArrived(std::function<void()> arrived) { arrived_ = std::move(arrived); }

  // Any thread.
  void present(VideoFrame frame) override;
  // The picture that has come since the last call, if any. Any thread.
  std::optional<VideoFrame> take();

 private:
  std::function<void()> arrived_;  // main thread
  std::mutex mutex_;
  std::optional<VideoFrame> frame_;
  bool told_ = false;
};
