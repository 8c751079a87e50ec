#include "platform/avfoundation/bytes/SharedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#ifndef F_SEAL_FUTURE_WRITE
#define F_SEAL_FUTURE_WRITE 0x0010
#endif

SharedMemory::SharedMemory(SharedMemory&& other) noexcept {
  *this = std::move(other);
}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  return *this;
}

SharedMemory::~SharedMemory() {
  if (data_) ::munmap(data_, size_);
}

SharedMemory SharedMemory::map(Descriptor descriptor, std::size_t size, bool isWritable) {
  SharedMemory memory;
  void* data = ::mmap(nullptr, size, isWritable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, descriptor.get(), 0);
  if (data == MAP_FAILED) return memory;
  memory.descriptor_ = std::move(descriptor);
  memory.data_ = static_cast<std::byte*>(data);
  memory.size_ = size;
  return memory;
}

SharedMemory SharedMemory::make(const char* name, std::size_t size, Access access) {
  Descriptor descriptor(::memfd_create(name, MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!descriptor || ::ftruncate(descriptor.get(), static_cast<off_t>(size)) != 0) return {};
  SharedMemory memory = map(std::move(descriptor), size, true);
  if (!memory || ::fcntl(memory.descriptor(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW) != 0) return {};
  // The owner's mapping is there already, and stays writable.
  if (access == Access::ownerWrites) ::fcntl(memory.descriptor(), F_ADD_SEALS, F_SEAL_FUTURE_WRITE);
  ::fcntl(memory.descriptor(), F_ADD_SEALS, F_SEAL_SEAL);
  return memory;
}

SharedMemory SharedMemory::adopt(Descriptor descriptor, std::size_t size, bool isWritable) {
  struct stat status {};
  if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || status.st_size < 0) return {};
  const auto whole = static_cast<std::size_t>(status.st_size);
  return whole < size ? SharedMemory() : map(std::move(descriptor), whole, isWritable);
}

bool SharedMemory::reserve(std::size_t offset, std::size_t size) const {
  return ::posix_fallocate(descriptor(), static_cast<off_t>(offset), static_cast<off_t>(size)) == 0;
}

void SharedMemory::forget(std::size_t offset, std::size_t size) const {
  ::fallocate(descriptor(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
              static_cast<off_t>(size));
}
