#include "platform/avfoundation/engine/PipelineListener.h"

#include <gst/pbutils/pbutils.h>

#include <string_view>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

bool isOfVideo(const GstStructure* missing) {
  GstCaps* caps = nullptr;
  if (!gst_structure_get(missing, "detail", GST_TYPE_CAPS, &caps, nullptr)) return false;
  const GstCapsRef owned(caps);
  if (!caps || gst_caps_is_empty(caps) || gst_caps_is_any(caps)) return false;
  return std::string_view(gst_structure_get_name(gst_caps_get_structure(caps, 0))).starts_with("video/");
}

}  // namespace

void PipelineListener::connect(GstElement* pipeline, PipelineListener* listener) {
  const GstBusRef bus(gst_element_get_bus(pipeline));
  gst_bus_set_sync_handler(bus.get(), &PipelineListener::dispatch, listener, nullptr);
}

GstBusSyncReply PipelineListener::dispatch(GstBus*, GstMessage* message, gpointer data) {
  auto* self = static_cast<PipelineListener*>(data);
  // Only the pipeline itself speaks for all of its sinks.
  const bool isWhole = GST_IS_PIPELINE(GST_MESSAGE_SRC(message));
  switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ASYNC_DONE:
      if (isWhole) self->prerolled();
      break;
    case GST_MESSAGE_EOS:
      if (isWhole) self->ended();
      break;
    case GST_MESSAGE_ERROR:
      self->failed(message);
      break;
    case GST_MESSAGE_BUFFERING: {
      gint percent = 100;
      gst_message_parse_buffering(message, &percent);
      self->buffered(percent >= 100);
      break;
    }
    case GST_MESSAGE_DURATION_CHANGED:
      self->durationChanged();
      break;
    case GST_MESSAGE_STREAM_COLLECTION: {
      GstStreamCollection* collection = nullptr;
      gst_message_parse_stream_collection(message, &collection);
      const GstObjectRef<GstStreamCollection> owned(collection);
      if (collection) self->streamsFound(collection);
      break;
    }
    case GST_MESSAGE_STREAMS_SELECTED: {
      std::vector<GstStream*> streams;
      for (guint i = 0; i < gst_message_streams_selected_get_size(message); ++i) {
        streams.push_back(gst_message_streams_selected_get_stream(message, i));
      }
      self->streamsSelected(GST_ELEMENT_CAST(GST_MESSAGE_SRC(message)), streams);
      for (GstStream* stream : streams) gst_object_unref(stream);
      break;
    }
    case GST_MESSAGE_STATE_CHANGED: {
      GstState state = GST_STATE_NULL;
      gst_message_parse_state_changed(message, nullptr, &state, nullptr);
      if (isWhole && state == GST_STATE_PLAYING) self->clockStarted();
      break;
    }
    case GST_MESSAGE_CLOCK_LOST:
      self->clockLost();
      break;
    case GST_MESSAGE_ELEMENT:
      self->hearElement(message);
      break;
    default:
      break;
  }
  gst_message_unref(message);
  return GST_BUS_DROP;
}

void PipelineListener::hearElement(GstMessage* message) {
  if (gst_is_missing_plugin_message(message)) {
    const GTextRef description(gst_missing_plugin_message_get_description(message));
    decoderMissing(description.get(), isOfVideo(gst_message_get_structure(message)));
  }
}
