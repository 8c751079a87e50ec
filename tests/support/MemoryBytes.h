#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>

#include "platform/avfoundation/bytes/MediaBytes.h"

// A resource in memory that comes as far as a test lets it, or not at all.
class MemoryBytes final : public MediaBytes {
 public:
  explicit MemoryBytes(const std::string& file, bool isSeekable = true) {
    std::ifstream stream(file, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(stream), {});
    head_.isSeekable = isSeekable;
    head_.url = "http://127.0.0.1/" + file;
    head_.length = bytes_.size();
    limit_ = bytes_.size();
  }

  // Bytes before this place are here. The others come later, or never.
  void comeTo(std::size_t place) {
    set([&] { limit_ = std::min(place, bytes_.size()); });
  }
  void comeToEnd() { comeTo(bytes_.size()); }
  // Who wants what is not here is told so.
  void fail(const NSError& error) {
    set([&] { failure_ = error; });
  }
  void setAnswers(bool answers) {
    set([&] { answers_ = answers; });
  }
  void setURL(const std::string& url) { head_.url = url; }
  std::size_t size() const { return bytes_.size(); }
  std::uint64_t aheadLimit() const {
    std::lock_guard lock(mutex_);
    return aheadLimit_;
  }

  Outcome head(Head& head) override {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return answers_ || isInterrupted_; });
    head = head_;
    return isInterrupted_ ? Outcome::interrupted : Outcome::done;
  }
  Outcome read(std::uint64_t place, std::span<std::byte> target, std::size_t& count) override {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return isInterrupted_ || place < limit_ || place >= bytes_.size() || failure_; });
    if (isInterrupted_) return Outcome::interrupted;
    if (place >= bytes_.size()) return Outcome::ended;
    if (place >= limit_) return Outcome::failed;
    count = std::min<std::size_t>(target.size(), limit_ - place);
    std::memcpy(target.data(), bytes_.data() + place, count);
    return Outcome::done;
  }
  void setInterrupted(bool interrupted) override {
    set([&] { isInterrupted_ = interrupted; });
  }
  std::uint64_t ahead(std::uint64_t place) const override {
    std::lock_guard lock(mutex_);
    return limit_ - std::min<std::uint64_t>(place, limit_);
  }
  bool isFull() const override {
    std::lock_guard lock(mutex_);
    return limit_ == bytes_.size();
  }
  void setAheadLimit(std::uint64_t bytes) override {
    set([&] { aheadLimit_ = bytes; });
  }
  std::optional<NSError> failure() const override {
    std::lock_guard lock(mutex_);
    return failure_;
  }

 private:
  template <class Change>
  void set(Change change) {
    std::lock_guard lock(mutex_);
    change();
    changed_.notify_all();
  }
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::string bytes_;
  Head head_;
  std::size_t limit_ = 0;
  std::uint64_t aheadLimit_ = 0;
  bool answers_ = true;
  bool isInterrupted_ = false;
  std::optional<NSError> failure_;
};
