#include "platform/avfoundation/process/SharedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

std::shared_ptr<SharedMemory> SharedMemory::make(std::size_t size) {
  Descriptor descriptor(memfd_create("ymr", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!descriptor || ftruncate(descriptor.get(), static_cast<off_t>(size)) != 0) return nullptr;
  if (fcntl(descriptor.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) return nullptr;
  return map(std::move(descriptor), size);
}

std::shared_ptr<SharedMemory> SharedMemory::map(Descriptor descriptor, std::size_t size) {
  struct stat status {};
  if (fstat(descriptor.get(), &status) != 0 || status.st_size < static_cast<off_t>(size)) return nullptr;
  void* bytes = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor.get(), 0);
  if (bytes == MAP_FAILED) return nullptr;
  return std::shared_ptr<SharedMemory>(new SharedMemory(std::move(descriptor), static_cast<std::byte*>(bytes), size));
}

SharedMemory::~SharedMemory() {
  munmap(bytes_, size_);
}

void SharedMemory::forget(std::size_t offset, std::size_t size) {
  fallocate(descriptor_.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
            static_cast<off_t>(size));
}
