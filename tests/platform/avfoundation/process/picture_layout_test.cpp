#include "platform/avfoundation/process/PictureLayout.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/avfoundation/engine/PictureConverter.h"

namespace {

// Random descriptions are refused, or every byte that drawing reads is in the slot: the checkers see the rest.
TEST(PictureLayout, nothingThatIsTakenLiesOutsideOfTheSlotWhateverIsSaid) {
  gst_init(nullptr, nullptr);
  std::mt19937 random(1);
  const auto below = [&](std::uint32_t limit) {
    return std::uniform_int_distribution<std::uint32_t>(0, limit - 1)(random);
  };
  PictureConverter converter;
  int taken = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::vector<std::byte> slot(64 * 1024);
    GstVideoInfo info;
    const auto format = static_cast<GstVideoFormat>(2 + below(GST_VIDEO_FORMAT_AV12 - 1));
    const int width = static_cast<int>(1 + below(160)), height = static_cast<int>(1 + below(160));
    gst_video_info_set_format(&info, format, static_cast<guint>(width), static_cast<guint>(height));
    GstVideoFrame frame{};
    frame.info = info;
    for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&info); ++plane) {
      frame.data[plane] = slot.data() + GST_VIDEO_INFO_PLANE_OFFSET(&info, plane);
    }
    wire::Picture picture;
    describePixels(frame, slot.data(), picture);
    auto* lie = reinterpret_cast<std::uint8_t*>(&picture);
    for (std::uint32_t lies = below(4); lies > 0; --lies) {
      lie[below(offsetof(wire::Picture, rotation))] = static_cast<std::uint8_t>(below(256));
    }
    const auto pixels = picturePixels(picture, slot.data(), slot.size());
    if (!pixels) continue;
    ++taken;
    const VideoFrame drawn = converter.convert(*pixels, nullptr);
    if (!drawn.isValid() || drawn.width * drawn.height > 1 << 18) continue;
    std::vector<std::uint8_t> bits(static_cast<std::size_t>(drawn.width * drawn.height * 4));
    for (int row = 0; row < drawn.height; row += drawn.decoded->rowsAtOnce()) {
      drawn.decoded->draw(row, bits.data() + row * drawn.width * 4, drawn.width * 4);
    }
  }
  EXPECT_GT(taken, 1000);
}

}  // namespace
