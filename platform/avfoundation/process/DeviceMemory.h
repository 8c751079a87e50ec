#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/avfoundation/bytes/Descriptor.h"

// Memory that a decoder's device has filled (a dmabuf) and another process has handed over by its descriptor: mapped to
// be read for as long as this lives, with the device told so. Its size never changes, as the system sees to.
//
// Made and read on any thread.
class DeviceMemory {
 public:
  // The file system that such descriptors are of; others are memory or files that could be cut while they are read.
  static const std::uint64_t fileSystem;

  // Null when the descriptor is of anything else, is longer than `limit`, or when the device is not done with it.
  static std::shared_ptr<const DeviceMemory> map(Descriptor descriptor, std::size_t limit,
                                                 std::uint64_t wanted = fileSystem);
  ~DeviceMemory();
  DeviceMemory(const DeviceMemory&) = delete;
  DeviceMemory& operator=(const DeviceMemory&) = delete;

  // To be read only.
  std::byte* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  DeviceMemory(Descriptor descriptor, std::byte* data, std::size_t size);
  void tellDevice(std::uint64_t what) const;

  const Descriptor descriptor_;
  std::byte* const data_;
  const std::size_t size_;
};
