#include "platform/avfoundation/engine/SegmentTrack.h"

#include <algorithm>
#include <utility>

#include "platform/avfoundation/segments/SegmentBegin.h"
#include "platform/dispatch/BlockedSignals.h"

namespace {

using Kind = SegmentRecord::Kind;

constexpr std::size_t heldLimit = 1000;
constexpr int emptyLimit = 3;
// A segment of which so much says nothing is not read further.
constexpr std::size_t silentBytesLimit = 64 * 1024 * 1024;

}  // namespace

SegmentTrack::SegmentTrack(SegmentClock& clock, std::size_t bytesLimit, Hooks hooks)
    : clock_(clock), bytesLimit_(bytesLimit), hooks_(std::move(hooks)) {}

SegmentTrack::~SegmentTrack() {
  stop();
}

void SegmentTrack::start() {
  discontinuity_.reset();
  skipped_ = 0;
  empty_ = 0;
  reached_ = 0;
  isStopping_ = false;
  const BlockedSignals blocked;
  thread_ = std::thread([this] { run(); });
}

void SegmentTrack::stop() {
  if (!thread_.joinable()) return;
  {
    std::lock_guard lock(mutex_);
    isStopping_ = true;
    changed_.notify_all();
  }
  thread_.join();
  parser_.reset();
  held_.clear();
  items_.clear();
  bytes_ = 0;
}

bool SegmentTrack::put(Item& item) {
  const std::size_t size = item.content ? gst_buffer_get_size(item.content.get()) : 0;
  std::lock_guard lock(mutex_);
  if (bytes_ > 0 && bytes_ + size > bytesLimit_) return false;
  bytes_ += size;
  items_.push_back(std::move(item));
  changed_.notify_all();
  return true;
}

std::size_t SegmentTrack::queuedBytes() const {
  std::lock_guard lock(mutex_);
  return bytes_;
}

std::optional<SegmentTrack::Item> SegmentTrack::take() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return isStopping_ || !items_.empty(); });
  if (isStopping_) return std::nullopt;
  Item item = std::move(items_.front());
  items_.pop_front();
  if (item.content) bytes_ -= gst_buffer_get_size(item.content.get());
  return item;
}

void SegmentTrack::run() {
  while (auto item = take()) {
    if (handle(std::move(*item)) != GST_FLOW_OK) return;
  }
}

GstFlowReturn SegmentTrack::handle(Item item) {
  switch (item.record.kind) {
    case Kind::segment:
      begin(item.record);
      break;
    case Kind::data:
      return feed(std::move(item.content));
    case Kind::end:
      return finish(item.record.isCut);
    case Kind::hole:
      skip(item.record.start, item.record.duration);
      break;
    case Kind::trackEnd:
    case Kind::over:
      end();
      break;
    case Kind::facts:
      break;
  }
  return GST_FLOW_OK;
}

void SegmentTrack::begin(const SegmentRecord& record) {
  parser_ = std::make_unique<SegmentParser>([this](SegmentParser::Piece piece) { return takePiece(std::move(piece)); });
  record_ = record;
  begin_.clear();
  held_.clear();
  isClocked_ = false;
  toRaw_ = 0;
  given_ = 0;
  fed_ = 0;
}

GstFlowReturn SegmentTrack::feed(GstMiniObjectRef<GstBuffer> bytes) {
  if (!parser_ || !bytes) return GST_FLOW_OK;
  fed_ += gst_buffer_get_size(bytes.get());
  if (given_ == 0 && fed_ > silentBytesLimit) {
    parser_.reset();
    return GST_FLOW_OK;
  }
  GstMapInfo map;
  if (begin_.size() < SegmentBegin::bytesLimit && gst_buffer_map(bytes.get(), &map, GST_MAP_READ)) {
    const auto all = std::as_bytes(std::span(map.data, map.size));
    const auto part = all.first(std::min(all.size(), SegmentBegin::bytesLimit - begin_.size()));
    begin_.insert(begin_.end(), part.begin(), part.end());
    gst_buffer_unmap(bytes.get(), &map);
  }
  return parser_->push(std::move(bytes));
}

GstFlowReturn SegmentTrack::finish(bool isCut) {
  if (!parser_) return GST_FLOW_OK;
  GstFlowReturn result = parser_->end();
  if (result == GST_FLOW_OK) result = giveHeld();
  for (const auto& message : parser_->messages()) hooks_.message(message.get());
  parser_.reset();
  discontinuity_ = record_.discontinuity;
  if (result != GST_FLOW_OK || isCut) return result;
  empty_ = given_ > 0 ? 0 : empty_ + 1;
  if (empty_ == 0) return result;
  if (!hasGiven_ && empty_ >= emptyLimit) hooks_.undecodable();
  skip(record_.start, record_.duration);
  return result;
}

