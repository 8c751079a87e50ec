#include "platform/avfoundation/engine/StreamingWatch.h"

#include <sys/resource.h>

#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

// Waits for a disk count as moves: the libraries of a demuxer may have to be loaded from a slow one.
std::uint64_t waitsForDisk() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_majflt) + static_cast<std::uint64_t>(usage.ru_inblock);
}

bool isA(GstElementFactory* factory, GstElementFactoryListType type) {
  return factory && gst_element_factory_list_is_type(factory, type);
}

}  // namespace

class StreamingWatch::Visit {
 public:
  explicit Visit(Stage& stage) : stage_(stage) {
    ++stage_.passes;
    ++stage_.inside;
  }
  ~Visit() {
    --stage_.inside;
    ++stage_.passes;
  }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

 private:
  Stage& stage_;
};

// What a pad did before, with the stage that it is in.
struct StreamingWatch::Wrapped {
  StreamingWatch& watch;
  Stage& stage;
  GstPadChainFunction chain = nullptr;
  GstPadChainListFunction chainList = nullptr;
  GstPadGetRangeFunction getRange = nullptr;

  static void release(gpointer wrapped) { delete static_cast<Wrapped*>(wrapped); }
};

void StreamingWatch::admit(GstElement* element) {
  if (GST_IS_BIN(element)) return;
  GstElementFactory* factory = gst_element_get_factory(element);
  const std::string_view name = factory ? GST_OBJECT_NAME(factory) : "";
  const GstPadRef in(gst_element_get_static_pad(element, "sink"));
  if (GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SOURCE)) {
    wrapSource(element);
  } else if (name == "multiqueue") {
    g_signal_connect(element, "pad-added", G_CALLBACK(queuePadAdded), this);
  } else if (in && GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SINK)) {
    wrapChain(in.get(), presenting_[name == "appsink" ? pictures : sound]);
  } else if (in && isA(factory, GST_ELEMENT_FACTORY_TYPE_DECODER)) {
    wrapChain(in.get(), decoding_[isA(factory, GST_ELEMENT_FACTORY_TYPE_MEDIA_VIDEO) ? pictures : sound]);
  } else if (in && name == "typefind") {
    wrapChain(in.get(), parsing_);
  }
}

void StreamingWatch::wrapChain(GstPad* pad, Stage& stage) {
  const Wrapped before{*this, stage, GST_PAD_CHAINFUNC(pad), GST_PAD_CHAINLISTFUNC(pad)};
  if (before.chain) gst_pad_set_chain_function_full(pad, &StreamingWatch::chain, new Wrapped(before), Wrapped::release);
  if (before.chainList) {
    gst_pad_set_chain_list_function_full(pad, &StreamingWatch::chainList, new Wrapped(before), Wrapped::release);
  }
}

void StreamingWatch::wrapSource(GstElement* source) {
  const GstPadRef out(gst_element_get_static_pad(source, "src"));
  if (!out || !GST_PAD_GETRANGEFUNC(out.get())) return;
  auto* wrapped = new Wrapped{*this, reading_, nullptr, nullptr, GST_PAD_GETRANGEFUNC(out.get())};
  gst_pad_set_getrange_function_full(out.get(), &StreamingWatch::getRange, wrapped, Wrapped::release);
}

GstFlowReturn StreamingWatch::chain(GstPad* pad, GstObject* parent, GstBuffer* buffer) {
  const auto& wrapped = *static_cast<Wrapped*>(pad->chaindata);
  const Visit visit(wrapped.stage);
  if (&wrapped.stage == &wrapped.watch.parsing_) wrapped.watch.isPulled_ = false;  // it pushes by now
  return wrapped.chain(pad, parent, buffer);
}

GstFlowReturn StreamingWatch::chainList(GstPad* pad, GstObject* parent, GstBufferList* list) {
  const auto& wrapped = *static_cast<Wrapped*>(pad->chainlistdata);
  const Visit visit(wrapped.stage);
  return wrapped.chainList(pad, parent, list);
}

GstFlowReturn StreamingWatch::getRange(GstPad* pad, GstObject* parent, guint64 place, guint size, GstBuffer** buffer) {
  const auto& wrapped = *static_cast<Wrapped*>(pad->getrangedata);
  const Visit visit(wrapped.stage);
  const GstFlowReturn result = wrapped.getRange(pad, parent, place, size, buffer);
  wrapped.watch.isPulled_ = result == GST_FLOW_OK;
  return result;
}

void StreamingWatch::queuePadAdded(GstElement*, GstPad* pad, gpointer self) {
  if (!GST_PAD_IS_SINK(pad)) return;
  auto* watch = static_cast<StreamingWatch*>(self);
  watch->wrapChain(pad, watch->queueing_);
  constexpr int events = GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH;
  gst_pad_add_probe(pad, static_cast<GstPadProbeType>(events), &StreamingWatch::queueEvent, self, nullptr);
}

// Whoever has come to the end comes for no more; for what follows of another stream he comes again.
GstPadProbeReturn StreamingWatch::queueEvent(GstPad*, GstPadProbeInfo* info, gpointer self) {
  const GstEventType type = GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info));
  if (type == GST_EVENT_EOS || type == GST_EVENT_FLUSH_START) static_cast<StreamingWatch*>(self)->isPulled_ = false;
  return GST_PAD_PROBE_OK;
}

bool StreamingWatch::hasMoved() {
  const std::uint64_t paged = waitsForDisk();
  const bool wasLoading = std::exchange(paged_, paged) != paged;
  const std::uint64_t parsed = reading_.passes + parsing_.passes + queueing_.passes;
  // Whoever parses may wait for room where nobody sees it, with an event; he is late only when a sink has nothing left.
  const bool isNeeded = presenting_[pictures].inside == 0 && presenting_[sound].inside == 0;
  const bool isParsing = isNeeded && ((isPulled_ && reading_.inside == 0) || parsing_.inside > 0);
  bool stands = std::exchange(parsed_, parsed) == parsed && isParsing && queueing_.inside == 0;
  for (const Kind kind : {pictures, sound}) {
    const std::uint64_t decoded = decoding_[kind].passes + presenting_[kind].passes;
    const bool isDecoding = decoding_[kind].inside > 0 && presenting_[kind].inside == 0;
    stands |= std::exchange(decoded_[kind], decoded) == decoded && isDecoding;
  }
  return !stands || wasLoading;
}
