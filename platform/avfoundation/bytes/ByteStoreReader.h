#pragma once

#include <array>
#include <atomic>
#include <memory>

#include "platform/Export.h"
#include "platform/avfoundation/bytes/ByteStore.h"

// The other side of a ByteStore, in the same process or another. It trusts the store's side. As long as it reads, no
// other one of the same store does; a store whose last reader has died may be given another.
class YMR_API ByteStoreReader final : public MediaBytes {
 public:
  // Takes the descriptors. nil when they are not a store's.
  static std::shared_ptr<ByteStoreReader> adopt(ByteStoreDescriptors descriptors);

  Outcome head(Head& head) override;
  Outcome read(std::uint64_t place, std::span<std::byte> target, std::size_t& count) override;
  void setInterrupted(bool interrupted) override;
  std::uint64_t ahead(std::uint64_t place) const override;
  bool isFull() const override;
  void setAheadLimit(std::uint64_t bytes) override;
  void setWish(std::uint64_t wish) override;
  std::optional<NSError> failure() const override;

 private:
  struct Window {
    std::uint32_t moves = 0;
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    bool holds(std::uint64_t place) const { return begin <= place && place < end; }
  };

  ByteStoreReader(SharedMemory memory, SharedMemory control, Descriptor wake);
  ByteStoreLayout::Board& board() const { return *reinterpret_cast<ByteStoreLayout::Board*>(memory_.data()); }
  ByteStoreLayout::Control& control() const { return *reinterpret_cast<ByteStoreLayout::Control*>(control_.data()); }
  // Waits until `look` finds its outcome, `ask`ing once when it does not at first.
  template <typename Look, typename Ask>
  Outcome waitFor(const Look& look, const Ask& ask);
  // A window as it was at one moment; nil while the lane is being moved.
  std::optional<Window> window(std::size_t lane) const;
  // How much of what is at `place` was copied out of a lane; nothing when it is not there or went away meanwhile.
  std::size_t copy(std::size_t lane, std::uint64_t place, std::span<std::byte> target) const;
  void noteRead(std::size_t lane, std::uint64_t place);
  void wakeStore() const;

  const SharedMemory memory_, control_;
  const Descriptor wake_;
  std::atomic<bool> isInterrupted_ = false;
  std::atomic<std::uint64_t> place_ = 0;  // behind what was read last
  // What the reading thread told the store when it last woke it.
  std::array<std::uint64_t, ByteStoreLayout::lanes> toldPlace_{};
  std::size_t toldLane_ = 0;
  std::uint64_t uses_ = 0;
};
