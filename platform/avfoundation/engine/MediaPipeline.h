#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/engine/BufferWatch.h"
#include "platform/avfoundation/engine/CaptionFeed.h"
#include "platform/avfoundation/engine/DemuxerWatch.h"
#include "platform/avfoundation/engine/FrameOutlet.h"
#include "platform/avfoundation/engine/MainHop.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/avfoundation/engine/MediaFacts.h"
#include "platform/avfoundation/engine/MediaGraph.h"
#include "platform/avfoundation/engine/PipelineListener.h"
#include "platform/avfoundation/engine/ReadAhead.h"
#include "platform/avfoundation/engine/SoundOutlet.h"
#include "platform/avfoundation/engine/StreamingWatch.h"
#include "platform/dispatch/Dispatch.h"

// One pipeline, a MediaGraph with everything that watches it, from its making to its end.
//
// What changes the pipeline (open, setPlaying, seek, close, …) may be called on the main thread only and returns at
// once: it is carried out in order on a queue of the pipeline's own, because each of these can wait for a device or a
// server. What happens comes back as events on the main queue. Queries answer at once from any thread.
class MediaPipeline final : public std::enable_shared_from_this<MediaPipeline>, private PipelineListener {
 public:
  // All on the main queue, in order.
  struct Events {
    // The media is being read; what comes before is the machine's time and not the server's.
    std::function<void()> opened;
    // Every sink has what it is to show next. `flushes` counts the seeks carried out so far.
    std::function<void(std::uint64_t flushes)> prerolled;
    // A seek is about to flush the pipeline; a preroll that counts more flushes than this one is its own.
    std::function<void(std::uint64_t flushes)> seekStarted;
    // It stays where it is, or begins anew at the start when it was flushed all the same.
    std::function<void(bool flushed)> seekRefused;
    std::function<void()> ended;
    std::function<void(NSError)> failed;
    std::function<void(bool isFilled)> buffered;
    std::function<void(MediaFacts)> factsChanged;
    std::function<void(CaptionFeed::Found)> captionsFound;
  };

  MediaPipeline(MediaSource source, const MediaEngineSettings& settings, Events events);
  ~MediaPipeline() override;

  void open();
  void setPlaying(bool playing);
  // Pauses, and goes to exactly `time`.
  void seek(std::int64_t time);
  // Fetches the text rendition of a playlist that has this track; other media deliver all of their texts anyway.
  void fetchLegibleTrack(const std::string& identifier);
  // Looks whether the media has been given up without an error; to be asked now and then before the first preroll.
  void lookForSilentFailure();
  // Asks for the facts again: what comes piece by piece gets longer without a word.
  void lookForFacts() { enqueue(&MediaPipeline::refreshFacts); }
  // False when its threads stand still since the last call (StreamingWatch). Main thread.
  bool hasMoved() { return streaming_.hasMoved(); }
  // The last call on the main thread: no event comes any more, and the pipeline stops and goes when it can.
  static void close(std::shared_ptr<MediaPipeline> pipeline);

  FrameOutlet& frames() { return frames_; }
  SoundOutlet& sound() { return sound_; }

  // The media time that is due now; nothing before the first preroll and while a flush is under way.
  std::optional<std::int64_t> mediaTime() const;
  // See BufferWatch; in media time.
  std::optional<GstClockTime> bufferedEnd() const;
  std::optional<GstClockTime> reachedEnd() const { return fromOrigin(buffers_.reachedEnd()); }
  std::optional<std::int64_t> lastPicture() const { return fromOrigin(buffers_.lastPicture()); }
  // The time of cues that is due at a media time.
  std::int64_t cueTime(std::int64_t mediaTime) const { return mediaTime + origin_; }
  // As many bytes are here as there is room for, or as there are.
  bool isFull() const { return bytes_ && bytes_->isFull(); }

 private:
  void prerolled() override;
  void ended() override;
  void failed(GstMessage* error) override;
  void buffered(bool isFilled) override;
  void durationChanged() override;
  void streamsFound(GstStreamCollection* collection) override;
  void streamsSelected(GstElement* source, const std::vector<GstStream*>& streams) override;
  void clockStarted() override { clockRuns_ = true; }
  void clockLost() override;
  void decoderMissing(const std::string& codec, bool isVideo) override;

  // Runs a member function on the pipeline's queue unless the pipeline has been closed. Any thread.
  void enqueue(std::function<void(MediaPipeline&)> operation);

  // On the pipeline's queue.
  void build();
  void settle();
  bool hasStreams() const;
  void applyState();
  void selectStreams(const std::string& legible);
  void replaceSound();
  void refreshFacts();

  // Streaming threads, called by the graph.
  bool mayOpen(const std::string& typeName);
  void watch(GstElement* demuxer, bool isAdaptive);
  void undecodable(GstStreamType type, GstCaps* caps);

  std::optional<GstClockTime> fromOrigin(std::optional<GstClockTime> time) const;

  static void elementAdded(GstBin* bin, GstBin* subBin, GstElement* element, gpointer self);
  static GstPadProbeReturn countFlush(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  GstElement* makeSource();
  QueueLimits queueLimits() const;
  // Waits for the resource's answer. False when it has failed, or nobody wants it any more.
  bool openBytes();
  MediaGraph::Hooks graphHooks();

  const MediaSource source_;
  const MediaEngineSettings settings_;
  const Events events_;
  dispatch_queue_t queue_;  // nobody asks for it once hop_ is closed
  MainHop hop_;

  FrameOutlet frames_;
  SoundOutlet sound_;
  DemuxerWatch demuxers_;
  StreamingWatch streaming_;
  const std::shared_ptr<ReadAhead> bytes_;  // nil for a file
  std::atomic<bool> isOpen_{false};         // bytes_ are
  BufferWatch buffers_;
  CaptionFeed captions_;

  std::unique_ptr<MediaGraph> graph_;  // set once, on the queue, before anything prerolls
  bool wasReady_ = false;              // on the queue
  bool isPlaying_ = false;             // what the pipeline was last told; on the queue
  std::atomic<bool> clockRuns_{false};
  std::atomic<bool> hasFailed_{false};  // its state is left alone
  std::atomic<std::uint64_t> flushes_{0};
  // A transport stream counts from its first time stamp, which is seldom 0; media time begins there.
  std::atomic<bool> isTransportStream_{false};
  std::atomic<std::int64_t> origin_{0};

  mutable std::mutex mutex_;  // guards what follows
  bool isFilled_ = true;
  GstObjectRef<GstStreamCollection> streams_;
  GstElementRef adaptiveDemuxer_;
  std::string missingCodec_;                 // one that nothing here decodes, for people
  std::string missingVideoCodec_;            // the same, of pictures
  std::vector<std::string> fetchedStreams_;  // pictures and sound that the adaptive demuxer delivers
};
