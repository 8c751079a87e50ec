#include "platform/avfoundation/engine/ReadAhead.h"

#include <algorithm>

#include "platform/avfoundation/engine/Buffering.h"

MediaBytes::Outcome ReadAhead::read(std::uint64_t place, std::span<std::byte> target, std::size_t& count) {
  const MediaBytes::Outcome outcome = bytes_->read(place, target, count);
  if (outcome == MediaBytes::Outcome::done) place_ = place + count;
  if (outcome == MediaBytes::Outcome::ended && place == 0) isEmpty_ = true;
  return outcome;
}

void ReadAhead::setDuration(std::int64_t duration) {
  if (duration <= 0 || duration_.exchange(duration) == duration || !head_.length) return;
  const double bytesPerNanosecond = static_cast<double>(*head_.length) / static_cast<double>(duration);
  const double wanted = bytesPerNanosecond * static_cast<double>(aheadTime(purpose_));
  bytes_->setAheadLimit(static_cast<std::uint64_t>(std::max(wanted, leastAheadBytes)));
}

GstClockTime ReadAhead::timeAhead() const {
  const std::int64_t duration = duration_;
  if (duration <= 0 || head_.length.value_or(0) == 0) return 0;
  const std::uint64_t place = place_, length = *head_.length;
  const std::uint64_t ahead = place < length ? std::min(bytes_->ahead(place), length - place) : 0;
  return static_cast<GstClockTime>(static_cast<double>(ahead) / static_cast<double>(length) *
                                   static_cast<double>(duration));
}
