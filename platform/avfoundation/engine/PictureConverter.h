#pragma once

#include <gst/video/video.h>

#include <array>
#include <memory>

#include "platform/avfoundation/engine/VideoFrame.h"

// Turns decoded pictures of any format in system memory into B G R X, in a few buffers that are used again and again.
// One thread at a time; its pictures outlive it.
class PictureConverter {
 public:
  // The pixels of `buffer` with their size and aspect; an invalid frame when they can't be read.
  VideoFrame convert(const GstVideoInfo& info, GstBuffer* buffer);

 private:
  struct Pixels;
  struct Release {
    void operator()(GstVideoConverter* converter) const { gst_video_converter_free(converter); }
  };
  std::shared_ptr<Pixels> freePixels();

  GstVideoInfo from_{};
  GstVideoInfo to_{};
  std::unique_ptr<GstVideoConverter, Release> converter_;
  // One on the screen and one for the next; a screen that is late gets more, for as long as it takes.
  std::array<std::shared_ptr<Pixels>, 2> pixels_;
};
