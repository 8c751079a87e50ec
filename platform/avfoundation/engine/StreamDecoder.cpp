#include "platform/avfoundation/engine/StreamDecoder.h"

#include <string_view>
#include <utility>

namespace {

// What is kept for the next decoder; of what comes behind it only the newest is given again.
constexpr std::size_t againBuffersLimit = 400;
constexpr std::size_t againBytesLimit = 16 * 1024 * 1024;

bool isRaw(const GstCaps* caps) {
  return std::string_view(gst_structure_get_name(gst_caps_get_structure(caps, 0))).ends_with("/x-raw");
}

// Not a fault: OK, flushing, at the end, nobody there.
bool hasFailed(GstFlowReturn result) {
  return result <= GST_FLOW_NOT_NEGOTIATED;
}

// The best first. Raw data pass.
std::deque<GstObjectRef<GstElementFactory>> decodersOf(GstStreamType type, const GstCaps* caps) {
  std::deque<GstObjectRef<GstElementFactory>> result;
  if (isRaw(caps)) {
    result.push_back(adoptObject(gst_element_factory_find("identity")));
    return result;
  }
  const auto media =
      type == GST_STREAM_TYPE_VIDEO ? GST_ELEMENT_FACTORY_TYPE_MEDIA_VIDEO : GST_ELEMENT_FACTORY_TYPE_MEDIA_AUDIO;
  GList* all = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER | media, GST_RANK_MARGINAL);
  all = g_list_sort(all, gst_plugin_feature_rank_compare_func);
  GList* able = gst_element_factory_list_filter(all, caps, GST_PAD_SINK, FALSE);
  for (GList* entry = able; entry; entry = entry->next) {
    result.push_back(shareObject(GST_ELEMENT_FACTORY(entry->data)));
  }
  gst_plugin_feature_list_free(able);
  gst_plugin_feature_list_free(all);
  return result;
}

void stop(GstElement* element) {
  gst_element_set_state(element, GST_STATE_NULL);
}

}  // namespace

// Hears its child's errors before the pipeline does, which would stop where it is.
struct StreamDecoder::Bin {
  GstBin parent;
  StreamDecoder* decoder;

  static GstElement* make(StreamDecoder* decoder) {
    static const GType type = g_type_register_static_simple(
        GST_TYPE_BIN, "YmrStreamDecoder", sizeof(GstBinClass),
        [](gpointer made, gpointer) { GST_BIN_CLASS(made)->handle_message = &StreamDecoder::handle; }, sizeof(Bin),
        nullptr, GTypeFlags{});
    auto* bin = static_cast<Bin*>(g_object_new(type, nullptr));
    bin->decoder = decoder;
    return GST_ELEMENT_CAST(bin);
  }
};

void StreamDecoder::handle(GstBin* bin, GstMessage* message) {
  StreamDecoder* decoder = reinterpret_cast<Bin*>(bin)->decoder;
  if (decoder && decoder->keep(message)) return gst_message_unref(message);
  static_cast<GstBinClass*>(g_type_class_peek(GST_TYPE_BIN))->handle_message(bin, message);
}

StreamDecoder::StreamDecoder(GraphDoor& door, GstStreamType type, std::function<void(GstCaps*)> undecodable)
    : door_(door), type_(type), undecodable_(std::move(undecodable)), bin_(shareObject(Bin::make(this))) {
  in_ = gst_ghost_pad_new_no_target("sink", GST_PAD_SINK);
  out_ = gst_ghost_pad_new_no_target("src", GST_PAD_SRC);
  gst_pad_set_chain_function_full(in_, &StreamDecoder::chain, this, nullptr);
  gst_pad_set_chain_list_function_full(in_, &StreamDecoder::chainList, this, nullptr);
  gst_pad_set_event_function_full(in_, &StreamDecoder::event, this, nullptr);
  constexpr int output = GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST;
  gst_pad_set_query_function_full(in_, &StreamDecoder::query, nullptr, nullptr);
  gst_pad_add_probe(out_, static_cast<GstPadProbeType>(output), &StreamDecoder::noteOutput, this, nullptr);
  for (GstPad* pad : {in_, out_}) gst_element_add_pad(bin_.get(), pad);
}

StreamDecoder::~StreamDecoder() {
  reinterpret_cast<Bin*>(bin_.get())->decoder = nullptr;  // the pipeline may have it a little longer
}

