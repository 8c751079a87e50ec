#include "platform/avfoundation/engine/EndGate.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

// A stream's first buffer follows its announcement within milliseconds. What does not come within this may never come.
constexpr auto arrivalLimit = std::chrono::seconds(2);

constexpr auto dataOrEvent =
    static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM);

// A gap counts as a buffer.
bool isData(const GstPadProbeInfo* info) {
  return (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) ||
         GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_GAP;
}

bool isText(GstPad* pad) {
  const GstObjectRef<GstStream> stream(gst_pad_get_stream(pad));
  return stream && gst_stream_get_stream_type(stream.get()) & GST_STREAM_TYPE_TEXT;
}

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
  if (GST_PAD_IS_SINK(pad)) gst_pad_add_probe(pad, dataOrEvent, noteArrival, self, nullptr);
}

void EndGate::sourcePadAdded(GstElement*, GstPad* pad, gpointer data) {
  if (!GST_PAD_IS_SRC(pad)) return;
  auto* self = static_cast<EndGate*>(data);
  {
    std::lock_guard lock(self->mutex_);
    self->sources_[pad] = false;
  }
  constexpr auto events =
      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH);
  gst_pad_add_probe(pad, events, eventPasses, self, nullptr);
  gst_pad_add_probe(pad, dataOrEvent, noteDeparture, self, nullptr);
}

void EndGate::sourcePadRemoved(GstElement*, GstPad* pad, gpointer data) {
  auto* self = static_cast<EndGate*>(data);
  {
    std::lock_guard lock(self->mutex_);
    self->sources_.erase(pad);
    self->begun_.erase(pad);
    self->heldTexts_.erase(pad);
  }
  self->changed_.notify_all();
}

GstPadProbeReturn EndGate::noteDeparture(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  if (!isData(info)) return GST_PAD_PROBE_OK;
  auto* self = static_cast<EndGate*>(data);
  std::lock_guard lock(self->mutex_);
  self->begun_.insert(pad);
  return GST_PAD_PROBE_REMOVE;
}

GstPadProbeReturn EndGate::noteArrival(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  if (!isData(info)) return GST_PAD_PROBE_OK;
  const GTextRef stream(gst_pad_get_stream_id(pad));
  if (!stream) return GST_PAD_PROBE_OK;
  auto* self = static_cast<EndGate*>(data);
  {
    std::lock_guard lock(self->mutex_);
    self->taken_.insert(stream.get());
  }
  self->changed_.notify_all();
  return GST_PAD_PROBE_REMOVE;
}

GstPadProbeReturn EndGate::eventPasses(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  auto* self = static_cast<EndGate*>(data);
  switch (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info))) {
    case GST_EVENT_FLUSH_STOP: {
      std::lock_guard lock(self->mutex_);
      self->sources_[pad] = false;
      self->heldTexts_.erase(pad);
      return GST_PAD_PROBE_OK;
    }
    case GST_EVENT_EOS:
      return isText(pad) ? self->textEnds(pad) : self->mediaEnds(pad);
    default:
      return GST_PAD_PROBE_OK;
  }
}

GstPadProbeReturn EndGate::textEnds(GstPad* pad) {
  std::lock_guard lock(mutex_);
  if (haveMediaEnded()) return GST_PAD_PROBE_OK;
  heldTexts_.insert(pad);
  return GST_PAD_PROBE_DROP;
}

GstPadProbeReturn EndGate::mediaEnds(GstPad* pad) {
  std::vector<GstObjectRef<GstPad>> texts;  // where they lead to: the pads themselves count as ended
  {
    std::unique_lock lock(mutex_);
    sources_[pad] = true;
    changed_.notify_all();
    changed_.wait_for(lock, arrivalLimit, [this] { return isReleased_ || areAllTaken(); });
    // While the pipeline is stopped, an end that reaches decodebin3 does the same harm as one that comes too early.
    if (isReleased_) return GST_PAD_PROBE_DROP;
    if (haveMediaEnded()) {
      for (GstPad* text : heldTexts_) texts.emplace_back(gst_pad_get_peer(text));
      heldTexts_.clear();
    }
  }
  for (const auto& text : texts) {
    if (text) gst_pad_send_event(text.get(), gst_event_new_eos());
  }
  return GST_PAD_PROBE_OK;
}

bool EndGate::haveMediaEnded() const {
  const auto isMedia = [](const auto& source) { return !isText(source.first); };
  return std::ranges::any_of(sources_, isMedia) &&
         std::ranges::all_of(sources_, [&](const auto& source) { return source.second || !isMedia(source); });
}

bool EndGate::areAllTaken() const {
  return std::ranges::all_of(sources_, [this](const auto& source) {
    if (source.second || (isText(source.first) && !begun_.contains(source.first))) return true;
    const GTextRef stream(gst_pad_get_stream_id(source.first));
    return stream && taken_.contains(stream.get());
  });
}

void EndGate::release() {
  {
    std::lock_guard lock(mutex_);
    isReleased_ = true;
  }
  changed_.notify_all();
}
