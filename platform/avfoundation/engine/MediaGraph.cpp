#include "platform/avfoundation/engine/MediaGraph.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/StreamChoice.h"

namespace {

const char* adaptiveDemuxerFor(std::string_view type) {
  if (type == "application/dash+xml") return "dashdemux2";
  if (type == "application/vnd.ms-sstr+xml") return "mssdemux2";
  return nullptr;
}

// It holds segments itself; behind it each stream only needs a thread of its own.
constexpr guint adaptiveQueueBytes = 2 * mebibyte;

GstElement* makeQueue(const QueueLimits& limits, bool isAdaptive) {
  GstElement* queue = gst_element_factory_make("multiqueue", nullptr);
  g_object_set(queue, "sync-by-running-time", TRUE, "max-size-buffers", 0u, "max-size-bytes",
               isAdaptive ? adaptiveQueueBytes : limits.bytes, nullptr);
  if (isAdaptive) {
    g_object_set(queue, "use-interleave", TRUE, nullptr);
  } else {
    g_object_set(queue, "use-interleave", TRUE, "min-interleave-time", limits.time, "high-watermark",
                 limits.highWatermark, "low-watermark", limits.lowWatermark, "use-buffering", limits.tellsItsLevel,
                 nullptr);
  }
  return queue;
}

}  // namespace

MediaGraph::MediaGraph(const QueueLimits& limits, GstElement* pictures, GstElement* sound, Hooks hooks)
    : limits_(limits),
      hooks_(std::move(hooks)),
      pipeline_(shareObject(gst_pipeline_new(nullptr))),
      outputs_{
          {{door_, pipeline_.get(), GST_STREAM_TYPE_VIDEO, pictures, {"deinterlace", "queue"}, outputHooks(0)},
           {door_, pipeline_.get(), GST_STREAM_TYPE_AUDIO, sound, {"audioconvert", "audioresample"}, outputHooks(1)}}} {
  // Adaptive demuxers ask for it.
  GST_OBJECT_FLAG_SET(pipeline_.get(), GST_BIN_FLAG_STREAMS_AWARE);
  waiting_ = gst_element_factory_make("fakesink", nullptr);
  gst_bin_add(GST_BIN(pipeline_.get()), waiting_);
}

// Whoever holds the demuxer still lets go of it later, and with it go its pads.
MediaGraph::~MediaGraph() {
  if (demuxer_) g_signal_handlers_disconnect_by_data(demuxer_.get(), this);
}

StreamOutput::Hooks MediaGraph::outputHooks(std::size_t index) {
  return {[this] { settle(); }, [this, index](GstCaps* caps) { hooks_.undecodable(outputs_[index].type(), caps); }};
}

void MediaGraph::open(GstElement* source) {
  GstElement* find = gst_element_factory_make("typefind", nullptr);
  g_signal_connect(find, "have-type", G_CALLBACK(typeFound), this);
  gst_bin_add_many(GST_BIN(pipeline_.get()), source, find, nullptr);
  gst_element_link(source, find);
}

void MediaGraph::openStreams(GstElement* source) {
  const GraphDoor::Lock inside = door_.enter();
  demuxer_ = shareObject(source);
  queue_ = makeQueue(limits_, false);
  hooks_.demuxerMade(source, true);
  g_signal_connect(source, "pad-added", G_CALLBACK(padAdded), this);
  g_signal_connect(source, "pad-removed", G_CALLBACK(padRemoved), this);
  gst_bin_add_many(GST_BIN(pipeline_.get()), queue_, source, nullptr);
}

void MediaGraph::typeFound(GstElement* find, guint, GstCaps* caps, gpointer data) {
  auto* self = static_cast<MediaGraph*>(data);
  if (self->hooks_.mayOpen(gst_structure_get_name(gst_caps_get_structure(caps, 0)))) self->openMedia(find, caps);
}