GstFlowReturn StreamDecoder::chain(GstPad* pad, GstObject*, GstBuffer* buffer) {
  return static_cast<StreamDecoder*>(pad->chaindata)->takeBuffer(pad, buffer);
}

GstFlowReturn StreamDecoder::chainList(GstPad* pad, GstObject*, GstBufferList* list) {
  const GstMiniObjectRef<GstBufferList> owned(list);
  GstFlowReturn result = GST_FLOW_OK;
  for (guint i = 0; i < gst_buffer_list_length(list) && result == GST_FLOW_OK; ++i) {
    GstBuffer* buffer = gst_buffer_ref(gst_buffer_list_get(list, i));
    result = static_cast<StreamDecoder*>(pad->chainlistdata)->takeBuffer(pad, buffer);
  }
  return result;
}

gboolean StreamDecoder::event(GstPad* pad, GstObject*, GstEvent* event) {
  return static_cast<StreamDecoder*>(pad->eventdata)->takeEvent(pad, event);
}

// Whatever the present decoder takes: what it does not take has another one.
gboolean StreamDecoder::query(GstPad* pad, GstObject* parent, GstQuery* query) {
  if (GST_QUERY_TYPE(query) == GST_QUERY_ACCEPT_CAPS) {
    gst_query_set_accept_caps_result(query, TRUE);
    return TRUE;
  }
  if (GST_QUERY_TYPE(query) != GST_QUERY_CAPS) return gst_pad_query_default(pad, parent, query);
  GstCaps* filter = nullptr;
  gst_query_parse_caps(query, &filter);
  const GstCapsRef any(filter ? gst_caps_ref(filter) : gst_caps_new_any());
  gst_query_set_caps_result(query, any.get());
  return TRUE;
}

GstPadProbeReturn StreamDecoder::noteOutput(GstPad*, GstPadProbeInfo*, gpointer self) {
  static_cast<StreamDecoder*>(self)->hasOutput_ = true;
  return GST_PAD_PROBE_OK;
}

GstFlowReturn StreamDecoder::takeBuffer(GstPad* pad, GstBuffer* buffer) {
  GstObject* parent = GST_OBJECT_CAST(bin_.get());
  if (!isOnTrial()) {
    untilOutput_.clear();
    return gst_proxy_pad_chain_default(pad, parent, buffer);
  }
  if (untilOutput_.empty()) untilOutputBytes_ = 0;
  untilOutputBytes_ += gst_buffer_get_size(buffer);
  if (untilOutput_.size() < againBuffersLimit && untilOutputBytes_ <= againBytesLimit) {
    untilOutput_.emplace_back(gst_buffer_ref(buffer));
  }
  GstFlowReturn result = gst_proxy_pad_chain_default(pad, parent, buffer);
  while (isOnTrial() && hasFailed(result)) {
    if (!plugNext(caps_.get())) return result;
    result = pushAgain(pad);
  }
  return result;
}

GstFlowReturn StreamDecoder::pushAgain(GstPad* pad) {
  GstFlowReturn result = GST_FLOW_OK;
  for (const Buffer& buffer : untilOutput_) {
    result = gst_proxy_pad_chain_default(pad, GST_OBJECT_CAST(bin_.get()), gst_buffer_ref(buffer.get()));
    if (result != GST_FLOW_OK) break;
  }
  return result;
}

bool StreamDecoder::takeEvent(GstPad* pad, GstEvent* event) {
  GstObject* parent = GST_OBJECT_CAST(bin_.get());
  const GstEventType type = GST_EVENT_TYPE(event);
  if (type == GST_EVENT_FLUSH_STOP || type == GST_EVENT_CAPS) untilOutput_.clear();
  // Whoever waits for the stream downstream is let go of, whether anything has ever come or not.
  const bool isFlush = type == GST_EVENT_FLUSH_START || type == GST_EVENT_FLUSH_STOP;
  if (isFlush && !decoder_) gst_pad_push_event(out_, gst_event_ref(event));
  if (type != GST_EVENT_CAPS) {
    const bool isTaken = gst_pad_event_default(pad, parent, event);
    if (type == GST_EVENT_EOS) end();
    return isTaken;
  }
  const GstEventRef owned(event);
  GstCaps* caps = nullptr;
  gst_event_parse_caps(event, &caps);
  caps_.reset(gst_caps_ref(caps));
  candidates_ = decodersOf(type_, caps);
  const GstPadRef in(decoder_ ? gst_element_get_static_pad(decoder_.get(), "sink") : nullptr);
  const bool suits = in && gst_pad_query_accept_caps(in.get(), caps);
  if (suits && gst_pad_event_default(pad, parent, gst_event_ref(event))) return true;
  while (plugNext(caps)) {
    if (gst_pad_event_default(pad, parent, gst_event_ref(event))) return true;
  }
  return false;
}

