#include "platform/avfoundation/engine/MediaPipeline.h"

#include <algorithm>
#include <utility>

#include "platform/avfoundation/engine/BytesSource.h"
#include "platform/avfoundation/engine/ContainerPolicy.h"
#include "platform/avfoundation/engine/GStreamerLibrary.h"
#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/avfoundation/engine/SegmentSource.h"
#include "platform/dispatch/Weakly.h"

namespace {

std::string uriOf(const MediaSource& file) {
  if (file.descriptor) return "file:///proc/self/fd/" + std::to_string(*file.descriptor);
  const GTextRef uri(g_filename_to_uri(file.url.path().c_str(), nullptr, nullptr));
  return uri ? uri.get() : file.url.absoluteString();
}

// Opening and seeking take milliseconds where the data is there.
constexpr GstClockTime settlingLimit = GST_SECOND;
// After this a pipeline without streams is not about to have them.
constexpr GstClockTime streamsLimit = GST_SECOND / 5;

}  // namespace

MediaPipeline::MediaPipeline(MediaSource source, const MediaEngineSettings& settings, Events events)
    : source_(std::move(source)),
      settings_(settings),
      events_(std::move(events)),
      queue_(dispatch_queue_create("pipeline")),
      sound_([this] { enqueue(&MediaPipeline::replaceSound); }),
      bytes_(source_.bytes ? std::make_shared<ReadAhead>(source_.bytes, source_.purpose) : nullptr),
      captions_({[this] { hop_.post([this] { events_.captionsFound(captions_.take()); }); },
                 [this] { enqueue(&MediaPipeline::refreshFacts); }}) {}

MediaPipeline::~MediaPipeline() {
  if (!graph_) return;
  if (!graph_->closeUnlessOpened()) settle();
  graph_->close();
  GstElement* pipeline = graph_->pipeline();
  gst_element_set_state(pipeline, GST_STATE_NULL);
  const GstBusRef bus(gst_element_get_bus(pipeline));
  gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
  g_signal_handlers_disconnect_by_data(pipeline, this);
}

// parsebin 1.22 touches freed memory when it is taken down while it opens. Nobody waits for this, so it gets the time
// to come to rest; a pipeline that waits for its server never does.
void MediaPipeline::settle() {
  if (isPlaying_) gst_element_set_state(graph_->pipeline(), GST_STATE_PAUSED);
  const auto rests = [this](GstClockTime limit) {
    return gst_element_get_state(graph_->pipeline(), nullptr, nullptr, limit) != GST_STATE_CHANGE_ASYNC;
  };
  if (!rests(streamsLimit) && hasStreams()) rests(settlingLimit);
}

bool MediaPipeline::hasStreams() const {
  std::lock_guard lock(mutex_);
  return streams_ != nullptr;
}

void MediaPipeline::close(std::shared_ptr<MediaPipeline> pipeline) {
  pipeline->hop_.close();
  pipeline->frames_.close();
  if (pipeline->bytes_ && !pipeline->isOpen_) pipeline->bytes_->setInterrupted(true);
  // A queue that is dropped with its blocks must not be held by one of them.
  const dispatch_queue_t queue = std::move(pipeline->queue_);
  dispatch_async(queue, [last = std::move(pipeline)]() mutable { last.reset(); });
}

void MediaPipeline::enqueue(std::function<void(MediaPipeline&)> operation) {
  hop_.perform(queue_, weakly(weak_from_this(), std::move(operation)));
}

void MediaPipeline::open() {
  enqueue(&MediaPipeline::build);
}

