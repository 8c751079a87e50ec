#include "xml/TreeMemory.h"

#include <atomic>
#include <new>

namespace {

constexpr std::size_t bytesOfBlock = 16 * 1024;
constexpr std::size_t cutLimit = 1024;
// What a scope holds of its block while it cuts, so that only the end of a block counts its pieces.
constexpr std::size_t heldByScope = bytesOfBlock;

thread_local XMLTreeMemory::Scope* current = nullptr;

}  // namespace

struct XMLTreeMemory::Scope::Block {
  std::atomic<std::size_t> held{heldByScope};
  alignas(void*) std::byte bytes[bytesOfBlock];

  void release(std::size_t count) {
    if (held.fetch_sub(count, std::memory_order_acq_rel) == count) delete this;
  }
};

// In front of what is given out.
struct XMLTreeMemory::Scope::Piece {
  Block* block;  // null for a piece that lies for itself
};

XMLTreeMemory::Scope::Scope() : outer_(current) {
  current = this;
}

XMLTreeMemory::Scope::~Scope() {
  leaveBlock();
  current = outer_;
}

void XMLTreeMemory::Scope::leaveBlock() {
  if (block_) block_->release(heldByScope - piecesCut_);
  block_ = nullptr;
}

XMLTreeMemory::Scope::Piece* XMLTreeMemory::Scope::cut(std::size_t size) {
  if (!block_ || size > bytesOfBlock - bytesCut_) {
    leaveBlock();
    block_ = new Block;
    bytesCut_ = piecesCut_ = 0;
  }
  void* const place = block_->bytes + bytesCut_;
  bytesCut_ += size;
  ++piecesCut_;
  return new (place) Piece{block_};
}

void* XMLTreeMemory::allocate(std::size_t size) {
  using Piece = Scope::Piece;
  size = (size + sizeof(Piece) + sizeof(Piece) - 1) / sizeof(Piece) * sizeof(Piece);
  if (current && size <= cutLimit) return current->cut(size) + 1;
  return new (::operator new(size)) Piece{nullptr} + 1;
}

void XMLTreeMemory::deallocate(void* piece) {
  auto* const head = static_cast<Scope::Piece*>(piece) - 1;
  if (head->block) {
    head->block->release(1);
  } else {
    ::operator delete(head);
  }
}