void SegmentTrack::skip(std::int64_t start, std::int64_t duration) {
  skipped_ += duration;
  for (SegmentOutlet* outlet : hooks_.outlets()) outlet->skipTo(start + duration, skipped_);
}

void SegmentTrack::end() {
  const auto outlets = hooks_.outlets();
  if (empty_ > 0 || outlets.empty()) hooks_.undecodable();
  for (SegmentOutlet* outlet : outlets) outlet->end();
}

// The first picture, or without any the first sound, tells what the segment's times mean; until then all is held.
GstFlowReturn SegmentTrack::takePiece(SegmentParser::Piece piece) {
  if (!isClocked_) {
    const bool leads = piece.type == GST_STREAM_TYPE_VIDEO || !(parser_->types() & GST_STREAM_TYPE_VIDEO);
    const GstClockTime time = GST_BUFFER_PTS(piece.buffer.get());
    if (!leads || !GST_CLOCK_TIME_IS_VALID(time)) {
      held_.push_back({piece.type, GstCapsRef(gst_caps_ref(piece.caps)), std::move(piece.buffer)});
      return held_.size() < heldLimit ? GST_FLOW_OK : giveHeld();
    }
    setClock(piece.type, time);
    if (const auto result = giveHeld(); result != GST_FLOW_OK) return result;
  }
  return givePiece(piece.type, piece.caps, std::move(piece.buffer));
}

void SegmentTrack::setClock(GstStreamType type, GstClockTime time) {
  isClocked_ = true;
  const auto first = SegmentBegin::firstTimes(begin_);
  const auto& ticks = type == GST_STREAM_TYPE_VIDEO ? first.picture : first.sound;
  if (ticks) toRaw_ = SegmentClock::ofTicks(*ticks) - static_cast<std::int64_t>(time);
  const bool isFirst = discontinuity_ != record_.discontinuity;
  clock_.note(record_, static_cast<std::int64_t>(time) + toRaw_, isFirst);
  const auto begins = clock_.time(record_.discontinuity, static_cast<std::int64_t>(time) + toRaw_, record_.start);
  for (SegmentOutlet* outlet : hooks_.outlets()) {
    outlet->setOverlapping(discontinuity_ && outlet->overlaps(begins.value_or(record_.start)));
    if (isFirst) outlet->setBroken();
  }
}

GstFlowReturn SegmentTrack::giveHeld() {
  GstFlowReturn result = GST_FLOW_OK;
  for (Held& held : std::exchange(held_, {})) {
    const GstClockTime time = GST_BUFFER_PTS(held.buffer.get());
    if (!isClocked_ && GST_CLOCK_TIME_IS_VALID(time)) setClock(held.type, time);
    if (result == GST_FLOW_OK) result = givePiece(held.type, held.caps.get(), std::move(held.buffer));
  }
  return result;
}

GstFlowReturn SegmentTrack::givePiece(GstStreamType type, GstCaps* caps, GstMiniObjectRef<GstBuffer> buffer) {
  const auto found = hooks_.outlet(type, parser_ ? parser_->types() : type);
  if (!found) return GST_FLOW_FLUSHING;
  SegmentOutlet* outlet = *found;
  if (!outlet) return GST_FLOW_OK;
  const GstClockTime shown = GST_BUFFER_PTS(buffer.get()), decoded = GST_BUFFER_DTS(buffer.get());
  const auto place = [this](GstClockTime time) {
    const auto raw = static_cast<std::int64_t>(time) + toRaw_;
    const auto placed = clock_.time(record_.discontinuity, raw, record_.start).value_or(record_.start);
    return static_cast<GstClockTime>(std::max<std::int64_t>(placed, 0));
  };
  if (GST_CLOCK_TIME_IS_VALID(shown)) GST_BUFFER_PTS(buffer.get()) = place(shown);
  if (GST_CLOCK_TIME_IS_VALID(decoded)) GST_BUFFER_DTS(buffer.get()) = place(decoded);
  ++given_;
  hasGiven_ = true;
  if (GST_BUFFER_PTS_IS_VALID(buffer.get())) reached_ = static_cast<std::int64_t>(GST_BUFFER_PTS(buffer.get()));
  return outlet->push(caps, std::move(buffer));
}
