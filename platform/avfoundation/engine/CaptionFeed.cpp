#include "platform/avfoundation/engine/CaptionFeed.h"

#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/CaptionText.h"
#include "platform/avfoundation/engine/GstHandles.h"

namespace {

// The text of a buffer of such a stream; nothing when the stream is of a kind without text.
std::optional<MediaCaption> captionOf(std::string_view bytes, const GstCaps* caps) {
  if (!caps || gst_caps_is_empty(caps)) return std::nullopt;
  const GstStructure* structure = gst_caps_get_structure(caps, 0);
  const std::string_view name = gst_structure_get_name(structure);
  if (name == "application/x-ssa" || name == "application/x-ass") return MediaCaption{captionFromScript(bytes)};
  if (name != "text/x-raw") return std::nullopt;
  const char* format = gst_structure_get_string(structure, "format");
  if (format && std::string_view(format) == "utf8") return MediaCaption{tidyCaption(bytes)};
  return MediaCaption{captionFromMarkup(bytes), true};
}

// A cue is seconds of text. What is longer is not read.
constexpr gsize cueBytesLimit = 64 * 1024;

}  // namespace

void CaptionFeed::admit(GstElement* demuxer) {
  g_signal_connect(demuxer, "pad-added", G_CALLBACK(padAdded), this);
}

void CaptionFeed::padAdded(GstElement*, GstPad* pad, gpointer self) {
  if (GST_PAD_IS_SRC(pad)) gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, &CaptionFeed::probe, self, nullptr);
}

GstPadProbeReturn CaptionFeed::probe(GstPad* pad, GstPadProbeInfo* info, gpointer self) {
  const GstObjectRef<GstStream> stream(gst_pad_get_stream(pad));
  if (stream && gst_stream_get_stream_type(stream.get()) & (GST_STREAM_TYPE_VIDEO | GST_STREAM_TYPE_AUDIO)) {
    return GST_PAD_PROBE_REMOVE;
  }
  static_cast<const CaptionFeed*>(self)->take(pad, GST_PAD_PROBE_INFO_BUFFER(info));
  return GST_PAD_PROBE_OK;
}

void CaptionFeed::take(GstPad* pad, GstBuffer* buffer) const {
  const GTextRef track(gst_pad_get_stream_id(pad));
  const GstCapsRef caps(gst_pad_get_current_caps(pad));
  const GstEventRef segmentEvent(gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0));
  if (!track || !segmentEvent || !GST_BUFFER_PTS_IS_VALID(buffer)) return;
  GstMapInfo bytes;
  if (gst_buffer_get_size(buffer) > cueBytesLimit || !gst_buffer_map(buffer, &bytes, GST_MAP_READ)) return;
  auto caption = captionOf({reinterpret_cast<const char*>(bytes.data), bytes.size}, caps.get());
  gst_buffer_unmap(buffer, &bytes);
  if (!caption) return;

  const GstSegment* segment = nullptr;
  gst_event_parse_segment(segmentEvent.get(), &segment);
  if (segment->format != GST_FORMAT_TIME) return;
  guint64 start = 0;
  const int sign = gst_segment_to_stream_time_full(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer), &start);
  if (sign == 0) return;
  CaptionCue cue;
  cue.start = sign * static_cast<std::int64_t>(start);
  if (GST_BUFFER_DURATION_IS_VALID(buffer))
    cue.end = cue.start + static_cast<std::int64_t>(GST_BUFFER_DURATION(buffer));
  cue.caption = std::move(*caption);
  found_(track.get(), std::move(cue));
}
