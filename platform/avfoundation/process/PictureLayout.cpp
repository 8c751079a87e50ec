#include "platform/avfoundation/process/PictureLayout.h"

#include <algorithm>

namespace {

constexpr int sideLimit = 16384;
constexpr std::int32_t fractionLimit = 1 << 20;

// Formats whose rows lie one after the other.
bool isDrawable(const GstVideoFormatInfo* format) {
  if (!format || GST_VIDEO_FORMAT_INFO_FORMAT(format) <= GST_VIDEO_FORMAT_ENCODED) return false;
  return !GST_VIDEO_FORMAT_INFO_IS_TILED(format);
}

bool isFraction(std::int32_t numerator, std::int32_t denominator) {
  return numerator >= 0 && numerator <= fractionLimit && denominator > 0 && denominator <= fractionLimit;
}

// What the media library knows of such pictures, laid out by its own rule; nil when there is no such picture.
std::optional<GstVideoInfo> plainInfo(const wire::Picture& picture) {
  if (picture.format > GST_VIDEO_FORMAT_AV12) return std::nullopt;
  const auto format = static_cast<GstVideoFormat>(picture.format);
  if (format <= GST_VIDEO_FORMAT_ENCODED || !isDrawable(gst_video_format_get_info(format))) return std::nullopt;
  if (picture.width < 1 || picture.width > sideLimit || picture.height < 1 || picture.height > sideLimit) {
    return std::nullopt;
  }
  if (picture.interlaceMode > GST_VIDEO_INTERLACE_MODE_MIXED) return std::nullopt;
  if (!isFraction(picture.aspectNumerator, picture.aspectDenominator) || picture.aspectNumerator == 0 ||
      !isFraction(picture.rateNumerator, picture.rateDenominator)) {
    return std::nullopt;
  }
  const auto& [range, matrix, transfer, primaries] = picture.colours;
  if (range > GST_VIDEO_COLOR_RANGE_16_235 || matrix > GST_VIDEO_COLOR_MATRIX_BT2020 ||
      transfer > GST_VIDEO_TRANSFER_BT601 || primaries > GST_VIDEO_COLOR_PRIMARIES_EBU3213 ||
      picture.chromaSite > (GST_VIDEO_CHROMA_SITE_NONE | GST_VIDEO_CHROMA_SITE_H_COSITED |
                            GST_VIDEO_CHROMA_SITE_V_COSITED | GST_VIDEO_CHROMA_SITE_ALT_LINE)) {
    return std::nullopt;
  }
  GstVideoInfo info;
  if (!gst_video_info_set_interlaced_format(&info, format, static_cast<GstVideoInterlaceMode>(picture.interlaceMode),
                                            static_cast<guint>(picture.width), static_cast<guint>(picture.height))) {
    return std::nullopt;
  }
  info.colorimetry = {static_cast<GstVideoColorRange>(range), static_cast<GstVideoColorMatrix>(matrix),
                      static_cast<GstVideoTransferFunction>(transfer), static_cast<GstVideoColorPrimaries>(primaries)};
  info.chroma_site = static_cast<GstVideoChromaSite>(picture.chromaSite);
  GST_VIDEO_INFO_PAR_N(&info) = picture.aspectNumerator;
  GST_VIDEO_INFO_PAR_D(&info) = picture.aspectDenominator;
  GST_VIDEO_INFO_FPS_N(&info) = picture.rateNumerator;
  GST_VIDEO_INFO_FPS_D(&info) = picture.rateDenominator;
  return info;
}

}  // namespace

void describePixels(const GstVideoFrame& picture, const std::byte* slot, wire::Picture& description) {
  const GstVideoInfo& info = picture.info;
  description.format = GST_VIDEO_INFO_FORMAT(&info);
  description.interlaceMode = GST_VIDEO_INFO_INTERLACE_MODE(&info);
  description.flags = picture.flags;
  description.chromaSite = info.chroma_site;
  description.colours = {
      static_cast<std::uint32_t>(info.colorimetry.range), static_cast<std::uint32_t>(info.colorimetry.matrix),
      static_cast<std::uint32_t>(info.colorimetry.transfer), static_cast<std::uint32_t>(info.colorimetry.primaries)};
  description.width = info.width;
  description.height = info.height;
  description.aspectNumerator = GST_VIDEO_INFO_PAR_N(&info);
  description.aspectDenominator = GST_VIDEO_INFO_PAR_D(&info);
  description.rateNumerator = GST_VIDEO_INFO_FPS_N(&info);
  description.rateDenominator = GST_VIDEO_INFO_FPS_D(&info);
  for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&picture); ++plane) {
    description.offsets[plane] = static_cast<std::uint64_t>(static_cast<const std::byte*>(picture.data[plane]) - slot);
    description.strides[plane] = GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane);
  }
}

std::optional<GstVideoFrame> picturePixels(const wire::Picture& description, std::byte* slot, std::size_t slotSize) {
  const auto info = plainInfo(description);
  if (!info) return std::nullopt;
  GstVideoFrame frame{};
  frame.info = *info;
  constexpr std::uint32_t flags = GST_VIDEO_FRAME_FLAG_INTERLACED | GST_VIDEO_FRAME_FLAG_TFF |
                                  GST_VIDEO_FRAME_FLAG_RFF | GST_VIDEO_FRAME_FLAG_ONEFIELD;
  frame.flags = static_cast<GstVideoFrameFlags>(description.flags & flags);
  const guint planes = GST_VIDEO_INFO_N_PLANES(&*info);
  for (guint plane = 0; plane < planes; ++plane) {
    // As many rows as the library's own layout has, each at least as long: that is all that its converters read.
    const auto plainStride = static_cast<std::uint64_t>(GST_VIDEO_INFO_PLANE_STRIDE(&*info, plane));
    const std::uint64_t begin = GST_VIDEO_INFO_PLANE_OFFSET(&*info, plane);
    const std::uint64_t end =
        plane + 1 < planes ? GST_VIDEO_INFO_PLANE_OFFSET(&*info, plane + 1) : GST_VIDEO_INFO_SIZE(&*info);
    if (description.strides[plane] <= 0 || plainStride == 0 || end <= begin) return std::nullopt;
    const auto stride = static_cast<std::uint64_t>(description.strides[plane]);
    const std::uint64_t rows = (end - begin + plainStride - 1) / plainStride;
    const std::uint64_t length = stride * (rows - 1) + plainStride;
    const std::uint64_t offset = description.offsets[plane];
    if (stride < plainStride || length > slotSize || offset > slotSize - length) return std::nullopt;
    frame.data[plane] = slot + offset;
    frame.info.offset[plane] = offset;
    frame.info.stride[plane] = description.strides[plane];
  }
  frame.info.size = slotSize;
  return frame;
}
