#include "platform/avfoundation/engine/StreamStartGate.h"

#include <chrono>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

// The streams announce themselves within a few milliseconds of each other; some, like texts that nobody chose, never
// do.
constexpr auto announcementsLimit = std::chrono::milliseconds(60);

}  // namespace

void StreamStartGate::admit(GstElement* element) {
  if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), "max-buffering-time")) comeInTurn_ = true;
  if (factoryName(element) == "urisourcebin") g_signal_connect(element, "pad-added", G_CALLBACK(padAdded), this);
}

void StreamStartGate::padAdded(GstElement*, GstPad* pad, gpointer data) {
  auto* self = static_cast<StreamStartGate*>(data);
  bool isFirst;
  {
    std::lock_guard lock(self->mutex_);
    isFirst = !self->hasFirst_;
    self->hasFirst_ = true;
  }
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, isFirst ? firstStarts : otherStarts, self, nullptr);
}

GstPadProbeReturn StreamStartGate::firstStarts(GstPad*, GstPadProbeInfo* info, gpointer self) {
  GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
  if (GST_EVENT_TYPE(event) != GST_EVENT_STREAM_COLLECTION) return GST_PAD_PROBE_OK;
  GstStreamCollection* streams = nullptr;
  gst_event_parse_stream_collection(event, &streams);
  const GstObjectRef<GstStreamCollection> owned(streams);
  static_cast<StreamStartGate*>(self)->hold(gst_stream_collection_get_size(streams));
  return GST_PAD_PROBE_REMOVE;
}

GstPadProbeReturn StreamStartGate::otherStarts(GstPad*, GstPadProbeInfo* info, gpointer self) {
  // What follows the segment is data: the announcements are through.
  if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_SEGMENT) return GST_PAD_PROBE_OK;
  static_cast<StreamStartGate*>(self)->noteStarted();
  return GST_PAD_PROBE_REMOVE;
}

void StreamStartGate::hold(unsigned streams) {
  if (comeInTurn_) return;
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, announcementsLimit, [&] { return started_ + 1 >= streams; });
}

void StreamStartGate::noteStarted() {
  {
    std::lock_guard lock(mutex_);
    ++started_;
  }
  changed_.notify_all();
}
