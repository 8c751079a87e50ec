#include "platform/avfoundation/process/DeviceMemory.h"

#include <linux/dma-buf.h>
#include <linux/magic.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/vfs.h>

#include <cerrno>
#include <utility>

const std::uint64_t DeviceMemory::fileSystem = DMA_BUF_MAGIC;

std::shared_ptr<const DeviceMemory> DeviceMemory::map(Descriptor descriptor, std::size_t limit, std::uint64_t wanted) {
  struct statfs system {};
  if (!descriptor || fstatfs(descriptor.get(), &system) != 0) return nullptr;
  if (static_cast<std::uint64_t>(system.f_type) != wanted) return nullptr;
  const off_t size = lseek(descriptor.get(), 0, SEEK_END);
  if (size <= 0 || static_cast<std::uint64_t>(size) > limit) return nullptr;
  // Telling the device would wait for it.
  pollfd done{descriptor.get(), POLLIN, 0};
  if (poll(&done, 1, 0) != 1 || !(done.revents & POLLIN)) return nullptr;
  const auto length = static_cast<std::size_t>(size);
  void* data = mmap(nullptr, length, PROT_READ, MAP_SHARED, descriptor.get(), 0);
  if (data == MAP_FAILED) return nullptr;
  return std::shared_ptr<const DeviceMemory>(
      new DeviceMemory(std::move(descriptor), static_cast<std::byte*>(data), length));
}

DeviceMemory::DeviceMemory(Descriptor descriptor, std::byte* data, std::size_t size)
    : descriptor_(std::move(descriptor)), data_(data), size_(size) {
  tellDevice(DMA_BUF_SYNC_START);
}

DeviceMemory::~DeviceMemory() {
  tellDevice(DMA_BUF_SYNC_END);
  munmap(data_, size_);
}

void DeviceMemory::tellDevice(std::uint64_t what) const {
  const dma_buf_sync sync{.flags = DMA_BUF_SYNC_READ | what};
  while (ioctl(descriptor_.get(), DMA_BUF_IOCTL_SYNC, &sync) != 0 && (errno == EINTR || errno == EAGAIN)) {
  }
}
