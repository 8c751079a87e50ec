#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "platform/Export.h"
#include "platform/avfoundation/bytes/Descriptor.h"
#include "platform/avfoundation/bytes/MediaBytes.h"

// The bytes of a pipe, a FIFO or a device, in the order in which they come, once. What is passed over on the way to a
// place is lost, and no place before it can be read again. Nothing is held ready. A FIFO without a writer and a pipe
// that stalls are waited for, as any server is.
class YMR_API PipeBytes final : public MediaBytes {
 public:
  // Opens a path for reading without waiting for a pipe's other end; -1, with errno, when it can't be.
  static Descriptor open(const std::string& path);
  // Takes the descriptor; nil when it is a regular file's, which is read elsewhere, or can't be read from, as a
  // folder's can't. `url` is what head() tells.
  static std::shared_ptr<PipeBytes> make(Descriptor descriptor, std::string url);

  Outcome head(Head& head) override;
  Outcome read(std::uint64_t place, std::span<std::byte> target, std::size_t& count) override;
  void setInterrupted(bool interrupted) override;
  std::uint64_t ahead(std::uint64_t place) const override;
  bool isFull() const override;
  void setAheadLimit(std::uint64_t bytes) override;
  std::optional<NSError> failure() const override;

 private:
  PipeBytes(Descriptor descriptor, Descriptor interrupt, Head head);
  // What comes next.
  Outcome readNext(std::span<std::byte> target, std::size_t& count);
  Outcome fail(const std::string& reason);

  const Descriptor descriptor_;
  const Descriptor interrupt_;  // readable while interrupted
  const Head head_;
  std::uint64_t place_ = 0;   // of the next byte
  mutable std::mutex mutex_;  // guards what follows
  bool isInterrupted_ = false;
  std::optional<NSError> failure_;
};
