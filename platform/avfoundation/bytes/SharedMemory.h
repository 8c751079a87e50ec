#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/avfoundation/bytes/Descriptor.h"

// Memory that two processes see: a descriptor that can be sent, and a mapping of it. Its size never changes, so that
// nobody's access to it can fail because of the other. Pages that nobody has written to cost nothing.
//
// A plain value; moves only.
class SharedMemory {
 public:
  enum class Access {
    bothWrite,
    ownerWrites,  // whoever gets the descriptor can only read, where the kernel knows how (5.1)
  };

  SharedMemory() = default;
  SharedMemory(SharedMemory&& other) noexcept;
  SharedMemory& operator=(SharedMemory&& other) noexcept;
  ~SharedMemory();

  // New memory, all zero. `name` is what the system's tools show. Empty when there is none left, or no descriptor.
  static SharedMemory make(const char* name, std::size_t size, Access access);
  // Memory that another process made; takes the descriptor. Empty when it is not at least `size` long.
  static SharedMemory adopt(Descriptor descriptor, std::size_t size, bool isWritable);

  explicit operator bool() const { return data_ != nullptr; }
  std::byte* data() const { return data_; }
  std::size_t size() const { return size_; }
  int descriptor() const { return descriptor_.get(); }
  // Makes sure that there is memory behind a part, which the system would otherwise find out when it is written to,
  // and end the process. Only for the maker.
  bool reserve(std::size_t offset, std::size_t size) const;
  // Gives the pages of a part back to the system; they are zero from then on. Both on a page's boundary.
  void forget(std::size_t offset, std::size_t size) const;

 private:
  static SharedMemory map(Descriptor descriptor, std::size_t size, bool isWritable);

  Descriptor descriptor_;
  std::byte* data_ = nullptr;
  std::size_t size_ = 0;
};
