#include "platform/avfoundation/engine/SegmentReader.h"

#include <algorithm>
#include <chrono>

#include "platform/dispatch/BlockedSignals.h"

using namespace std::chrono_literals;

namespace {

using Kind = SegmentRecord::Kind;

constexpr auto lookAgain = 20ms;
constexpr auto lookForTexts = 100ms;

std::int64_t now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::string_view textOf(const std::vector<std::byte>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

SegmentReader::SegmentReader(std::shared_ptr<MediaBytes> bytes, SegmentClock& clock, std::vector<SegmentTrack*> tracks,
                             Hooks hooks)
    : bytes_(std::move(bytes)), tracks_(std::move(tracks)), hooks_(std::move(hooks)), texts_(clock, hooks_.textFound) {}

SegmentReader::~SegmentReader() {
  stop();
}

void SegmentReader::start(std::optional<std::int64_t> time) {
  {
    std::lock_guard lock(mutex_);
    if (time) {
      wish_.number = (wish_.number + 1) % SegmentWish::numbers;
      wish_.time = *time;
      bytes_->setWish(wish_.packed());
      place_ = wish_.mediaPlace();
      if (wish_.text) textPlace_ = wish_.textPlace();
      texts_.restart();
    }
  }
  isOver_ = false;
  isStopping_ = false;
  bytes_->setInterrupted(false);
  const BlockedSignals blocked;
  thread_ = std::thread([this] { run(); });
}

void SegmentReader::stop() {
  isStopping_ = true;
  bytes_->setInterrupted(true);
  if (thread_.joinable()) thread_.join();
}

void SegmentReader::wishText(unsigned track, std::int64_t time) {
  std::lock_guard lock(mutex_);
  if (wish_.text == track) return;
  wish_.number = (wish_.number + 1) % SegmentWish::numbers;
  wish_.text = track;
  // Where the row begins has perhaps not been heard of as long as nothing of it has come.
  const std::uint64_t place = place_;
  const bool hasBegun = place != SegmentWish{.number = SegmentWish::numberAt(place), .text = {}}.mediaPlace();
  if (hasBegun) wish_.time = std::max<std::int64_t>(time, 0);
  textPlace_ = wish_.textPlace();
  bytes_->setWish(wish_.packed());
}

void SegmentReader::run() {
  MediaBytes::Head head;
  Outcome outcome = bytes_->head(head);
  while (outcome == Outcome::done && !isStopping_ && !isOver_) {
    readTexts();
    outcome = readRecord();
  }
  if (outcome == Outcome::failed || outcome == Outcome::ended) hooks_.failed();
  while (isOver_ && !isStopping_) {
    readTexts();
    std::this_thread::sleep_for(lookForTexts);
  }
}

MediaBytes::Outcome SegmentReader::readFully(std::uint64_t place, std::span<std::byte> target) {
  while (!target.empty()) {
    std::size_t count = 0;
    const Outcome outcome = bytes_->read(place, target, count);
    if (outcome != Outcome::done) return outcome;
    place += count;
    target = target.subspan(count);
  }
  return Outcome::done;
}

MediaBytes::Outcome SegmentReader::readRecord() {
  std::array<std::byte, sizeof(SegmentRecord)> head;
  Outcome outcome = readFully(place_, head);
  if (outcome != Outcome::done) return outcome;
  const auto record = segmentRecord(head);
  if (!record) return Outcome::failed;
  SegmentTrack::Item item{*record, {}};
  if (record->size > 0) {
    item.content.reset(gst_buffer_new_allocate(nullptr, record->size, nullptr));
    GstMapInfo map;
    if (!gst_buffer_map(item.content.get(), &map, GST_MAP_WRITE)) return Outcome::failed;
    const auto content = std::as_writable_bytes(std::span(map.data, map.size));
    outcome = readFully(place_ + sizeof head, content);
    if (outcome == Outcome::done && record->kind == Kind::facts) noteFacts(*record, content);
    gst_buffer_unmap(item.content.get(), &map);
    if (outcome != Outcome::done) return outcome;
  }
  place_ += sizeof head + record->size;
  noteBytes(*record);
  texts_.giveHeld();
  if (record->kind == Kind::over) isOver_ = true;
  return record->kind == Kind::facts || handOn(std::move(item)) ? Outcome::done : Outcome::interrupted;
}

// To its track, or, what concerns them all, to each.
bool SegmentReader::handOn(SegmentTrack::Item item) {
  const bool isForAll = item.record.kind == Kind::hole || item.record.kind == Kind::over;
  for (std::size_t track = 0; track < tracks_.size(); ++track) {
    if (!isForAll && track != item.record.track) continue;
    SegmentTrack::Item one{item.record, isForAll ? nullptr : std::move(item.content)};
    while (!tracks_[track]->put(one)) {
      if (isStopping_) return false;
      readTexts();
      std::this_thread::sleep_for(lookAgain);
    }
  }
  return true;
}

void SegmentReader::noteBytes(const SegmentRecord& record) {
  if (record.track != SegmentRecord::mainTrack) return;
  if (record.kind == Kind::segment) segmentBytes_ = 0;
  if (record.kind == Kind::data) segmentBytes_ += record.size;
  if (record.kind == Kind::end && segmentBytes_ > 0 && !record.isCut) {
    timePerByte_ = static_cast<double>(record.duration) / static_cast<double>(segmentBytes_);
  }
}

void SegmentReader::noteFacts(const SegmentRecord& record, std::span<const std::byte> content) {
  {
    std::lock_guard lock(mutex_);
    window_ = record;
    facts_ = segmentFacts(content);
  }
  hooks_.factsChanged();
}

// Only what is here: nobody waits for texts.
void SegmentReader::readTexts() {
  for (;;) {
    std::uint64_t place = 0;
    {
      std::lock_guard lock(mutex_);
      place = textPlace_;
    }
    std::array<std::byte, sizeof(SegmentRecord)> head;
    if (place == 0 || bytes_->ahead(place) < head.size() || readFully(place, head) != Outcome::done) return;
    const auto record = segmentRecord(head);
    if (!record || bytes_->ahead(place) < head.size() + record->size) return;
    std::vector<std::byte> content(record->size);
    if (readFully(place + head.size(), content) != Outcome::done) return;
    texts_.take(*record, textOf(content));
    std::lock_guard lock(mutex_);
    if (textPlace_ == place) textPlace_ += head.size() + record->size;
  }
}

std::optional<SegmentReader::Window> SegmentReader::window() const {
  std::lock_guard lock(mutex_);
  if (!window_) return std::nullopt;
  // What is live moves on while the record grows old.
  const std::int64_t age = window_->isLive ? std::max<std::int64_t>(now() - window_->writtenAt, 0) : 0;
  return Window{window_->isLive != 0, window_->start + age, window_->start + age + window_->duration};
}

SegmentFacts SegmentReader::facts() const {
  std::lock_guard lock(mutex_);
  return facts_;
}

std::uint64_t SegmentReader::timeAhead() const {
  const auto bytes = static_cast<double>(bytes_->ahead(place_) + tracks_[0]->queuedBytes());
  return static_cast<std::uint64_t>(bytes * timePerByte_);
}
