#include "platform/avfoundation/engine/PictureConverter.h"

#include <sys/mman.h>

#include <atomic>

// Pages of their own, which go back to the system at once: the heap would keep them.
struct PictureConverter::Pixels {
  explicit Pixels(std::size_t count)
      : size(count), pages(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
  Pixels(const Pixels&) = delete;
  Pixels& operator=(const Pixels&) = delete;
  ~Pixels() {
    if (pages != MAP_FAILED) munmap(pages, size);
  }

  const std::size_t size;
  void* const pages;
};

VideoFrame PictureConverter::convert(const GstVideoInfo& info, GstBuffer* buffer) {
  if (!converter_ || !gst_video_info_is_equal(&info, &from_)) {
    from_ = info;
    gst_video_info_set_format(&to_, GST_VIDEO_FORMAT_BGRx, static_cast<guint>(info.width),
                              static_cast<guint>(info.height));
    // A rate or a field order of its own would be a conversion too.
    GST_VIDEO_INFO_FPS_N(&to_) = GST_VIDEO_INFO_FPS_N(&info);
    GST_VIDEO_INFO_FPS_D(&to_) = GST_VIDEO_INFO_FPS_D(&info);
    GST_VIDEO_INFO_INTERLACE_MODE(&to_) = GST_VIDEO_INFO_INTERLACE_MODE(&info);
    converter_.reset(gst_video_converter_new(&from_, &to_, nullptr));
    pixels_ = {};
  }
  auto pixels = freePixels();
  GstVideoFrame source;
  if (!converter_ || pixels->pages == MAP_FAILED || !gst_video_frame_map(&source, &info, buffer, GST_MAP_READ))
    return {};
  GstVideoFrame target{};
  target.info = to_;
  target.data[0] = pixels->pages;
  gst_video_converter_frame(converter_.get(), &source, &target);
  gst_video_frame_unmap(&source);

  VideoFrame frame;
  frame.bits = static_cast<const std::uint8_t*>(pixels->pages);
  frame.stride = GST_VIDEO_INFO_PLANE_STRIDE(&to_, 0);
  frame.width = info.width;
  frame.height = info.height;
  frame.pixelAspectNumerator = GST_VIDEO_INFO_PAR_N(&info);
  frame.pixelAspectDenominator = GST_VIDEO_INFO_PAR_D(&info);
  frame.owner = std::move(pixels);
  return frame;
}

std::shared_ptr<PictureConverter::Pixels> PictureConverter::freePixels() {
  for (auto& pixels : pixels_) {
    if (pixels && pixels.use_count() > 1) continue;
    std::atomic_thread_fence(std::memory_order_acquire);  // after the last look at what it showed before
    if (!pixels) pixels = std::make_shared<Pixels>(GST_VIDEO_INFO_SIZE(&to_));
    return pixels;
  }
  return std::make_shared<Pixels>(GST_VIDEO_INFO_SIZE(&to_));
}
