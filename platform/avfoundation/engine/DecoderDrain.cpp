#include "platform/avfoundation/engine/DecoderDrain.h"

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

GstPadProbeReturn drainAtEnd(GstPad* pad, GstPadProbeInfo* info, gpointer) {
  if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_EOS) return GST_PAD_PROBE_OK;
  GstEventRef announcement(gst_pad_get_sticky_event(pad, GST_EVENT_STREAM_START, 0));
  const GstEventRef place(gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0));
  const GstPadRef decoder(gst_pad_get_peer(pad));
  GstStream* described = nullptr;
  if (announcement) gst_event_parse_stream(announcement.get(), &described);
  const GstObjectRef<GstStream> stream(described);
  const bool isVideo = stream && gst_stream_get_stream_type(stream.get()) & GST_STREAM_TYPE_VIDEO;
  if (!decoder || !place || !isVideo) return GST_PAD_PROBE_OK;
  gst_pad_send_event(decoder.get(), announcement.release());
  const GstSegment* segment = nullptr;
  gst_event_parse_segment(place.get(), &segment);
  if (segment->format == GST_FORMAT_TIME) {
    gst_pad_send_event(decoder.get(), gst_event_new_gap(segment->start, GST_CLOCK_TIME_NONE));
  }
  return GST_PAD_PROBE_OK;
}

void padAdded(GstElement*, GstPad* pad, gpointer) {
  if (!GST_PAD_IS_SRC(pad)) return;
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, drainAtEnd, nullptr, nullptr);
}

void watchQueue(const GValue* queue, gpointer) {
  g_signal_connect(g_value_get_object(queue), "pad-added", G_CALLBACK(padAdded), nullptr);
}

}  // namespace

void drainDecodersEarly(GstElement* playbin) {
  // The queue in front of the decoders is there from the start.
  GstIterator* queues = gst_bin_iterate_all_by_element_factory_name(GST_BIN(playbin), "multiqueue");
  gst_iterator_foreach(queues, watchQueue, nullptr);
  gst_iterator_free(queues);
}
