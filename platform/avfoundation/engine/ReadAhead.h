#pragma once

#include <gst/gst.h>

#include <atomic>
#include <memory>
#include <optional>

#include "platform/avfoundation/bytes/MediaBytes.h"
#include "platform/avfoundation/engine/MediaEngine.h"

// A resource's bytes as a demuxer reads them, and what of them is here beyond that, in seconds: bytes are taken to last
// as long as the media's do on average.
//
// open() once, before anything else; any thread, reads by one at a time.
class ReadAhead {
 public:
  ReadAhead(std::shared_ptr<MediaBytes> bytes, MediaPurpose purpose) : bytes_(std::move(bytes)), purpose_(purpose) {}

  // Waits for the resource's answer.
  MediaBytes::Outcome open() { return bytes_->head(head_); }
  const MediaBytes::Head& head() const { return head_; }
  MediaBytes::Outcome read(std::uint64_t place, std::span<std::byte> target, std::size_t& count);
  void setInterrupted(bool interrupted) { bytes_->setInterrupted(interrupted); }
  std::optional<NSError> failure() const { return bytes_->failure(); }
  // There was nothing to read.
  bool isEmpty() const { return isEmpty_ || head_.length == 0u; }

  // How long the media are, in nanoseconds: from now on as much is kept ready as its purpose asks for.
  void setDuration(std::int64_t duration);
  // How much later in the media than what has been parsed so far is here; 0 when it can't be told. Nanoseconds.
  GstClockTime timeAhead() const;
  bool isFull() const { return bytes_->isFull(); }

 private:
  const std::shared_ptr<MediaBytes> bytes_;
  const MediaPurpose purpose_;
  MediaBytes::Head head_;
  std::atomic<std::uint64_t> place_{0};  // behind what was read last
  std::atomic<std::int64_t> duration_{0};
  std::atomic<bool> isEmpty_{false};
};
