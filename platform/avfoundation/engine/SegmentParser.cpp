#include "platform/avfoundation/engine/SegmentParser.h"

#include <utility>

namespace {

constexpr int wanted = GST_STREAM_TYPE_VIDEO | GST_STREAM_TYPE_AUDIO;

GstClockTime streamTime(const GstSegment& segment, GstClockTime time) {
  if (!GST_CLOCK_TIME_IS_VALID(time) || segment.format != GST_FORMAT_TIME) return GST_CLOCK_TIME_NONE;
  guint64 result = 0;
  return gst_segment_to_stream_time_full(&segment, GST_FORMAT_TIME, time, &result) == 1 ? result : GST_CLOCK_TIME_NONE;
}

int typesOf(GstPad* pad) {
  const GstEventRef event(gst_pad_get_sticky_event(pad, GST_EVENT_STREAM_COLLECTION, 0));
  if (!event) return 0;
  GstStreamCollection* collection = nullptr;
  gst_event_parse_stream_collection(event.get(), &collection);
  const GstObjectRef<GstStreamCollection> owned(collection);
  int types = 0;
  for (guint i = 0; collection && i < gst_stream_collection_get_size(collection); ++i) {
    types |= gst_stream_get_stream_type(gst_stream_collection_get_stream(collection, i));
  }
  return types & wanted;
}

}  // namespace

SegmentParser::SegmentParser(Take take)
    : take_(std::move(take)),
      parser_(shareObject(gst_element_factory_make("parsebin", nullptr))),
      bus_(gst_bus_new()),
      out_(shareObject(gst_pad_new("src", GST_PAD_SRC))) {
  gst_element_set_bus(parser_.get(), bus_.get());
  g_signal_connect(parser_.get(), "pad-added", G_CALLBACK(padAdded), this);
  const GstPadRef in(gst_element_get_static_pad(parser_.get(), "sink"));
  gst_pad_link_full(out_.get(), in.get(), GST_PAD_LINK_CHECK_NOTHING);
  gst_pad_set_active(out_.get(), TRUE);
  gst_element_set_state(parser_.get(), GST_STATE_PAUSED);
  gst_pad_push_event(out_.get(), gst_event_new_stream_start("segment"));
  GstSegment bytes;
  gst_segment_init(&bytes, GST_FORMAT_BYTES);
  gst_pad_push_event(out_.get(), gst_event_new_segment(&bytes));
}

SegmentParser::~SegmentParser() {
  gst_pad_set_active(out_.get(), FALSE);
  gst_element_set_state(parser_.get(), GST_STATE_NULL);
  gst_bus_set_flushing(bus_.get(), TRUE);
}

GstFlowReturn SegmentParser::push(GstMiniObjectRef<GstBuffer> bytes) {
  if (result_ == GST_FLOW_OK) gst_pad_push(out_.get(), bytes.release());
  return result_;
}

GstFlowReturn SegmentParser::end() {
  if (result_ == GST_FLOW_OK) gst_pad_push_event(out_.get(), gst_event_new_eos());
  return result_;
}

std::vector<GstMiniObjectRef<GstMessage>> SegmentParser::messages() {
  std::vector<GstMiniObjectRef<GstMessage>> all;
  while (GstMessage* message = gst_bus_pop_filtered(bus_.get(), GST_MESSAGE_ELEMENT)) all.emplace_back(message);
  return all;
}

void SegmentParser::padAdded(GstElement*, GstPad* pad, gpointer self) {
  if (!GST_PAD_IS_SRC(pad)) return;
  constexpr int passing = GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST;
  gst_pad_add_probe(pad, static_cast<GstPadProbeType>(passing), passes, self, nullptr);
}

GstPadProbeReturn SegmentParser::passes(GstPad* pad, GstPadProbeInfo* info, gpointer self) {
  return static_cast<SegmentParser*>(self)->take(pad, info);
}

GstPadProbeReturn SegmentParser::take(GstPad* pad, GstPadProbeInfo* info) {
  auto found = pads_.find(pad);
  if (found == pads_.end()) {
    const GstObjectRef<GstStream> stream(gst_pad_get_stream(pad));
    int type = stream ? gst_stream_get_stream_type(stream.get()) & wanted : 0;
    types_ |= type | typesOf(pad);
    for (const auto& [other, has] : pads_) type &= ~has;
    found = pads_.emplace(pad, static_cast<GstStreamType>(type)).first;
  }
  if (found->second != 0) {
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) {
      give(pad, found->second, GST_PAD_PROBE_INFO_BUFFER(info));
    } else {
      GstBufferList* list = GST_PAD_PROBE_INFO_BUFFER_LIST(info);
      for (guint i = 0; i < gst_buffer_list_length(list); ++i) give(pad, found->second, gst_buffer_list_get(list, i));
    }
  }
  if (result_ == GST_FLOW_OK) return GST_PAD_PROBE_DROP;
  gst_mini_object_unref(GST_MINI_OBJECT_CAST(info->data));
  info->data = nullptr;
  info->ABI.abi.flow_ret = result_;
  return GST_PAD_PROBE_HANDLED;
}

GstFlowReturn SegmentParser::give(GstPad* pad, GstStreamType type, GstBuffer* buffer) {
  const GstCapsRef caps(gst_pad_get_current_caps(pad));
  const GstEventRef event(gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0));
  if (result_ != GST_FLOW_OK || !caps || !event) return result_;
  const GstSegment* segment = nullptr;
  gst_event_parse_segment(event.get(), &segment);
  GstMiniObjectRef<GstBuffer> copy(gst_buffer_copy(buffer));
  GST_BUFFER_PTS(copy.get()) = streamTime(*segment, GST_BUFFER_PTS(buffer));
  GST_BUFFER_DTS(copy.get()) = streamTime(*segment, GST_BUFFER_DTS(buffer));
  return result_ = take_({type, caps.get(), std::move(copy)});
}
