#pragma once

#include <cstddef>

#include "platform/Export.h"

// Where elements and their attributes lie: most of what a tree costs is allocation. While a thread reads a document,
// they are cut from larger blocks; at other times each lies for itself. A block goes when the last of its pieces has
// gone, in any order and on any thread, so that an element that is kept alone keeps little else.
class YMR_API XMLTreeMemory {
 public:
  // A document being read by this thread. Scopes of one thread are nested.
  class Scope;

  XMLTreeMemory() = delete;

  // Aligned as pointers are.
  static void* allocate(std::size_t size);
  static void deallocate(void* piece);
};

class XMLTreeMemory::Scope {
 public:
  Scope();
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

 private:
  friend XMLTreeMemory;
  struct Block;
  struct Piece;

  Piece* cut(std::size_t size);
  void leaveBlock();

  Scope* const outer_;
  Block* block_ = nullptr;
  std::size_t bytesCut_ = 0;  // of the block
  std::size_t piecesCut_ = 0;
};

// The same for the standard library's containers and shared pointers.
template <class T>
struct XMLTreeAllocator {
  static_assert(alignof(T) <= alignof(void*));
  using value_type = T;

  XMLTreeAllocator() = default;
  template <class U>
  XMLTreeAllocator(const XMLTreeAllocator<U>&) {}

  T* allocate(std::size_t count) { return static_cast<T*>(XMLTreeMemory::allocate(count * sizeof(T))); }
  void deallocate(T* piece, std::size_t) { XMLTreeMemory::deallocate(piece); }
  friend bool operator==(const XMLTreeAllocator&, const XMLTreeAllocator&) { return true; }
};
