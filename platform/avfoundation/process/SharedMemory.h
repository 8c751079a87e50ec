#pragma once

#include <unistd.h>

#include <cstddef>
#include <memory>
#include <utility>

// A file descriptor, closed with its owner. Any thread.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

// Memory that two processes see. It neither shrinks nor grows, so that nobody who looks at it can be made to fall off
// its end. Pages that nobody has touched cost nothing. Any thread.
class SharedMemory {
 public:
  // Makes `size` bytes of zeros, sealed; null when the system has none.
  static std::shared_ptr<SharedMemory> make(std::size_t size);
  // Maps what another process made and is trusted with; null when it is shorter than `size`.
  static std::shared_ptr<SharedMemory> map(Descriptor descriptor, std::size_t size);
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
  ~SharedMemory();

  std::byte* bytes() const { return bytes_; }
  std::size_t size() const { return size_; }
  int descriptor() const { return descriptor_.get(); }
  // Gives the pages of a part back to the system; they read as zeros from then on. Both on a page's boundary.
  void forget(std::size_t offset, std::size_t size);

 private:
  SharedMemory(Descriptor descriptor, std::byte* bytes, std::size_t size)
      : descriptor_(std::move(descriptor)), bytes_(bytes), size_(size) {}

  const Descriptor descriptor_;
  std::byte* const bytes_;
  const std::size_t size_;
};
