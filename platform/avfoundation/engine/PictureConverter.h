#pragma once

#include <gst/video/video.h>

#include <memory>

#include "platform/avfoundation/engine/VideoFrame.h"

// Makes frames of decoded pictures of any format in system memory. They are converted to B G R X where they are drawn:
// what nobody draws costs nothing, and nothing of a picture's size lies in between.
//
// One thread at a time; its frames outlive it. The library's arithmetic alone is used, which needs none of its plugins
// and no gst_init(): a host that only shows pictures does without.
class PictureConverter {
 public:
  // The pixels of `buffer` with their size and aspect; an invalid frame when they can't be read.
  VideoFrame convert(const GstVideoInfo& info, GstBuffer* buffer);
  // Pixels that lie anywhere, as `picture` describes them (its info, flags, data and strides count, its buffer does
  // not); `owner` keeps them there.
  VideoFrame convert(const GstVideoFrame& picture, std::shared_ptr<const void> owner);
  // Where the pixels of a frame that one of these made lie; null for others. Valid as long as `picture`.
  static const GstVideoFrame* pixelsOf(const DecodedPicture& picture);

 private:
  class Conversion;
  class Picture;
  std::shared_ptr<Conversion> conversionFor(const GstVideoInfo& info);

  std::shared_ptr<Conversion> conversion_;  // of the pictures that came last
};
