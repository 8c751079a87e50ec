#include "platform/avfoundation/engine/FrameOutlet.h"

#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/PictureMemory.h"

namespace {

// A picture later than this is dropped, and decoders are told to catch up.
constexpr gint64 latenessLimit = 40 * GST_MSECOND;

// Media time; invalid when there is none.
CMTime timeOf(GstSample* sample) {
  const GstSegment* segment = gst_sample_get_segment(sample);
  const GstClockTime time = GST_BUFFER_PTS(gst_sample_get_buffer(sample));
  if (!segment || segment->format != GST_FORMAT_TIME || !GST_CLOCK_TIME_IS_VALID(time)) return kCMTimeInvalid;
  guint64 streamTime = 0;
  const int sign = gst_segment_to_stream_time_full(segment, GST_FORMAT_TIME, time, &streamTime);
  return sign ? CMTimeMake(sign * static_cast<std::int64_t>(streamTime), 1'000'000'000) : kCMTimeInvalid;
}

}  // namespace

GstElement* FrameOutlet::makeElement() {
  GstElement* sink = gst_element_factory_make("appsink", nullptr);
  if (!sink) return nullptr;
  element_ = shareObject(sink);
  const GstCapsRef caps(gst_caps_from_string(GST_VIDEO_CAPS_MAKE(GST_VIDEO_FORMATS_ALL)));
  g_object_set(sink, "caps", caps.get(), "max-buffers", 1u, "enable-last-sample", FALSE, "qos", TRUE, "max-lateness",
               latenessLimit, nullptr);
  GstAppSinkCallbacks callbacks{};
  callbacks.new_preroll = &FrameOutlet::newPreroll;
  callbacks.new_sample = &FrameOutlet::newSample;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
  pad_ = adoptObject(gst_element_get_static_pad(sink, "sink"));
  constexpr int events = GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH;
  gst_pad_add_probe(pad_.get(), static_cast<GstPadProbeType>(events), &FrameOutlet::probeEvent, this, nullptr);
  gst_pad_add_probe(pad_.get(), GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, &FrameOutlet::probeQuery, nullptr, nullptr);
  return sink;
}

// So that decoders need not copy what they have decoded.
GstPadProbeReturn FrameOutlet::probeQuery(GstPad*, GstPadProbeInfo* info, gpointer) {
  GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
  if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION) return GST_PAD_PROBE_OK;
  offerPictureMemory(query);
  return GST_PAD_PROBE_HANDLED;
}

GstFlowReturn FrameOutlet::newPreroll(GstAppSink* sink, gpointer self) {
  return static_cast<FrameOutlet*>(self)->take(GstSampleRef(gst_app_sink_pull_preroll(sink)), true);
}

GstFlowReturn FrameOutlet::newSample(GstAppSink* sink, gpointer self) {
  return static_cast<FrameOutlet*>(self)->take(GstSampleRef(gst_app_sink_pull_sample(sink)), false);
}

GstFlowReturn FrameOutlet::take(GstSampleRef sample, bool isPreroll) {
  GstVideoInfo info;
  GstCaps* caps = sample ? gst_sample_get_caps(sample.get()) : nullptr;
  if (!caps || !gst_video_info_from_caps(&info, caps)) return GST_FLOW_OK;
  const CMTime time = timeOf(sample.get());
  {
    std::lock_guard lock(mutex_);
    noteTimes(gst_sample_get_buffer(sample.get()));
    // Pausing prerolls the picture that comes next: it is shown when its time has come, not before. Playing on hands
    // the picture over again that has been prerolled.
    const bool isShown = isFresh_ && (isPreroll || (CMTIME_IS_VALID(time) && time == current_.time));
    if (closed_ || isShown) return GST_FLOW_OK;
  }
  VideoFrame frame = converter_.convert(info, gst_sample_get_buffer(sample.get()));
  if (!frame.isValid()) return GST_FLOW_OK;
  frame.time = time;
  std::lock_guard lock(mutex_);
  if (closed_) return GST_FLOW_OK;
  frame.rotation = streamOrientation_.rotation;
  frame.mirrored = streamOrientation_.mirrored;
  frameRate_ = GST_VIDEO_INFO_FPS_D(&info) > 0 && GST_VIDEO_INFO_FPS_N(&info) > 0
                   ? static_cast<double>(GST_VIDEO_INFO_FPS_N(&info)) / GST_VIDEO_INFO_FPS_D(&info)
                   : 0;
  isFresh_ = true;
  current_ = frame;
  if (sink_) sink_->present(std::move(frame));
  return GST_FLOW_OK;
}

