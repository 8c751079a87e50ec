#pragma once

#include <gst/video/video.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "apps/ymr-media/HostSocket.h"
#include "apps/ymr-media/PictureSlots.h"
#include "platform/avfoundation/engine/VideoFrame.h"

// Where the engine's pictures go: to the host, by number. One that lies in memory of a decoder's device is handed over
// as it is; any other that does not lie in the host's memory is copied there, and dropped when that has no room. What
// has been sent is kept as it is until the host gives it back.
class PictureSender final : public VideoFrameSink {
 public:
  PictureSender(HostSocket& host, std::shared_ptr<PictureSlots> slots) : host_(host), slots_(std::move(slots)) {}

  // What the pictures from now on carry. Any thread, as are the others.
  void setNumber(std::uint64_t number);
  void present(VideoFrame frame) override;
  void giveBack(std::uint64_t picture);

 private:
  // Describes where the pixels lie; false when that is nowhere in the host's memory.
  bool describe(const GstVideoFrame& pixels, wire::Picture& picture) const;
  // The same for memory of a device; its descriptor, or -1 when the picture is not in one such memory as a whole.
  static int describeDevice(const GstVideoFrame& pixels, wire::Picture& picture);
  // The same for a copy of them, which `keeper` keeps; false when there is no room.
  bool describeCopy(const GstVideoFrame& pixels, wire::Picture& picture, std::shared_ptr<const void>& keeper) const;

  HostSocket& host_;
  const std::shared_ptr<PictureSlots> slots_;
  std::mutex mutex_;
  std::uint64_t sink_ = 0;
  std::uint64_t last_ = 0;
  std::map<std::uint64_t, std::shared_ptr<const void>> held_;
};
