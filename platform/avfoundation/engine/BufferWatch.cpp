#include "platform/avfoundation/engine/BufferWatch.h"

#include <algorithm>

namespace {

GstClockTime levelOf(GstElement* demuxer) {
  guint64 pictures = 0, sound = 0;
  g_object_get(demuxer, "current-level-time-video", &pictures, "current-level-time-audio", &sound, nullptr);
  if (pictures == 0 || sound == 0) return std::max(pictures, sound);
  return std::min(pictures, sound);
}

}  // namespace

void BufferWatch::admit(GstElement* demuxer, bool isAdaptive) {
  if (isAdaptive) {
    std::lock_guard lock(mutex_);
    adaptiveDemuxer_ = shareObject(demuxer);
  }
  g_signal_connect(demuxer, "pad-added", G_CALLBACK(padAdded), this);
  g_signal_connect(demuxer, "pad-removed", G_CALLBACK(padRemoved), this);
}

void BufferWatch::padAdded(GstElement*, GstPad* pad, gpointer self) {
  if (GST_PAD_IS_SRC(pad)) static_cast<BufferWatch*>(self)->watch(pad);
}

void BufferWatch::padRemoved(GstElement*, GstPad* pad, gpointer data) {
  auto* self = static_cast<BufferWatch*>(data);
  std::lock_guard lock(self->mutex_);
  self->streams_.erase(pad);
}

void BufferWatch::watch(GstPad* pad) {
  {
    std::lock_guard lock(mutex_);
    gst_segment_init(&streams_[pad].segment, GST_FORMAT_TIME);
  }
  gst_pad_add_probe(pad,
                    static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM |
                                                 GST_PAD_PROBE_TYPE_EVENT_FLUSH),
                    &BufferWatch::probe, this, nullptr);
}

GstPadProbeReturn BufferWatch::probe(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  auto* self = static_cast<BufferWatch*>(data);
  if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) {
    self->noteBuffer(pad, GST_PAD_PROBE_INFO_BUFFER(info));
  } else {
    self->noteEvent(pad, GST_PAD_PROBE_INFO_EVENT(info));
  }
  return GST_PAD_PROBE_OK;
}

void BufferWatch::noteBuffer(GstPad* pad, GstBuffer* buffer) {
  std::lock_guard lock(mutex_);
  const auto found = streams_.find(pad);
  const GstClockTime time = GST_BUFFER_DTS_OR_PTS(buffer);
  if (found == streams_.end() || !GST_CLOCK_TIME_IS_VALID(time)) return;
  Stream& stream = found->second;
  if (stream.segment.format != GST_FORMAT_TIME) return;
  const GstClockTime length = GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer) : 0;
  guint64 streamTime = 0;
  if (gst_segment_to_stream_time_full(&stream.segment, GST_FORMAT_TIME, time + length, &streamTime) != 1) return;
  stream.end = std::max(stream.end.value_or(0), streamTime);
  const GstClockTime start = GST_BUFFER_PTS(buffer);
  if (!GST_CLOCK_TIME_IS_VALID(start) ||
      gst_segment_to_stream_time_full(&stream.segment, GST_FORMAT_TIME, start, &streamTime) != 1) {
    return;
  }
  const GstClockTime before = stream.lastStart.value_or(streamTime);
  const GstClockTime lasts = length > 0 ? length : streamTime - std::min(before, streamTime);
  stream.lastStart = std::max(before, streamTime);
  stream.lastEnd = std::max(stream.lastEnd.value_or(0), streamTime + lasts);
}

void BufferWatch::noteEvent(GstPad* pad, GstEvent* event) {
  std::lock_guard lock(mutex_);
  const auto found = streams_.find(pad);
  if (found == streams_.end()) return;
  Stream& stream = found->second;
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START: {
      GstStream* described = nullptr;
      gst_event_parse_stream(event, &described);
      const GstObjectRef<GstStream> owned(described);
      constexpr int counted = GST_STREAM_TYPE_VIDEO | GST_STREAM_TYPE_AUDIO;
      if (described) stream.counts = gst_stream_get_stream_type(described) & counted;
      if (described) stream.isVideo = gst_stream_get_stream_type(described) & GST_STREAM_TYPE_VIDEO;
      stream.isComplete = false;
      break;
    }
    case GST_EVENT_SEGMENT:
      gst_event_copy_segment(event, &stream.segment);
      break;
    case GST_EVENT_EOS:
      stream.isComplete = true;
      // After a seek beyond the last picture qtdemux gives pictures later times than they have.
      if (stream.isVideo && stream.lastStart) {
        lastPicture_ = std::min(lastPicture_.value_or(*stream.lastStart), *stream.lastStart);
      }
      break;
    case GST_EVENT_FLUSH_STOP:
      stream.end.reset();
      stream.lastStart.reset();
      stream.lastEnd.reset();
      stream.isComplete = false;
      break;
    default:
      break;
  }
}

std::optional<GstClockTime> BufferWatch::bufferedEnd() const {
  std::optional<GstClockTime> end;
  GstElementRef demuxer;
  {
    std::lock_guard lock(mutex_);
    bool any = false;
    for (const auto& [pad, stream] : streams_) {
      if (!stream.counts) continue;
      any = true;
      if (stream.isComplete) continue;
      if (!stream.end) return std::nullopt;
      end = end ? std::min(*end, *stream.end) : *stream.end;
    }
    if (!any) return std::nullopt;
    if (!end) return GST_CLOCK_TIME_NONE;
    demuxer = shareObject(adaptiveDemuxer_.get());
  }
  return demuxer ? *end + levelOf(demuxer.get()) : *end;
}

std::optional<GstClockTime> BufferWatch::reachedEnd() const {
  std::lock_guard lock(mutex_);
  std::optional<GstClockTime> end;
  for (const auto& [pad, stream] : streams_) end = std::max(end, stream.lastEnd);
  return end;
}

std::optional<GstClockTime> BufferWatch::lastPicture() const {
  std::lock_guard lock(mutex_);
  return adaptiveDemuxer_ ? std::nullopt : lastPicture_;
}

bool BufferWatch::isAdaptive() const {
  std::lock_guard lock(mutex_);
  return adaptiveDemuxer_ != nullptr;
}