// One that does not say how long it lasts does so as long as the one before it.
void FrameOutlet::noteTimes(GstBuffer* picture) {
  const GstClockTime start = GST_BUFFER_PTS(picture);
  if (start == newest_) return;  // once more
  const bool follows = isFresh_ && GST_CLOCK_TIME_IS_VALID(newest_) && start > newest_;
  newestLasts_ = GST_BUFFER_DURATION_IS_VALID(picture) ? GST_BUFFER_DURATION(picture) : follows ? start - newest_ : 0;
  newest_ = start;
}

GstPadProbeReturn FrameOutlet::probeEvent(GstPad*, GstPadProbeInfo* info, gpointer data) {
  auto* self = static_cast<FrameOutlet*>(data);
  GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
  if (GST_EVENT_TYPE(event) == GST_EVENT_GAP) GST_PAD_PROBE_INFO_DATA(info) = self->afterLastPicture(event);
  self->noteEvent(event);
  return GST_PAD_PROBE_OK;
}

// The gap that makes decoders drain begins where the pictures began: the sink would take that for the last thing to be
// shown, and end there.
GstEvent* FrameOutlet::afterLastPicture(GstEvent* gap) const {
  GstClockTime start = GST_CLOCK_TIME_NONE;
  gst_event_parse_gap(gap, &start, nullptr);
  std::lock_guard lock(mutex_);
  if (!isFresh_ || !GST_CLOCK_TIME_IS_VALID(newest_) || start > newest_) return gap;
  gst_event_unref(gap);
  return gst_event_new_gap(newest_, newestLasts_);
}

void FrameOutlet::noteEvent(GstEvent* event) {
  if (GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP) {
    std::lock_guard lock(mutex_);
    isFresh_ = false;
    return;
  }
  if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START) {
    const gchar* stream = nullptr;
    gst_event_parse_stream_start(event, &stream);
    std::lock_guard lock(mutex_);
    if (stream_ != stream) streamOrientation_ = {};
    stream_ = stream;
    return;
  }
  if (GST_EVENT_TYPE(event) != GST_EVENT_TAG) return;
  GstTagList* tags = nullptr;
  gst_event_parse_tag(event, &tags);
  gchar* text = nullptr;
  if (!gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &text)) return;
  const GTextRef owned(text);
  std::string_view name = text;
  Orientation orientation;
  constexpr std::string_view flip = "flip-", rotate = "rotate-";
  orientation.mirrored = name.starts_with(flip);
  if (orientation.mirrored) name.remove_prefix(flip.size());
  if (!name.starts_with(rotate)) return;
  name.remove_prefix(rotate.size());
  orientation.rotation = name == "90" ? 90 : name == "180" ? 180 : name == "270" ? 270 : 0;
  std::lock_guard lock(mutex_);
  streamOrientation_ = orientation;
}

void FrameOutlet::setSink(std::shared_ptr<VideoFrameSink> sink) {
  std::lock_guard lock(mutex_);
  if (closed_) return;
  sink_ = std::move(sink);
  if (sink_ && current_.isValid()) sink_->present(current_);
}

void FrameOutlet::close() {
  std::shared_ptr<VideoFrameSink> sink;
  VideoFrame frame;
  std::lock_guard lock(mutex_);
  closed_ = true;
  sink.swap(sink_);
  std::swap(frame, current_);
}

bool FrameOutlet::hasFreshPicture() const {
  std::lock_guard lock(mutex_);
  return isFresh_;
}

double FrameOutlet::frameRate() const {
  std::lock_guard lock(mutex_);
  return frameRate_;
}