void MediaPipeline::build() {
  const auto fail = [this](const NSError& error) { hop_.post([this, error] { events_.failed(error); }); };
  if (const auto missing = loadGStreamer()) return fail(missingLibraryError(*missing));
  hop_.post([this] { events_.opened(); });
  if (!source_.isLocal() && !openBytes()) return;
  if (const auto fault = source_.isLocal() ? fileFault(source_.url, source_.descriptor) : std::nullopt) {
    return fail(*fault);
  }
  GstElement* source = makeSource();
  GstElement* pictures = frames_.makeElement();
  GstElement* sound = sound_.makeElement(settings_);
  if (!source || !pictures || !sound) return fail(missingLibraryError("one of GStreamer's elements"));
  graph_ = std::make_unique<MediaGraph>(queueLimits(), pictures, sound, graphHooks());
  PipelineListener::connect(graph_->pipeline(), this);
  g_signal_connect(graph_->pipeline(), "deep-element-added", G_CALLBACK(elementAdded), this);
  for (GstPad* pad : {frames_.pad(), sound_.pad()}) {
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_FLUSH, &MediaPipeline::countFlush, this, nullptr);
  }
  source_.areSegments ? graph_->openStreams(source) : graph_->open(source);
  applyState();
}

bool MediaPipeline::openBytes() {
  const MediaBytes::Outcome outcome = bytes_ ? bytes_->open() : MediaBytes::Outcome::failed;
  isOpen_ = true;
  if (outcome == MediaBytes::Outcome::failed) {
    const NSError error = (bytes_ ? bytes_->failure() : std::nullopt).value_or(readingError(source_.url));
    hop_.post([this, error] { events_.failed(error); });
  }
  return outcome == MediaBytes::Outcome::done;
}

GstElement* MediaPipeline::makeSource() {
  if (source_.areSegments) return makeSegmentSource(source_.bytes);
  return bytes_ ? makeBytesSource(bytes_)
                : gst_element_make_from_uri(GST_URI_SRC, uriOf(source_).c_str(), nullptr, nullptr);
}

QueueLimits MediaPipeline::queueLimits() const {
  return bytes_ ? limitsOfBytes(source_.purpose) : limitsOfFile(source_.purpose);
}

MediaGraph::Hooks MediaPipeline::graphHooks() {
  return {[this](const std::string& typeName) { return mayOpen(typeName); },
          [this](GstElement* demuxer, bool isAdaptive) { watch(demuxer, isAdaptive); },
          [this](GstStreamType type, GstCaps* caps) { undecodable(type, caps); }};
}

bool MediaPipeline::mayOpen(const std::string& typeName) {
  if (mayOpenContainer(source_, typeName)) return true;
  const bool isLocalPlaylist = source_.url.isFileURL() && isPlaylistType(typeName);
  hop_.post([this, error = isLocalPlaylist
                               ? localPlaylistError(source_.url)
                               : unrecognizedFormatError(source_.url, typeName)] { events_.failed(error); });
  return false;
}

void MediaPipeline::watch(GstElement* demuxer, bool isAdaptive) {
  buffers_.admit(demuxer, isAdaptive);
  if (!source_.isWithoutTexts) captions_.admit(demuxer);
  if (!isAdaptive) return restrictContainers(demuxer, source_.purpose);
  const auto level = static_cast<guint64>(aheadTime(source_.purpose));
  if (!source_.areSegments) g_object_set(demuxer, "max-buffering-time", level, "high-watermark-time", level, nullptr);
  std::lock_guard lock(mutex_);
  adaptiveDemuxer_ = shareObject(demuxer);
}

void MediaPipeline::elementAdded(GstBin*, GstBin*, GstElement* element, gpointer data) {
  auto* self = static_cast<MediaPipeline*>(data);
  if (factoryName(element) == "tsdemux") self->isTransportStream_ = true;
  self->demuxers_.admit(element);
  self->streaming_.admit(element);
}

GstPadProbeReturn MediaPipeline::countFlush(GstPad*, GstPadProbeInfo* info, gpointer self) {
  if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_FLUSH_STOP) {
    ++static_cast<MediaPipeline*>(self)->flushes_;
  }
  return GST_PAD_PROBE_OK;
}

void MediaPipeline::setPlaying(bool playing) {
  enqueue([playing](MediaPipeline& self) {
    self.isPlaying_ = playing;
    self.applyState();
  });
}

void MediaPipeline::applyState() {
  if (!graph_ || hasFailed_) return;
  gst_element_set_state(graph_->pipeline(), isPlaying_ ? GST_STATE_PLAYING : GST_STATE_PAUSED);
  if (!isPlaying_) clockRuns_ = false;
}