void StreamDecoder::end() {
  if (!decoder_) {  // nothing has ever come: downstream hears of the end all the same
    if (GstEvent* start = gst_pad_get_sticky_event(in_, GST_EVENT_STREAM_START, 0)) gst_pad_push_event(out_, start);
    gst_pad_push_event(out_, gst_event_new_eos());
  } else if (isOnTrial()) {
    postKeptError();
  }
}

bool StreamDecoder::postKeptError() {
  GstMiniObjectRef<GstMessage> error;
  {
    std::lock_guard lock(mutex_);
    error = std::move(keptError_);
  }
  hasOutput_ = true;  // the trial is over: this one counts
  return error && gst_element_post_message(bin_.get(), error.release());
}

bool StreamDecoder::plugNext(const GstCaps* caps) {
  unplug();
  while (!candidates_.empty()) {
    const GstElementRef decoder = makeCandidate(caps);
    if (decoder && plug(decoder.get())) return true;
    unplug();
    if (decoder) stop(decoder.get());
    if (!door_.enter()) return false;
  }
  if (!postKeptError()) undecodable_(const_cast<GstCaps*>(caps));
  return false;
}

// Its device may take a while to open, or be in use.
GstElementRef StreamDecoder::makeCandidate(const GstCaps* caps) {
  const GstObjectRef<GstElementFactory> factory = std::move(candidates_.front());
  candidates_.pop_front();
  GstElementRef decoder = shareObject(gst_element_factory_create(factory.get(), nullptr));
  if (!decoder) return nullptr;
  const GstPadRef in(gst_element_get_static_pad(decoder.get(), "sink"));
  const GstPadRef out(gst_element_get_static_pad(decoder.get(), "src"));
  const bool works = in && out && gst_element_set_state(decoder.get(), GST_STATE_READY) != GST_STATE_CHANGE_FAILURE &&
                     gst_pad_query_accept_caps(in.get(), const_cast<GstCaps*>(caps));
  if (works) return decoder;
  stop(decoder.get());
  return nullptr;
}

bool StreamDecoder::plug(GstElement* decoder) {
  const GraphDoor::Lock inside = door_.enter();
  if (!inside) return false;
  const GstPadRef in(gst_element_get_static_pad(decoder, "sink"));
  const GstPadRef out(gst_element_get_static_pad(decoder, "src"));
  {
    std::lock_guard lock(mutex_);
    decoder_ = shareObject(decoder);
  }
  hasOutput_ = false;
  gst_bin_add(GST_BIN(bin_.get()), decoder);
  return gst_ghost_pad_set_target(GST_GHOST_PAD(out_), out.get()) && gst_element_sync_state_with_parent(decoder) &&
         gst_ghost_pad_set_target(GST_GHOST_PAD(in_), in.get());
}

void StreamDecoder::unplug() {
  GstElementRef old;
  {
    std::lock_guard lock(mutex_);
    old = std::move(decoder_);
  }
  if (!old) return;
  {
    const GraphDoor::Lock inside = door_.enter();
    if (!inside) return;  // it goes with the pipeline
    gst_element_set_locked_state(old.get(), TRUE);
    for (GstPad* pad : {in_, out_}) gst_ghost_pad_set_target(GST_GHOST_PAD(pad), nullptr);
    gst_bin_remove(GST_BIN(bin_.get()), old.get());
  }
  stop(old.get());  // outside: it may wait for the sink
}

bool StreamDecoder::keep(GstMessage* message) {
  if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_ERROR) return false;
  std::lock_guard lock(mutex_);
  if (!isOnTrial() || !decoder_) return false;
  if (!keptError_) keptError_.reset(gst_message_ref(message));
  return true;
}
