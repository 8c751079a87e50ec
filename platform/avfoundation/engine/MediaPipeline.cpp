#include "platform/avfoundation/engine/MediaPipeline.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/DecoderDrain.h"
#include "platform/avfoundation/engine/GStreamerLibrary.h"
#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/avfoundation/engine/SourceSetup.h"
#include "platform/avfoundation/engine/StreamTracks.h"
#include "platform/dispatch/Weakly.h"

namespace {

// How much waits between the network and the decoders, and the shares of it at which playback may start and must stop.
struct Buffering {
  gint64 duration;
  gint bytes;
  double highWatermark;
  double lowWatermark;
};
constexpr Buffering programmeBuffering{40 * GST_SECOND, 192 * 1024 * 1024, 0.05, 0.01};
constexpr Buffering advertisementBuffering{20 * GST_SECOND, 48 * 1024 * 1024, 0.02, 0.005};

const Buffering& bufferingFor(MediaPurpose purpose) {
  return purpose == MediaPurpose::programme ? programmeBuffering : advertisementBuffering;
}

std::string uriOf(const NSURL& url) {
  if (!url.isFileURL()) return url.absoluteString();
  const GTextRef uri(g_filename_to_uri(url.path().c_str(), nullptr, nullptr));
  return uri ? uri.get() : url.absoluteString();
}

bool offers(GstStreamCollection* collection, int types) {
  for (guint i = 0; i < gst_stream_collection_get_size(collection); ++i) {
    if (gst_stream_get_stream_type(gst_stream_collection_get_stream(collection, i)) & types) return true;
  }
  return false;
}

bool offersPicturesOrSound(GstStreamCollection* collection) {
  return gst_stream_collection_get_size(collection) == 0 ||
         offers(collection, GST_STREAM_TYPE_VIDEO | GST_STREAM_TYPE_AUDIO);
}

// Where playbin keeps decoded pictures in front of the sink. One is enough: the decoders have more on the way.
constexpr std::string_view pictureQueue = "vqueue";

// Texts are picked up before the decoders, so playbin is not told of them.
constexpr const char* playbinFlags = "video+audio+buffering+deinterlace";

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
      gate_(source_,
            [this](const std::string& typeName) {
              const bool isLocalPlaylist = source_.url.isFileURL() && ContainerGate::isPlaylist(typeName);
              hop_.post([this, error = isLocalPlaylist ? localPlaylistError(source_.url)
                                                       : unrecognizedFormatError(source_.url, typeName)] {
                events_.failed(error);
              });
            }),
      captions_([this](const std::string& track, CaptionCue cue) {
        hop_.post([this, track, cue = std::move(cue)] { events_.captionFound(track, cue); });
      }) {}

MediaPipeline::~MediaPipeline() {
  if (!playbin_) return;
  if (!gate_.closeUnlessOpened()) settle();
  ends_.release();
  gate_.close();
  gst_element_set_state(playbin_.get(), GST_STATE_NULL);
  const GstBusRef bus(gst_element_get_bus(playbin_.get()));
  gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
  g_signal_handlers_disconnect_by_data(playbin_.get(), this);
}

// playbin3 1.22 deadlocks or touches freed memory when it is taken down while it opens, seeks or ends. Nobody waits for
// this, so it gets the time to come to rest; a pipeline that waits for its server never does. One that has failed on
// its way to PAUSED must not be sent there again: playbin3 would forget what it has connected and connect it once more.
void MediaPipeline::settle() {
  if (isPlaying_) gst_element_set_state(playbin_.get(), GST_STATE_PAUSED);
  const auto rests = [this](GstClockTime limit) {
    return gst_element_get_state(playbin_.get(), nullptr, nullptr, limit) != GST_STATE_CHANGE_ASYNC;
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
  const auto fail = [this](const std::string& missing) {
    hop_.post([this, missing] { events_.failed(missingLibraryError(missing)); });
  };
  if (const auto missing = loadGStreamer()) return fail(*missing);
  GstElement* playbin = gst_element_factory_make("playbin3", nullptr);
  GstElement* pictures = frames_.makeElement();
  GstElement* sound = sound_.makeElement(settings_);
  if (!playbin || !pictures || !sound) return fail("one of GStreamer's elements");
  playbin_ = shareObject(playbin);

  const Buffering& buffering = bufferingFor(source_.purpose);
  gst_util_set_object_arg(G_OBJECT(playbin), "flags", playbinFlags);
  g_object_set(playbin, "uri", uriOf(source_.url).c_str(), "video-sink", pictures, "audio-sink", sound,
               "buffer-duration", buffering.duration, "buffer-size", buffering.bytes, nullptr);
  PipelineListener::connect(playbin, this);
  drainDecodersEarly(playbin);
  ends_.watchDecoders(playbin);
  g_signal_connect(playbin, "deep-element-added", G_CALLBACK(elementAdded), this);
  g_signal_connect(playbin, "source-setup", G_CALLBACK(sourceSetUp), this);
  for (GstPad* pad : {frames_.pad(), sound_.pad()}) {
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_FLUSH, &MediaPipeline::countFlush, this, nullptr);
  }
  hop_.post([this] { events_.opened(); });
  applyState();
}

void MediaPipeline::elementAdded(GstBin*, GstBin* subBin, GstElement* element, gpointer data) {
  auto* self = static_cast<MediaPipeline*>(data);
  self->configureBuffering(element);
  if (GST_OBJECT_NAME(element) == pictureQueue) g_object_set(element, "max-size-buffers", 1u, nullptr);
  if (factoryName(element) == "tsdemux") self->isTransportStream_ = true;
  self->gate_.admit(element);
  self->starts_.admit(element);
  self->demuxers_.admit(element);
  self->ends_.admit(element, GST_ELEMENT_CAST(subBin));
  self->buffers_.admit(element, GST_ELEMENT_CAST(subBin));
  self->captions_.admit(element);
}

void MediaPipeline::configureBuffering(GstElement* element) {
  const Buffering& buffering = bufferingFor(source_.purpose);
  if (factoryName(element) == "urisourcebin") {
    g_object_set(element, "high-watermark", buffering.highWatermark, "low-watermark", buffering.lowWatermark, nullptr);
  } else if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), "max-buffering-time")) {
    const auto level = static_cast<guint64>(buffering.duration);
    g_object_set(element, "max-buffering-time", level, "high-watermark-time", level, nullptr);
    std::lock_guard lock(mutex_);
    adaptiveDemuxer_ = shareObject(element);
  }
}

