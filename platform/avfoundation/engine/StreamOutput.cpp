#include "platform/avfoundation/engine/StreamOutput.h"

#include <string_view>
#include <utility>

void dropAll(GstPad* pad) {
  const auto drop = [](GstPad*, GstPadProbeInfo*, gpointer) { return GST_PAD_PROBE_DROP; };
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_DATA_DOWNSTREAM, drop, nullptr, nullptr);
}

StreamOutput::StreamOutput(GraphDoor& door, GstElement* pipeline, GstStreamType type, GstElement* sink,
                           std::vector<const char*> between, Hooks hooks)
    : door_(door),
      pipeline_(pipeline),
      type_(type),
      sink_(shareObject(sink)),
      between_(std::move(between)),
      hooks_(std::move(hooks)),
      decoder_(door, type, [this](GstCaps* caps) { leave(caps); }) {}

StreamOutput::~StreamOutput() {
  gst_element_set_state(sink_.get(), GST_STATE_NULL);  // unless it went with the pipeline
}

void StreamOutput::expect(std::string stream) {
  expected_ = std::move(stream);
  endUnlessExpected();
}

void StreamOutput::endUnlessExpected() {
  if (expected_.empty() && isAssembled_ && !source()) gst_pad_send_event(in_.get(), gst_event_new_eos());
}

GstPadRef StreamOutput::source() const {
  return GstPadRef(in_ ? gst_pad_get_peer(in_.get()) : nullptr);
}

void StreamOutput::link(GstPad* source, GstElement* queue) {
  if (!in_) {
    in_.reset(gst_element_request_pad_simple(queue, "sink_%u"));
    out_.reset(gst_pad_get_single_internal_link(in_.get()));
    gst_pad_add_probe(in_.get(), GST_PAD_PROBE_TYPE_BUFFER, &StreamOutput::enters, nullptr, nullptr);
    gst_pad_add_probe(out_.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, &StreamOutput::passes, this, nullptr);
  } else if (const GstPadRef before = this->source()) {
    gst_pad_unlink(before.get(), in_.get());
  }
  gst_pad_link_full(source, in_.get(), GST_PAD_LINK_CHECK_NOTHING);
}

void StreamOutput::unlink(GstPad* source) {
  if (!in_ || this->source().get() != source) return;
  gst_pad_unlink(source, in_.get());
  endUnlessExpected();
}

// tsdemux 1.22 goes on for a moment after a seek with what it had, before it says where it is now.
GstPadProbeReturn StreamOutput::enters(GstPad* pad, GstPadProbeInfo*, gpointer) {
  const GstEventRef segment(gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0));
  return segment ? GST_PAD_PROBE_OK : GST_PAD_PROBE_DROP;
}

GstPadProbeReturn StreamOutput::passes(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  auto* self = static_cast<StreamOutput*>(data);
  GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
  if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START) self->assemble(pad);
  if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
    GstCaps* caps = nullptr;
    gst_event_parse_caps(event, &caps);
    const GstObjectRef<GstStream> stream(gst_pad_get_stream(pad));
    if (stream && gst_caps_is_fixed(caps)) gst_stream_set_caps(stream.get(), caps);
  }
  return GST_PAD_PROBE_OK;
}

void StreamOutput::assemble(GstPad* pad) {
  if (isAssembled_ || isGone_) return;
  // A device may take a while to open: the other streams need not wait for it.
  gst_element_set_state(sink_.get(), GST_STATE_READY);
  const GraphDoor::Lock inside = door_.enter();
  if (!inside) return;
  GstElement* next = sink_.get();
  gst_bin_add(GST_BIN(pipeline_), next);
  const auto putBefore = [&](GstElement* element) {
    gst_bin_add(GST_BIN(pipeline_), element);
    gst_element_link(element, next);
    gst_element_sync_state_with_parent(next);
    next = element;
  };
  for (auto name = between_.rbegin(); name != between_.rend(); ++name) {
    GstElement* element = gst_element_factory_make(*name, nullptr);
    if (!element) continue;
    // One picture is enough: the decoders have more on the way.
    if (*name == std::string_view("queue")) {
      g_object_set(element, "max-size-buffers", 1u, "max-size-bytes", 0u, "max-size-time", guint64{0}, nullptr);
    }
    putBefore(element);
  }
  putBefore(decoder_.element());
  gst_element_sync_state_with_parent(next);
  const GstPadRef in(gst_element_get_static_pad(next, "sink"));
  gst_pad_link_full(pad, in.get(), GST_PAD_LINK_CHECK_NOTHING);
  isAssembled_ = true;
  hooks_.settled();
}

void StreamOutput::leave(GstCaps* caps) {
  const GraphDoor::Lock inside = door_.enter();
  if (!inside) return;
  isGone_ = true;
  hooks_.undecodable(caps);  // before the pipeline may be ready without it
  dropAll(out_.get());
  gst_element_set_locked_state(sink_.get(), TRUE);
  gst_bin_remove(GST_BIN(pipeline_), sink_.get());
  gst_element_set_state(sink_.get(), GST_STATE_NULL);
  hooks_.settled();
}
