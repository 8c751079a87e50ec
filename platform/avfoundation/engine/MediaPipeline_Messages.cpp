// What a pipeline hears from its listener, on the library's threads, and what its engine is told of it.
#include <utility>

#include "platform/avfoundation/bytes/ServerErrors.h"
#include "platform/avfoundation/engine/BytesSource.h"
#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/avfoundation/engine/MediaPipeline.h"
#include "platform/avfoundation/engine/SegmentSource.h"
#include "platform/avfoundation/engine/StreamChoice.h"
#include "platform/avfoundation/engine/StreamTracks.h"

void MediaPipeline::prerolled() {
  enqueue([flushes = flushes_.load()](MediaPipeline& self) {
    if (!std::exchange(self.wasReady_, true) && self.isTransportStream_ && !self.buffers_.isAdaptive()) {
      self.origin_ = self.mediaTime().value_or(0);
    }
    self.refreshFacts();
    self.hop_.post([&self, flushes] { self.events_.prerolled(flushes); });
  });
}

void MediaPipeline::refreshFacts() {
  if (!graph_) return;
  GstObjectRef<GstStreamCollection> streams;
  {
    std::lock_guard lock(mutex_);
    streams = shareObject(streams_.get());
  }
  MediaFacts facts = factsOf(graph_->pipeline(), streams.get());
  const std::string pictures = streams ? chosenStream(streams.get(), GST_STREAM_TYPE_VIDEO) : "";
  if (auto track = captions_.trackInPicturesOf(pictures)) facts.tracks.push_back(std::move(*track));
  if (bytes_) bytes_->setDuration(facts.duration.value_or(0));
  facts.saysItsLength = !isTransportStream_ && !buffers_.isAdaptive();
  hop_.post([this, facts = std::move(facts)] { events_.factsChanged(facts); });
}

void MediaPipeline::undecodable(GstStreamType type, GstCaps* caps) {
  {
    std::lock_guard lock(mutex_);
    const bool isWhole = type == GST_STREAM_TYPE_AUDIO && streams_ && offers(streams_.get(), GST_STREAM_TYPE_VIDEO);
    if (isWhole) return;  // pictures alone are a programme, sound without its pictures is none
  }
  hop_.post([this, error = missingDecoderError(source_.url, codecDescription(caps))] { events_.failed(error); });
}

void MediaPipeline::ended() {
  if (const auto failure = source_.areSegments ? bytes_->failure() : std::nullopt) {
    hop_.post([this, error = *failure] { events_.failed(error); });
    return;
  }
  hop_.post([this] { events_.ended(); });
}

void MediaPipeline::failed(GstMessage* message) {
  if (sound_.contains(GST_MESSAGE_SRC(message))) return enqueue(&MediaPipeline::replaceSound);
  hasFailed_ = true;
  const bool isOfBytes = isBytesSource(GST_MESSAGE_SRC(message)) || isSegmentSource(GST_MESSAGE_SRC(message));
  if (const auto failure = isOfBytes ? bytes_->failure() : std::nullopt) {
    hop_.post([this, error = *failure] { events_.failed(error); });
    return;
  }
  std::string missingCodec;
  {
    std::lock_guard lock(mutex_);
    missingCodec = missingCodec_;
  }
  const NSError error = bytes_ && bytes_->isEmpty() ? emptyMediaError(source_.url)
                                                    : mediaErrorFromMessage(message, source_.url, missingCodec);
  hop_.post([this, error] { events_.failed(error); });
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
  std::string missingCodec, missingVideoCodec;
  {
    std::lock_guard lock(mutex_);
    streams_ = shareObject(collection);
    missingCodec = missingCodec_;
    missingVideoCodec = missingVideoCodec_;
  }
  const auto fail = [this](const NSError& error) { hop_.post([this, error] { events_.failed(error); }); };
  const bool isEmpty = gst_stream_collection_get_size(collection) == 0;
  if (!isEmpty && !offers(collection, GST_STREAM_TYPE_VIDEO | GST_STREAM_TYPE_AUDIO)) {
    fail(unrecognizedFormatError(source_.url, missingCodec));
  } else if (!missingVideoCodec.empty() && !offers(collection, GST_STREAM_TYPE_VIDEO)) {
    fail(missingDecoderError(source_.url, missingVideoCodec));
  } else {
    graph_->expect(collection);
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

void MediaPipeline::decoderMissing(const std::string& codec, bool isVideo) {
  std::lock_guard lock(mutex_);
  missingCodec_ = codec;
  if (isVideo) missingVideoCodec_ = codec;
}
