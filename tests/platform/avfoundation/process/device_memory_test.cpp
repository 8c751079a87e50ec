#include "platform/avfoundation/process/DeviceMemory.h"

#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/mman.h>

#include <cstring>

#include "platform/avfoundation/process/PictureLayout.h"
#include "platform/avfoundation/process/PictureReceiver.h"

namespace {

constexpr std::size_t pageSize = 4096;

Descriptor memoryOf(std::size_t size) {
  Descriptor memory(memfd_create("test", MFD_CLOEXEC));
  return memory && ftruncate(memory.get(), static_cast<off_t>(size)) == 0 ? std::move(memory) : Descriptor();
}

// No machine of a build farm has a device that decodes: ordinary memory stands in for one's.
TEST(DeviceMemory, isReadWhereItLiesUnlessItIsEmptyOrTooLong) {
  Descriptor memory = memoryOf(pageSize);
  ASSERT_EQ(pwrite(memory.get(), "pixels", 6, 0), 6);
  const auto mapped = DeviceMemory::map(Descriptor(dup(memory.get())), pageSize, TMPFS_MAGIC);
  ASSERT_TRUE(mapped);
  EXPECT_EQ(mapped->size(), pageSize);
  EXPECT_EQ(std::memcmp(mapped->data(), "pixels", 6), 0);
  EXPECT_FALSE(DeviceMemory::map(std::move(memory), pageSize - 1, TMPFS_MAGIC));
  EXPECT_FALSE(DeviceMemory::map(memoryOf(0), pageSize, TMPFS_MAGIC));
}

TEST(DeviceMemory, isNoOtherThingThatAProcessMayHandOver) {
  PictureReceiver receiver([](std::uint64_t) {});
  wire::Picture picture;
  ASSERT_TRUE(receiver.makeRoom(64 * 1024));
  GstVideoFrame pixels{};
  gst_video_info_set_format(&pixels.info, GST_VIDEO_FORMAT_I420, 16, 16);
  std::byte begin{};
  for (guint plane = 0; plane < 3; ++plane)
    pixels.data[plane] = &begin + GST_VIDEO_INFO_PLANE_OFFSET(&pixels.info, plane);
  describePixels(pixels, &begin, picture);
  EXPECT_TRUE(receiver.take(picture, {})) << "in the slot";
  EXPECT_TRUE(receiver.take(picture, memoryOf(pageSize))) << "what came with it is let go";
  picture.isOnDevice = true;
  EXPECT_FALSE(receiver.take(picture, memoryOf(pageSize))) << "it could be cut";
  EXPECT_FALSE(receiver.take(picture, Descriptor(dup(STDERR_FILENO))));
  EXPECT_FALSE(receiver.take(picture, {}));
}

}  // namespace