void MediaPipeline::seek(std::int64_t time) {
  enqueue([time](MediaPipeline& self) {
    if (!self.graph_) return;
    self.isPlaying_ = false;
    self.applyState();
    const std::uint64_t before = self.flushes_;
    self.hop_.post([&self, before] { self.events_.seekStarted(before); });
    constexpr int flags = GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE;
    GstEvent* seek = gst_event_new_seek(1, GST_FORMAT_TIME, static_cast<GstSeekFlags>(flags), GST_SEEK_TYPE_SET,
                                        time + self.origin_, GST_SEEK_TYPE_NONE, -1);
    if (!self.graph_->seek(seek)) {
      self.hop_.post([&self, flushed = self.flushes_ > before] { self.events_.seekRefused(flushed); });
    }
  });
}

void MediaPipeline::replaceSound() {
  sound_.replaceDevice();
  applyState();
}

void MediaPipeline::lookForSilentFailure() {
  enqueue([](MediaPipeline& self) {
    if (self.hasStreams() || !self.demuxers_.hasGivenUp()) return;
    self.hop_.post([&self] { self.events_.failed(damagedMediaError(self.source_.url)); });
  });
}

void MediaPipeline::fetchLegibleTrack(const std::string& identifier) {
  enqueue([identifier](MediaPipeline& self) { self.selectStreams(identifier); });
}

void MediaPipeline::selectStreams(const std::string& legible) {
  GstElementRef demuxer;
  std::vector<std::string> wanted;
  {
    std::lock_guard lock(mutex_);
    demuxer = shareObject(adaptiveDemuxer_.get());
    wanted = fetchedStreams_;
  }
  if (!demuxer || wanted.empty()) return;
  wanted.push_back(legible);
  GList* list = nullptr;
  for (std::string& identifier : wanted) list = g_list_append(list, identifier.data());
  // To the demuxer alone: the decoders behind it need not choose anew.
  gst_element_send_event(demuxer.get(), gst_event_new_select_streams(list));
  g_list_free(list);
}

std::optional<std::int64_t> MediaPipeline::mediaTime() const {
  GstEventRef event(gst_pad_get_sticky_event(frames_.pad(), GST_EVENT_SEGMENT, 0));
  if (!event) event.reset(gst_pad_get_sticky_event(sound_.pad(), GST_EVENT_SEGMENT, 0));
  if (!event) return std::nullopt;
  const GstSegment* segment = nullptr;
  gst_event_parse_segment(event.get(), &segment);
  if (segment->format != GST_FORMAT_TIME) return std::nullopt;

  GstClockTime running = gst_element_get_start_time(graph_->pipeline());
  const GstObjectRef<GstClock> clock(clockRuns_ ? gst_element_get_clock(graph_->pipeline()) : nullptr);
  if (clock) {
    const GstClockTime now = gst_clock_get_time(clock.get());
    const GstClockTime base = gst_element_get_base_time(graph_->pipeline());
    running = now > base ? now - base : 0;
  }
  if (!GST_CLOCK_TIME_IS_VALID(running)) return std::nullopt;
  return static_cast<std::int64_t>(running) - static_cast<std::int64_t>(segment->base) +
         static_cast<std::int64_t>(segment->offset) + static_cast<std::int64_t>(segment->time) - origin_;
}

std::optional<GstClockTime> MediaPipeline::bufferedEnd() const {
  const auto parsed = fromOrigin(buffers_.bufferedEnd());
  return parsed && GST_CLOCK_TIME_IS_VALID(*parsed) && bytes_ ? *parsed + bytes_->timeAhead() : parsed;
}

std::optional<GstClockTime> MediaPipeline::fromOrigin(std::optional<GstClockTime> time) const {
  if (!time || !GST_CLOCK_TIME_IS_VALID(*time)) return time;
  const auto origin = static_cast<GstClockTime>(std::max<std::int64_t>(origin_, 0));
  return *time - std::min(*time, origin);
}
