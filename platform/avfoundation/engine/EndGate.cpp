#include "platform/avfoundation/engine/EndGate.h"

#include <chrono>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

// Taking a stream in takes well below a millisecond. What does not come within this will not come.
constexpr auto patience = std::chrono::seconds(2);

}  // namespace

void EndGate::watchDecoders(GstElement* playbin) {
  GstIterator* queues = gst_bin_iterate_all_by_element_factory_name(GST_BIN(playbin), "multiqueue");
  const auto watch = [](const GValue* queue, gpointer self) {
    g_signal_connect(g_value_get_object(queue), "pad-added", G_CALLBACK(decoderPadAdded), self);
  };
  gst_iterator_foreach(queues, watch, this);
  gst_iterator_free(queues);
}

void EndGate::admit(GstElement* element, GstElement* parent) {
  // Only behind this queue has each stream a thread of its own; elsewhere they come in turn, and none may wait.
  if (factoryName(element) != "multiqueue" || factoryName(parent) != "urisourcebin") return;
  g_signal_connect(element, "pad-added", G_CALLBACK(sourcePadAdded), this);
  g_signal_connect(element, "pad-removed", G_CALLBACK(sourcePadRemoved), this);
}

void EndGate::decoderPadAdded(GstElement*, GstPad* pad, gpointer self) {
  if (GST_PAD_IS_SINK(pad)) gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, noteArrival, self, nullptr);
}

void EndGate::sourcePadAdded(GstElement*, GstPad* pad, gpointer data) {
  if (!GST_PAD_IS_SRC(pad)) return;
  auto* self = static_cast<EndGate*>(data);
  {
    std::lock_guard lock(self->mutex_);
    self->sources_.insert(pad);
  }
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, holdEnd, self, nullptr);
}

void EndGate::sourcePadRemoved(GstElement*, GstPad* pad, gpointer data) {
  auto* self = static_cast<EndGate*>(data);
  {
    std::lock_guard lock(self->mutex_);
    self->sources_.erase(pad);
  }
  self->changed_.notify_all();
}

GstPadProbeReturn EndGate::noteArrival(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_SEGMENT) return GST_PAD_PROBE_OK;
  auto* self = static_cast<EndGate*>(data);
  {
    std::lock_guard lock(self->mutex_);
    self->taken_.insert(pad);
  }
  self->changed_.notify_all();
  return GST_PAD_PROBE_REMOVE;
}

GstPadProbeReturn EndGate::holdEnd(GstPad*, GstPadProbeInfo* info, gpointer data) {
  if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_EOS) return GST_PAD_PROBE_OK;
  auto* self = static_cast<EndGate*>(data);
  std::unique_lock lock(self->mutex_);
  self->changed_.wait_for(lock, patience,
                          [self] { return self->isReleased_ || self->taken_.size() >= self->sources_.size(); });
  return GST_PAD_PROBE_OK;
}

void EndGate::release() {
  {
    std::lock_guard lock(mutex_);
    isReleased_ = true;
  }
  changed_.notify_all();
}
