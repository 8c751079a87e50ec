#include "platform/avfoundation/engine/SegmentOutlet.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::int64_t overlapTolerance = 100'000'000;

}  // namespace

SegmentOutlet::SegmentOutlet(GstElement* element, GstStream* stream, GstPad* pad)
    : stream_(shareObject(stream)), pad_(shareObject(pad)) {
  gst_segment_init(&segment_, GST_FORMAT_TIME);
  gst_pad_use_fixed_caps(pad);
  gst_pad_set_active(pad, TRUE);
  start();
  gst_element_add_pad(element, pad);
}

void SegmentOutlet::start() {
  GstEvent* event = gst_event_new_stream_start(gst_stream_get_stream_id(stream_.get()));
  gst_event_set_stream(event, stream_.get());
  gst_event_set_group_id(event, 1);
  gst_pad_push_event(pad_.get(), event);
}

void SegmentOutlet::restart(std::int64_t time) {
  origin_ = time;
  gst_segment_init(&segment_, GST_FORMAT_TIME);
  segment_.start = segment_.time = segment_.position = static_cast<guint64>(time);
  isSegmentDue_ = isBroken_ = true;
  isOverlapping_ = hasEnded_ = false;
  reached_.reset();
}

void SegmentOutlet::skipTo(std::int64_t time, std::int64_t skipped) {
  segment_.start = segment_.time = segment_.position = static_cast<guint64>(std::max<std::int64_t>(time, 0));
  segment_.base = static_cast<guint64>(std::max<std::int64_t>(time - origin_ - skipped, 0));
  isSegmentDue_ = isBroken_ = true;
  isOverlapping_ = false;
  reached_.reset();
}

bool SegmentOutlet::overlaps(std::int64_t time) const {
  return reached_ && time + overlapTolerance < static_cast<std::int64_t>(*reached_);
}

GstFlowReturn SegmentOutlet::push(GstCaps* caps, GstMiniObjectRef<GstBuffer> buffer) {
  if (!caps_ || !gst_caps_is_equal(caps_.get(), caps)) {
    caps_.reset(gst_caps_ref(caps));
    gst_stream_set_caps(stream_.get(), caps);
    gst_pad_push_event(pad_.get(), gst_event_new_caps(caps));
  }
  if (std::exchange(isSegmentDue_, false)) gst_pad_push_event(pad_.get(), gst_event_new_segment(&segment_));
  const GstClockTime time = GST_BUFFER_PTS(buffer.get());
  const GstClockTime length = GST_BUFFER_DURATION_IS_VALID(buffer.get()) ? GST_BUFFER_DURATION(buffer.get()) : 0;
  if (isOverlapping_ && GST_CLOCK_TIME_IS_VALID(time) && reached_ && time < *reached_) {
    // Seen or heard already: pictures are what others are decoded from.
    if (gst_stream_get_stream_type(stream_.get()) & GST_STREAM_TYPE_AUDIO) return GST_FLOW_OK;
    GST_BUFFER_FLAG_SET(buffer.get(), GST_BUFFER_FLAG_DECODE_ONLY);
  }
  GST_BUFFER_FLAG_UNSET(buffer.get(), GST_BUFFER_FLAG_DISCONT);
  if (std::exchange(isBroken_, false)) GST_BUFFER_FLAG_SET(buffer.get(), GST_BUFFER_FLAG_DISCONT);
  if (GST_CLOCK_TIME_IS_VALID(time)) reached_ = std::max(reached_.value_or(0), time + length);
  const GstFlowReturn result = gst_pad_push(pad_.get(), buffer.release());
  // Others may still be wanted where this one is not.
  return result == GST_FLOW_FLUSHING ? result : GST_FLOW_OK;
}

void SegmentOutlet::end() {
  if (std::exchange(hasEnded_, true)) return;
  if (std::exchange(isSegmentDue_, false)) gst_pad_push_event(pad_.get(), gst_event_new_segment(&segment_));
  gst_pad_push_event(pad_.get(), gst_event_new_eos());
}