void MediaGraph::openMedia(GstElement* find, GstCaps* caps) {
  const GraphDoor::Lock inside = door_.enter();
  if (!inside || queue_) return;
  const char* adaptive = adaptiveDemuxerFor(gst_structure_get_name(gst_caps_get_structure(caps, 0)));
  isAdaptive_ = adaptive != nullptr;
  GstElement* demuxer = gst_element_factory_make(adaptive ? adaptive : "parsebin", nullptr);
  if (!demuxer) {
    GST_ELEMENT_ERROR(pipeline_.get(), STREAM, TYPE_NOT_FOUND, ("no demuxer"), (nullptr));
    return;
  }
  demuxer_ = shareObject(demuxer);
  queue_ = makeQueue(limits_, isAdaptive_);
  hooks_.demuxerMade(demuxer, isAdaptive_);  // what others see of a pad, they see before it is dropped
  g_signal_connect(demuxer, "pad-added", G_CALLBACK(padAdded), this);
  g_signal_connect(demuxer, "pad-removed", G_CALLBACK(padRemoved), this);
  // Nobody else may start it: whoever changes the pipeline's state would wait for this thread, which waits for him.
  gst_element_set_locked_state(demuxer, TRUE);
  gst_bin_add_many(GST_BIN(pipeline_.get()), queue_, demuxer, nullptr);
  gst_element_sync_state_with_parent(queue_);
  gst_element_link(find, demuxer);
  gst_element_set_state(demuxer, GST_STATE_PAUSED);
  gst_element_set_locked_state(demuxer, FALSE);
  gst_element_sync_state_with_parent(demuxer);
}

void MediaGraph::padAdded(GstElement*, GstPad* pad, gpointer self) {
  if (!GST_PAD_IS_SRC(pad)) return;
  const GstObjectRef<GstStream> stream(gst_pad_get_stream(pad));
  if (stream) return static_cast<MediaGraph*>(self)->take(pad, stream.get());
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, streamStarts, self, nullptr);
}

GstPadProbeReturn MediaGraph::streamStarts(GstPad* pad, GstPadProbeInfo* info, gpointer self) {
  if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_STREAM_START) return GST_PAD_PROBE_OK;
  const GstObjectRef<GstStream> stream(gst_pad_get_stream(pad));
  static_cast<MediaGraph*>(self)->take(pad, stream.get());
  return GST_PAD_PROBE_REMOVE;
}

void MediaGraph::take(GstPad* pad, GstStream* stream) {
  const GraphDoor::Lock inside = door_.enter();
  if (!inside) return;
  StreamOutput* output = stream ? outputFor(stream) : nullptr;
  output ? output->link(pad, queue_) : dropAll(pad);
}

StreamOutput* MediaGraph::outputFor(GstStream* stream) {
  const int type = gst_stream_get_stream_type(stream);
  const auto output = std::ranges::find_if(outputs_, [&](const StreamOutput& each) { return each.type() & type; });
  if (output == outputs_.end() || output->isGone()) return nullptr;
  // An adaptive demuxer delivers what it has chosen itself.
  const bool isWanted = isAdaptive_ || output->expected().empty()
                            ? !output->source()
                            : output->expected() == gst_stream_get_stream_id(stream);
  return isWanted ? &*output : nullptr;
}

void MediaGraph::padRemoved(GstElement*, GstPad* pad, gpointer data) {
  auto* self = static_cast<MediaGraph*>(data);
  const GraphDoor::Lock inside = self->door_.enter();
  if (!inside) return;
  for (StreamOutput& output : self->outputs_) output.unlink(pad);
}

void MediaGraph::expect(GstStreamCollection* streams) {
  const GraphDoor::Lock inside = door_.enter();
  if (!inside) return;
  areStreamsKnown_ = true;
  for (StreamOutput& output : outputs_) output.expect(chosenStream(streams, output.type()));
  settle();
}

void MediaGraph::settle() {
  if (!areStreamsKnown_ || !waiting_) return;
  if (!std::ranges::all_of(outputs_, [](const StreamOutput& output) { return output.isSettled(); })) return;
  const GstElementRef waiting = shareObject(std::exchange(waiting_, nullptr));
  gst_element_set_locked_state(waiting.get(), TRUE);
  gst_bin_remove(GST_BIN(pipeline_.get()), waiting.get());
  gst_element_set_state(waiting.get(), GST_STATE_NULL);
}

bool MediaGraph::seek(GstEvent* event) {
  const GstEventRef owned(event);
  for (StreamOutput& output : outputs_) {
    GstPadRef source;
    if (const GraphDoor::Lock inside = door_.enter()) source = output.source();
    if (source && gst_pad_send_event(source.get(), gst_event_ref(event))) return true;
  }
  return false;
}

bool MediaGraph::closeUnlessOpened() {
  const GraphDoor::Lock inside = door_.enter();
  if (!inside || !queue_) door_.close();
  return !queue_;
}
