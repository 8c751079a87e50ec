#include "platform/avfoundation/bytes/PipeBytes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

Descriptor PipeBytes::open(const std::string& path) {
  return Descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

std::shared_ptr<PipeBytes> PipeBytes::make(Descriptor descriptor, std::string url) {
  struct stat status {};
  Descriptor interrupt(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!descriptor || !interrupt || ::fstat(descriptor.get(), &status) != 0) return nullptr;
  if (S_ISDIR(status.st_mode) || S_ISREG(status.st_mode)) return nullptr;
  Head head{.length = {}, .isSeekable = false, .contentType = {}, .url = std::move(url)};
  return std::shared_ptr<PipeBytes>(new PipeBytes(std::move(descriptor), std::move(interrupt), std::move(head)));
}

PipeBytes::PipeBytes(Descriptor descriptor, Descriptor interrupt, Head head)
    : descriptor_(std::move(descriptor)), interrupt_(std::move(interrupt)), head_(std::move(head)) {}

MediaBytes::Outcome PipeBytes::head(Head& head) {
  head = head_;
  return Outcome::done;
}

MediaBytes::Outcome PipeBytes::read(std::uint64_t place, std::span<std::byte> target, std::size_t& count) {
  count = 0;
  if (target.empty()) return Outcome::done;
  if (place < place_) return fail("It comes only once, and what is wanted has gone by.");
  while (place_ < place) {
    std::array<std::byte, 64 * 1024> passed;
    const auto part = std::min<std::uint64_t>(passed.size(), place - place_);
    if (const Outcome outcome = readNext(std::span(passed).first(part), count); outcome != Outcome::done) {
      return outcome;
    }
  }
  return readNext(target, count);
}

// A descriptor that comes from elsewhere may be one that blocks, and is shared with others who want that; so it is read
// only when there is something. The first look at a FIFO that nobody has opened for writing yet is no end.
MediaBytes::Outcome PipeBytes::readNext(std::span<std::byte> target, std::size_t& count) {
  count = 0;
  for (;;) {
    pollfd waits[] = {{interrupt_.get(), POLLIN, 0}, {descriptor_.get(), POLLIN, 0}};
    constexpr int forever = -1;
    if (::poll(waits, 2, forever) < 0 && errno != EINTR) return fail(std::strerror(errno));
    if (waits[0].revents) return Outcome::interrupted;
    if (!waits[1].revents) continue;
    const auto here = ::read(descriptor_.get(), target.data(), target.size());
    if (here < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (here < 0) return fail(std::strerror(errno));
    count = static_cast<std::size_t>(here);
    place_ += count;
    return count == 0 ? Outcome::ended : Outcome::done;
  }
}

MediaBytes::Outcome PipeBytes::fail(const std::string& reason) {
  std::lock_guard lock(mutex_);
  if (!failure_) {
    const auto slash = head_.url.find_last_of('/') + 1;  // 0 without one
    failure_ = NSError{NSURLErrorDomain, NSURLErrorResourceUnavailable,
                       "Reading " + head_.url.substr(slash) + " failed: " + reason};
  }
  return Outcome::failed;
}

void PipeBytes::setInterrupted(bool interrupted) {
  std::lock_guard lock(mutex_);
  if (interrupted == isInterrupted_) return;
  isInterrupted_ = interrupted;
  std::uint64_t count = 1;
  if (interrupted) {
    if (::write(interrupt_.get(), &count, sizeof count) < 0) return;  // it is readable already
  } else {
    if (::read(interrupt_.get(), &count, sizeof count) < 0) return;  // it was not readable
  }
}

std::uint64_t PipeBytes::ahead(std::uint64_t) const {
  return 0;
}
bool PipeBytes::isFull() const {
  return false;
}
void PipeBytes::setAheadLimit(std::uint64_t) {}

std::optional<NSError> PipeBytes::failure() const {
  std::lock_guard lock(mutex_);
  return failure_;
}
