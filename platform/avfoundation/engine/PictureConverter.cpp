#include "platform/avfoundation/engine/PictureConverter.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace {

// Few enough to stay in a processor's cache on the way. A multiple of what interlaced rows and dithering repeat after.
constexpr int fewRows = 16;

// Whether rows can be drawn without a look at the rows around them.
bool isDrawnByRows(const GstVideoInfo& info) {
  if (GST_VIDEO_INFO_IS_INTERLACED(&info)) return false;
  if (GST_VIDEO_FORMAT_INFO_IS_TILED(info.finfo) || GST_VIDEO_FORMAT_INFO_HAS_PALETTE(info.finfo)) return false;
  const auto format = GST_VIDEO_INFO_FORMAT(&info);
  if (format == GST_VIDEO_FORMAT_I420 || format == GST_VIDEO_FORMAT_YV12) return true;
  for (guint component = 0; component < GST_VIDEO_INFO_N_COMPONENTS(&info); ++component) {
    if (GST_VIDEO_FORMAT_INFO_H_SUB(info.finfo, component) > 0) return false;
  }
  return true;
}

VideoFrame frameOf(const GstVideoInfo& info, std::shared_ptr<const DecodedPicture> picture) {
  VideoFrame frame;
  frame.width = info.width;
  frame.height = info.height;
  frame.pixelAspectNumerator = GST_VIDEO_INFO_PAR_N(&info);
  frame.pixelAspectDenominator = GST_VIDEO_INFO_PAR_D(&info);
  frame.decoded = std::move(picture);
  return frame;
}

}  // namespace

// How pictures of one kind become B G R X.
class PictureConverter::Conversion {
 public:
  explicit Conversion(const GstVideoInfo& info)
      : from_(info),
        rowsAtOnce_(isDrawnByRows(info) ? std::min(fewRows, info.height) : info.height),
        full_(converterFor(rowsAtOnce_)),
        last_(converterFor(info.height % rowsAtOnce_)) {}

  bool works() const { return full_ && (last_ || from_.height % rowsAtOnce_ == 0); }
  bool isFor(const GstVideoInfo& info) const { return gst_video_info_is_equal(&info, &from_); }
  int rowsAtOnce() const { return rowsAtOnce_; }

  void draw(const GstVideoFrame& picture, int first, std::uint8_t* bits, int stride) {
    const int rows = std::min(rowsAtOnce_, from_.height - first);
    GstVideoFrame source = picture;
    source.info.height = rows;
    for (guint plane = 0; first > 0 && plane < GST_VIDEO_FRAME_N_PLANES(&picture); ++plane) {
      gint component[GST_VIDEO_MAX_COMPONENTS];
      gst_video_format_info_component(from_.finfo, plane, component);
      const int row = GST_VIDEO_FORMAT_INFO_SCALE_HEIGHT(from_.finfo, component[0], first);
      source.data[plane] =
          static_cast<std::uint8_t*>(picture.data[plane]) + row * GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane);
    }
    GstVideoFrame target{};
    target.info = targetInfo(rows);
    target.info.stride[0] = stride;
    target.data[0] = bits;
    std::lock_guard lock(mutex_);
    gst_video_converter_frame(rows == rowsAtOnce_ ? full_.get() : last_.get(), &source, &target);
  }

 private:
  struct Release {
    void operator()(GstVideoConverter* converter) const { gst_video_converter_free(converter); }
  };
  using Converter = std::unique_ptr<GstVideoConverter, Release>;

  GstVideoInfo targetInfo(int rows) const {
    GstVideoInfo to;
    gst_video_info_set_format(&to, GST_VIDEO_FORMAT_BGRx, static_cast<guint>(from_.width), static_cast<guint>(rows));
    // A rate or a field order of its own would be a conversion too.
    GST_VIDEO_INFO_FPS_N(&to) = GST_VIDEO_INFO_FPS_N(&from_);
    GST_VIDEO_INFO_FPS_D(&to) = GST_VIDEO_INFO_FPS_D(&from_);
    GST_VIDEO_INFO_INTERLACE_MODE(&to) = GST_VIDEO_INFO_INTERLACE_MODE(&from_);
    return to;
  }

  Converter converterFor(int rows) const {
    if (rows == 0) return nullptr;
    GstVideoInfo source = from_;
    source.height = rows;
    const GstVideoInfo target = targetInfo(rows);
    return Converter(gst_video_converter_new(&source, &target, nullptr));
  }

  const GstVideoInfo from_;
  const int rowsAtOnce_;
  std::mutex mutex_;
  const Converter full_;
  const Converter last_;  // of the rows that remain; null when none do
};

class PictureConverter::Picture final : public DecodedPicture {
 public:
  Picture(std::shared_ptr<Conversion> conversion, const GstVideoInfo& info, GstBuffer* buffer)
      : conversion_(std::move(conversion)), isMapped_(gst_video_frame_map(&frame_, &info, buffer, GST_MAP_READ)) {}
  Picture(std::shared_ptr<Conversion> conversion, const GstVideoFrame& pixels, std::shared_ptr<const void> owner)
      : conversion_(std::move(conversion)), owner_(std::move(owner)), frame_(pixels) {
    frame_.buffer = nullptr;
  }
  ~Picture() override {
    if (isMapped_) gst_video_frame_unmap(&frame_);
  }

  bool isMapped() const { return isMapped_; }
  const GstVideoFrame& pixels() const { return frame_; }
  int rowsAtOnce() const override { return conversion_->rowsAtOnce(); }
  void draw(int first, std::uint8_t* target, int stride) const override {
    conversion_->draw(frame_, first, target, stride);
  }

 private:
  const std::shared_ptr<Conversion> conversion_;
  const std::shared_ptr<const void> owner_;
  GstVideoFrame frame_{};
  const bool isMapped_ = false;
};

std::shared_ptr<PictureConverter::Conversion> PictureConverter::conversionFor(const GstVideoInfo& info) {
  if (!conversion_ || !conversion_->isFor(info)) conversion_ = std::make_shared<Conversion>(info);
  return conversion_->works() ? conversion_ : nullptr;
}

VideoFrame PictureConverter::convert(const GstVideoInfo& info, GstBuffer* buffer) {
  auto conversion = conversionFor(info);
  if (!conversion) return {};
  auto picture = std::make_shared<Picture>(std::move(conversion), info, buffer);
  if (!picture->isMapped()) return {};
  return frameOf(info, std::move(picture));
}

VideoFrame PictureConverter::convert(const GstVideoFrame& picture, std::shared_ptr<const void> owner) {
  auto conversion = conversionFor(picture.info);
  if (!conversion) return {};
  return frameOf(picture.info, std::make_shared<Picture>(std::move(conversion), picture, std::move(owner)));
}

const GstVideoFrame* PictureConverter::pixelsOf(const DecodedPicture& picture) {
  const auto* own = dynamic_cast<const Picture*>(&picture);
  return own ? &own->pixels() : nullptr;
}
