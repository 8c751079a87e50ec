#include "apps/ymr-media/PictureSender.h"

#include <gst/allocators/gstdmabuf.h>

#include "platform/avfoundation/engine/PictureConverter.h"
#include "platform/avfoundation/process/PictureLayout.h"

void PictureSender::setNumber(std::uint64_t number) {
  std::lock_guard lock(mutex_);
  sink_ = number;
}

void PictureSender::present(VideoFrame frame) {
  const GstVideoFrame* pixels = frame.decoded ? PictureConverter::pixelsOf(*frame.decoded) : nullptr;
  if (!pixels) return;
  wire::Picture picture;
  std::shared_ptr<const void> keeper = frame.decoded;
  const int device = describeDevice(*pixels, picture);
  if (device < 0 && !describe(*pixels, picture) && !describeCopy(*pixels, picture, keeper)) return;
  picture.rotation = frame.rotation;
  picture.mirrored = frame.mirrored;
  picture.time = frame.time;
  std::lock_guard lock(mutex_);
  picture.number = ++last_;
  picture.sink = sink_;
  held_.emplace(picture.number, std::move(keeper));
  host_.send(picture, device);
}

void PictureSender::giveBack(std::uint64_t picture) {
  std::shared_ptr<const void> keeper;  // goes when the lock has
  std::lock_guard lock(mutex_);
  if (const auto found = held_.find(picture); found != held_.end()) {
    keeper = std::move(found->second);
    held_.erase(found);
  }
}

bool PictureSender::describe(const GstVideoFrame& pixels, wire::Picture& picture) const {
  const auto place = slots_->placeOf(pixels.data[0]);
  if (!place) return false;
  describePixels(pixels, place->begin, picture);
  picture.area = place->area;
  picture.slot = place->slot;
  return picturePixels(picture, place->begin, place->size).has_value();  // the host's own question
}

int PictureSender::describeDevice(const GstVideoFrame& pixels, wire::Picture& picture) {
  if (!pixels.buffer || gst_buffer_n_memory(pixels.buffer) != 1) return -1;
  GstMemory* memory = gst_buffer_peek_memory(pixels.buffer, 0);
  if (!gst_is_dmabuf_memory(memory)) return -1;
  std::byte* begin = reinterpret_cast<std::byte*>(pixels.map[0].data) - memory->offset;
  wire::Picture described = picture;
  describePixels(pixels, begin, described);
  if (!picturePixels(described, begin, memory->maxsize)) return -1;
  described.isOnDevice = true;
  picture = described;
  return gst_dmabuf_memory_get_fd(memory);
}

bool PictureSender::describeCopy(const GstVideoFrame& pixels, wire::Picture& picture,
                                 std::shared_ptr<const void>& keeper) const {
  const GstVideoInfo& from = pixels.info;
  GstVideoFrame copy = pixels;
  if (!gst_video_info_set_interlaced_format(&copy.info, GST_VIDEO_INFO_FORMAT(&from),
                                            GST_VIDEO_INFO_INTERLACE_MODE(&from), static_cast<guint>(from.width),
                                            static_cast<guint>(from.height))) {
    return false;
  }
  const std::size_t size = GST_VIDEO_INFO_SIZE(&copy.info);
  std::byte* pages = slots_->take(size);
  if (!pages) return false;
  const std::shared_ptr<const void> slot(pages,
                                         [slots = slots_, size](std::byte* given) { slots->giveBack(given, size); });
  const auto place = slots_->placeOf(pages);
  if (!place) return false;
  for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&pixels); ++plane) {
    copy.data[plane] = pages + GST_VIDEO_INFO_PLANE_OFFSET(&copy.info, plane);
  }
  if (!gst_video_frame_copy(&copy, &pixels)) return false;
  copy.info.colorimetry = from.colorimetry;
  copy.info.chroma_site = from.chroma_site;
  GST_VIDEO_INFO_PAR_N(&copy.info) = GST_VIDEO_INFO_PAR_N(&from);
  GST_VIDEO_INFO_PAR_D(&copy.info) = GST_VIDEO_INFO_PAR_D(&from);
  GST_VIDEO_INFO_FPS_N(&copy.info) = GST_VIDEO_INFO_FPS_N(&from);
  GST_VIDEO_INFO_FPS_D(&copy.info) = GST_VIDEO_INFO_FPS_D(&from);
  describePixels(copy, place->begin, picture);
  picture.area = place->area;
  picture.slot = place->slot;
  keeper = slot;
  return picturePixels(picture, place->begin, place->size).has_value();
}
