#include <gtest/gtest.h>

#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/avfoundation/engine/PictureConverter.h"

namespace {

GstVideoInfo infoOf(GstVideoFormat format, int width, int height) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, format, static_cast<guint>(width), static_cast<guint>(height));
  return info;
}

GstMiniObjectRef<GstBuffer> noiseOf(const GstVideoInfo& info) {
  GstMiniObjectRef<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr));
  GstMapInfo map;
  gst_buffer_map(buffer.get(), &map, GST_MAP_WRITE);
  std::uint32_t seed = 1;
  for (gsize i = 0; i < map.size; ++i) map.data[i] = static_cast<guint8>((seed = seed * 1664525 + 1013904223) >> 24);
  gst_buffer_unmap(buffer.get(), &map);
  return buffer;
}

// As the media library draws the whole of it.
std::vector<std::uint8_t> drawnAtOnce(GstVideoInfo info, GstBuffer* buffer) {
  GstVideoInfo to = infoOf(GST_VIDEO_FORMAT_BGRx, info.width, info.height);
  GST_VIDEO_INFO_FPS_N(&to) = GST_VIDEO_INFO_FPS_N(&info);
  std::vector<std::uint8_t> pixels(GST_VIDEO_INFO_SIZE(&to));
  GstVideoConverter* converter = gst_video_converter_new(&info, &to, nullptr);
  GstVideoFrame source, target{};
  gst_video_frame_map(&source, &info, buffer, GST_MAP_READ);
  target.info = to;
  target.data[0] = pixels.data();
  gst_video_converter_frame(converter, &source, &target);
  gst_video_frame_unmap(&source);
  gst_video_converter_free(converter);
  return pixels;
}

TEST(DecodedPictures, lookTheSameDrawnByRowsAndAtOnce) {
  gst_init(nullptr, nullptr);
  PictureConverter converter;
  for (const GstVideoFormat format :
       {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12, GST_VIDEO_FORMAT_NV12, GST_VIDEO_FORMAT_Y42B,
        GST_VIDEO_FORMAT_Y444, GST_VIDEO_FORMAT_YUY2, GST_VIDEO_FORMAT_I420_10LE, GST_VIDEO_FORMAT_I422_10LE,
        GST_VIDEO_FORMAT_RGB, GST_VIDEO_FORMAT_GRAY8, GST_VIDEO_FORMAT_RGB8P}) {
    for (const auto& [width, height] : {std::pair(64, 48), std::pair(1280, 720), std::pair(61, 37), std::pair(2, 2)}) {
      SCOPED_TRACE(testing::Message() << gst_video_format_to_string(format) << " " << width << "x" << height);
      const GstVideoInfo info = infoOf(format, width, height);
      const auto buffer = noiseOf(info);
      const VideoFrame frame = converter.convert(info, buffer.get());
      ASSERT_TRUE(frame.isValid());
      std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width * height * 4));
      for (int row = 0; row < height; row += frame.decoded->rowsAtOnce()) {
        frame.decoded->draw(row, pixels.data() + row * width * 4, width * 4);
      }
      const auto expected = drawnAtOnce(info, buffer.get());
      int different = 0;
      for (std::size_t i = 0; i < pixels.size(); ++i) different += i % 4 != 3 && pixels[i] != expected[i];
      EXPECT_EQ(different, 0);
    }
  }
}

}  // namespace
