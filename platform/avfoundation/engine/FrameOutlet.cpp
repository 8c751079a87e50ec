#include "platform/avfoundation/engine/FrameOutlet.h"

#include <string_view>

namespace {

// Pixels that stay readable as long as this lives.
struct MappedPicture {
  GstVideoFrame frame{};
  bool isMapped = false;

  MappedPicture(const GstVideoInfo& info, GstBuffer* buffer)
      : isMapped(gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) {}
  MappedPicture(const MappedPicture&) = delete;
  MappedPicture& operator=(const MappedPicture&) = delete;
  ~MappedPicture() {
    if (isMapped) gst_video_frame_unmap(&frame);
  }
};

// A picture later than this is dropped, and decoders are told to catch up.
constexpr gint64 maximumLateness = 40 * GST_MSECOND;

}  // namespace

GstElement* FrameOutlet::makeElement() {
  GstElement* converter = gst_element_factory_make("videoconvert", nullptr);
  GstElement* sink = gst_element_factory_make("appsink", nullptr);
  if (!converter || !sink) {
    if (converter) gst_object_unref(converter);
    if (sink) gst_object_unref(sink);
    return nullptr;
  }
  const GstCapsRef caps(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "BGRx", nullptr));
  g_object_set(sink, "caps", caps.get(), "max-buffers", 1u, "enable-last-sample", FALSE, "qos", TRUE, "max-lateness",
               maximumLateness, nullptr);
  GstAppSinkCallbacks callbacks{};
  callbacks.new_preroll = &FrameOutlet::newPreroll;
  callbacks.new_sample = &FrameOutlet::newSample;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);

  bin_ = shareObject(gst_bin_new("pictures"));
  gst_bin_add_many(GST_BIN(bin_.get()), converter, sink, nullptr);
  gst_element_link(converter, sink);
  const GstPadRef inner(gst_element_get_static_pad(converter, "sink"));
  gst_element_add_pad(bin_.get(), gst_ghost_pad_new("sink", inner.get()));
  pad_ = adoptObject(gst_element_get_static_pad(sink, "sink"));
  constexpr int events = GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH;
  gst_pad_add_probe(pad_.get(), static_cast<GstPadProbeType>(events), &FrameOutlet::probeEvent, this, nullptr);
  return bin_.get();
}

GstFlowReturn FrameOutlet::newPreroll(GstAppSink* sink, gpointer self) {
  return static_cast<FrameOutlet*>(self)->take(GstSampleRef(gst_app_sink_pull_preroll(sink)), true);
}

GstFlowReturn FrameOutlet::newSample(GstAppSink* sink, gpointer self) {
  return static_cast<FrameOutlet*>(self)->take(GstSampleRef(gst_app_sink_pull_sample(sink)), false);
}

GstFlowReturn FrameOutlet::take(GstSampleRef sample, bool isPreroll) {
  if (!sample) return GST_FLOW_OK;
  GstBuffer* buffer = gst_sample_get_buffer(sample.get());
  {
    std::lock_guard lock(mutex_);
    // Pausing prerolls the picture that comes next: it is shown when its time has come, not before.
    if (closed_ || (isPreroll && isFresh_) || buffer == currentBuffer_) return GST_FLOW_OK;
  }
  VideoFrame frame = frameFrom(sample.get());
  if (!frame.isValid()) return GST_FLOW_OK;
  const GstVideoInfo& info = static_cast<const MappedPicture*>(frame.owner.get())->frame.info;
  std::lock_guard lock(mutex_);
  if (closed_) return GST_FLOW_OK;
  frame.rotation = streamOrientation_.rotation;
  frame.mirrored = streamOrientation_.mirrored;
  frameRate_ = GST_VIDEO_INFO_FPS_D(&info) > 0 && GST_VIDEO_INFO_FPS_N(&info) > 0
                   ? static_cast<double>(GST_VIDEO_INFO_FPS_N(&info)) / GST_VIDEO_INFO_FPS_D(&info)
                   : 0;
  isFresh_ = true;
  currentBuffer_ = buffer;
  current_ = frame;
  if (sink_) sink_->present(std::move(frame));
  return GST_FLOW_OK;
}

VideoFrame FrameOutlet::frameFrom(GstSample* sample) const {
  VideoFrame frame;
  GstVideoInfo info;
  if (!gst_sample_get_caps(sample) || !gst_video_info_from_caps(&info, gst_sample_get_caps(sample))) return frame;
  GstBuffer* buffer = gst_sample_get_buffer(sample);
  const auto picture = std::make_shared<const MappedPicture>(info, buffer);
  if (!picture->isMapped) return frame;
  frame.bits = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&picture->frame, 0));
  frame.stride = GST_VIDEO_FRAME_PLANE_STRIDE(&picture->frame, 0);
  frame.width = GST_VIDEO_FRAME_WIDTH(&picture->frame);
  frame.height = GST_VIDEO_FRAME_HEIGHT(&picture->frame);
  frame.pixelAspectNumerator = GST_VIDEO_INFO_PAR_N(&info);
  frame.pixelAspectDenominator = GST_VIDEO_INFO_PAR_D(&info);
  const GstSegment* segment = gst_sample_get_segment(sample);
  if (segment && segment->format == GST_FORMAT_TIME && GST_BUFFER_PTS_IS_VALID(buffer)) {
    guint64 streamTime = 0;
    const int sign = gst_segment_to_stream_time_full(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer), &streamTime);
    if (sign) frame.time = CMTimeMake(sign * static_cast<std::int64_t>(streamTime), 1'000'000'000);
  }
  frame.owner = picture;
  return frame;
}

GstPadProbeReturn FrameOutlet::probeEvent(GstPad*, GstPadProbeInfo* info, gpointer self) {
  static_cast<FrameOutlet*>(self)->noteEvent(GST_PAD_PROBE_INFO_EVENT(info));
  return GST_PAD_PROBE_OK;
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
  currentBuffer_ = nullptr;
}

bool FrameOutlet::hasFreshPicture() const {
  std::lock_guard lock(mutex_);
  return isFresh_;
}

double FrameOutlet::frameRate() const {
  std::lock_guard lock(mutex_);
  return frameRate_;
}