void MediaPipeline::sourceSetUp(GstElement*, GstElement* source, gpointer self) {
  auto* pipeline = static_cast<MediaPipeline*>(self);
  setUpSource(source, pipeline->source_.url);
  pipeline->ranges_.admit(source);
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
  if (!playbin_ || hasFailed_) return;
  gst_element_set_state(playbin_.get(), isPlaying_ ? GST_STATE_PLAYING : GST_STATE_PAUSED);
  if (!isPlaying_) clockRuns_ = false;
}

void MediaPipeline::seek(std::int64_t time) {
  enqueue([time](MediaPipeline& self) {
    if (!self.playbin_) return;
    self.isPlaying_ = false;
    self.applyState();
    const std::uint64_t before = self.flushes_;
    self.hop_.post([&self, before] { self.events_.seekStarted(before); });
    constexpr int flags = GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE;
    if (!gst_element_seek_simple(self.playbin_.get(), GST_FORMAT_TIME, static_cast<GstSeekFlags>(flags),
                                 time + self.origin_)) {
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

void MediaPipeline::prerolled() {
  enqueue([flushes = flushes_.load()](MediaPipeline& self) {
    if (!std::exchange(self.wasReady_, true) && self.isTransportStream_ && !self.buffers_.isAdaptive()) {
      self.origin_ = self.mediaTime().value_or(0);
    }
    self.refreshFacts();
    if (flushes == 0) self.failWithoutPictures();
    self.hop_.post([&self, flushes] { self.events_.prerolled(flushes); });
  });
}

void MediaPipeline::failWithoutPictures() {
  std::lock_guard lock(mutex_);
  if (missingVideoCodec_.empty() || !streams_ || offers(streams_.get(), GST_STREAM_TYPE_VIDEO)) return;
  hop_.post([this, codec = missingVideoCodec_] { events_.failed(missingDecoderError(source_.url, codec)); });
}

void MediaPipeline::refreshFacts() {
  if (!playbin_) return;
  MediaFacts facts;
  gint64 duration = -1;
  if (gst_element_query_duration(playbin_.get(), GST_FORMAT_TIME, &duration) && duration >= 0) {
    facts.duration = duration;
  }
  const GstQueryRef seeking(gst_query_new_seeking(GST_FORMAT_TIME));
  if (gst_element_query(playbin_.get(), seeking.get())) {
    gboolean isSeekable = TRUE;
    gint64 start = 0, end = -1;
    gst_query_parse_seeking(seeking.get(), nullptr, &isSeekable, &start, &end);
    facts.isSeekable = isSeekable;
    facts.seekableStart = std::max<gint64>(start, 0);
    if (end >= 0) facts.seekableEnd = end;
  }
  facts.saysItsLength = !isTransportStream_ && !buffers_.isAdaptive();
  GstObjectRef<GstStreamCollection> streams;
  {
    std::lock_guard lock(mutex_);
    streams = shareObject(streams_.get());
  }
  if (streams) facts.tracks = tracksFromCollection(streams.get());
  hop_.post([this, facts = std::move(facts)] { events_.factsChanged(facts); });
}

void MediaPipeline::ended() {
  hop_.post([this] { events_.ended(); });
}

void MediaPipeline::failed(GstMessage* message) {
  if (sound_.contains(GST_MESSAGE_SRC(message))) return enqueue(&MediaPipeline::replaceSound);
  hasFailed_ = true;
  MediaErrorContext context{.httpStatus = httpStatus_};
  {
    std::lock_guard lock(mutex_);
    context.missingCodec = missingCodec_;
  }
  hop_.post([this, error = mediaErrorFromMessage(message, source_.url, context)] { events_.failed(error); });
}

void MediaPipeline::buffered(bool isFilled) {
  std::lock_guard lock(mutex_);  // until it is posted: the last word must be the last event
  if (std::exchange(isFilled_, isFilled) == isFilled) return;
  hop_.post([this, isFilled] { events_.buffered(isFilled); });
}

void MediaPipeline::durationChanged() {
  enqueue(&MediaPipeline::refreshFacts);
}

void MediaPipeline::streamsFound(GstStreamCollection* collection) {
  std::string missingCodec;
  {
    std::lock_guard lock(mutex_);
    streams_ = shareObject(collection);
    missingCodec = missingCodec_;
  }
  // Nothing would ever come out of it, and nobody would say so.
  if (!offersPicturesOrSound(collection)) {
    hop_.post([this, missingCodec] { events_.failed(unrecognizedFormatError(source_.url, missingCodec)); });
  }
  enqueue(&MediaPipeline::refreshFacts);
}

void MediaPipeline::streamsSelected(GstElement* source, const std::vector<GstStream*>& streams) {
  std::lock_guard lock(mutex_);
  if (source != adaptiveDemuxer_.get()) return;
  fetchedStreams_.clear();
  for (GstStream* stream : streams) {
    if (gst_stream_get_stream_type(stream) & GST_STREAM_TYPE_TEXT) continue;
    fetchedStreams_.emplace_back(gst_stream_get_stream_id(stream));
  }
}

void MediaPipeline::clockLost() {
  enqueue([](MediaPipeline& self) {
    if (!self.isPlaying_) return;
    self.isPlaying_ = false;
    self.applyState();
    self.isPlaying_ = true;
    self.applyState();
  });
}

void MediaPipeline::serverAnswered(unsigned status, const GstStructure* message) {
  httpStatus_ = status;
  ranges_.noteAnswer(message);
}

void MediaPipeline::decoderMissing(const std::string& codec, bool isVideo) {
  std::lock_guard lock(mutex_);
  missingCodec_ = codec;
  if (isVideo) missingVideoCodec_ = codec;
}

std::optional<std::int64_t> MediaPipeline::mediaTime() const {
  GstEventRef event(gst_pad_get_sticky_event(frames_.pad(), GST_EVENT_SEGMENT, 0));
  if (!event) event.reset(gst_pad_get_sticky_event(sound_.pad(), GST_EVENT_SEGMENT, 0));
  if (!event) return std::nullopt;
  const GstSegment* segment = nullptr;
  gst_event_parse_segment(event.get(), &segment);
  if (segment->format != GST_FORMAT_TIME) return std::nullopt;

  GstClockTime running = gst_element_get_start_time(playbin_.get());
  const GstObjectRef<GstClock> clock(clockRuns_ ? gst_element_get_clock(playbin_.get()) : nullptr);
  if (clock) {
    const GstClockTime now = gst_clock_get_time(clock.get());
    const GstClockTime base = gst_element_get_base_time(playbin_.get());
    running = now > base ? now - base : 0;
  }
  if (!GST_CLOCK_TIME_IS_VALID(running)) return std::nullopt;
  return static_cast<std::int64_t>(running) - static_cast<std::int64_t>(segment->base) +
         static_cast<std::int64_t>(segment->offset) + static_cast<std::int64_t>(segment->time) - origin_;
}

std::optional<GstClockTime> MediaPipeline::fromOrigin(std::optional<GstClockTime> time) const {
  if (!time || !GST_CLOCK_TIME_IS_VALID(*time)) return time;
  const auto origin = static_cast<GstClockTime>(std::max<std::int64_t>(origin_, 0));
  return *time - std::min(*time, origin);
}
