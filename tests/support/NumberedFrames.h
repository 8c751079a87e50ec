#pragma once

#include <mutex>
#include <optional>
#include <vector>

#include "platform/avfoundation/engine/VideoFrame.h"

// The number that every picture of the sample clips carries in sixteen blocks along its top edge.
inline std::optional<int> numberOf(const VideoFrame& frame) {
  if (!frame.isValid() || frame.width < 16 || frame.height < 8) return std::nullopt;
  std::vector<std::uint8_t> drawn;
  const std::uint8_t* bits = frame.bits;
  int stride = frame.stride;
  if (frame.decoded) {
    stride = 4 * frame.width;
    drawn.resize(static_cast<std::size_t>(stride * frame.decoded->rowsAtOnce()));
    frame.decoded->draw(0, drawn.data(), stride);
    bits = drawn.data();
  }
  int number = 0;
  for (int block = 0; block < 16; ++block) {
    const int x = (2 * block + 1) * frame.width / 32;
    const std::uint8_t* pixel = bits + 4 * stride + 4 * x;
    const int brightness = (pixel[0] + pixel[1] + pixel[2]) / 3;
    number = 2 * number + (brightness > 128);
  }
  return number;
}

// A sink that remembers the numbers of the pictures it was given, and the last picture.
class NumberedFrames final : public VideoFrameSink {
 public:
  void present(VideoFrame frame) override {
    std::lock_guard lock(mutex_);
    numbers_.push_back(numberOf(frame).value_or(-1));
    last_ = std::move(frame);
  }

  std::vector<int> numbers() const {
    std::lock_guard lock(mutex_);
    return numbers_;
  }
  VideoFrame last() const {
    std::lock_guard lock(mutex_);
    return last_;
  }
  // -1 when there was none.
  int lastNumber() const {
    std::lock_guard lock(mutex_);
    return numbers_.empty() ? -1 : numbers_.back();
  }
  void clear() {
    std::lock_guard lock(mutex_);
    numbers_.clear();
    last_ = {};
  }

 private:
  mutable std::mutex mutex_;
  std::vector<int> numbers_;
  VideoFrame last_;
};
