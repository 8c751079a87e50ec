#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/avfoundation/engine/CaptionPresenter.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/avfoundation/engine/MediaPipeline.h"
#include "platform/avfoundation/engine/SilenceWatch.h"

// The product's engine, on GStreamer. This class decides what the pipeline should do; MediaPipeline does it.
//
// What it holds to: the pipeline plays only when the rate says so, the media is ready, no seek is under way, the queues
// are filled and the end has not come. One seek is under way at a time, and the last one asked for meanwhile is next.
class GStreamerEngine final : public MediaEngine {
 public:
  explicit GStreamerEngine(const MediaSource& source);
  ~GStreamerEngine() override;

  void setEvents(Events events) override { events_ = std::make_shared<const Events>(std::move(events)); }
  void load(const CMTime& start) override;
  void setRate(double rate) override;
  void seek(const CMTime& time, SeekCompletion completion) override;
  CMTime position() const override;
  CMTime duration() const override;
  bool isLive() const override;
  std::vector<CMTimeRange> bufferedRanges() const override;
  bool isBufferEmpty() const override;
  bool isLikelyToKeepUp() const override;
  std::vector<MediaTrack> tracks() const override { return facts_.tracks; }
  void selectLegibleTrack(const std::optional<std::string>& identifier) override;
  void setMuted(bool muted) override;
  void setFrameSink(std::shared_ptr<VideoFrameSink> sink) override;

  // To be asked now and then: false when since the last time a demuxer or a decoder has stood still with what it was
  // given. Waiting for bytes, for the time of a picture or for a rate is none of that.
  bool hasMoved() {
    const bool moved = !pipeline_ || pipeline_->hasMoved();
    return moved || (isReady_ && rate_ == 0 && !current_);
  }

 private:
  // A seek that was asked for, or the start. Only the newest waits; the one under way is marked by its flush count.
  struct Seek {
    std::int64_t target = 0;  // nanoseconds, of what can be reached
    CMTime time;              // as asked for
    std::int64_t origin = 0;  // where the pipeline stays when it refuses
    bool hadEnded = false;    // the same
    SeekCompletion completion;
    std::optional<std::uint64_t> flushesBefore = std::nullopt;  // set when it has begun to flush
    int attempts = 0;
    bool isAtLast = false;     // none was found at the target, and the last of all is sought
    bool isProlonged = false;  // the media have turned out to be longer on the way
  };

  MediaPipeline::Events pipelineEvents();
  void prerolled(std::uint64_t flushes);
  void becomeReady();
  void ended();
  // To be asked when all data have come: they end long before the container says.
  bool isCutOff() const;
  void fail(const NSError& error);
  void buffered(bool isFilled);
  void factsChanged(MediaFacts facts);
  void captionsFound(CaptionFeed::Found cues);
  void updateCaptions();

  void begin(Seek seek);
  void sendSeek(std::int64_t time);
  // The pipeline has prerolled where current_ sent it: with a picture, or to look further back for one.
  void arrived();
  // Tells of its end, and goes on to the next one.
  void finishSeek(bool finished);
  void complete(SeekCompletion& completion, bool finished);
  std::int64_t reachable(const CMTime& time) const;
  // The last picture may begin before the end of the media, or the sound may be longer than the pictures.
  std::int64_t pictureTime(const Seek& seek) const;

  // Brings the pipeline, the watches and the captions in line with what is wanted. After every change.
  void apply();
  // Looks after what no event tells: how far the media is here, and whether it was given up without a word.
  void poll();
  std::int64_t mediaTime() const;
  bool hasVideo() const;
  bool isElsewhere() const { return !isReady_ || current_; }
  void connectSink();
  // Hands an event to the host on a turn of its own; none after `failed`.
  template <class Function, class... Arguments>
  void report(Function Events::*event, Arguments... arguments);

  const MediaSource source_;
  std::shared_ptr<const Events> events_ = std::make_shared<const Events>();
  std::shared_ptr<MediaPipeline> pipeline_;
  MainHop hop_;  // for what is posted to itself

  bool isLoaded_ = false;
  bool isOpen_ = false;
  bool hasPrerolled_ = false;  // anywhere in the media
  bool isReady_ = false;       // has prerolled where it is to begin
  bool hasFailed_ = false;     // pipeline_ is gone
  bool hasEnded_ = false;
  bool isFilled_ = true;
  bool pipelinePlays_ = false;
  double rate_ = 0;
  std::shared_ptr<VideoFrameSink> frameSink_;
  bool isSinkKept_ = false;  // frameSink_ is to be connected when the pictures that come are of the place asked for
  MediaFacts facts_;
  std::optional<Seek> current_;
  std::optional<Seek> next_;
  mutable std::int64_t floor_ = 0;  // the position never falls below what it was, but for a seek
  std::optional<GstClockTime> lastBufferedEnd_;
  bool wasFull_ = false;
  RunLoop::TimerToken pollTimer_ = 0;
  RunLoop::TimerToken overdueTimer_ = 0;  // of a seek: when current_ takes too long, next_ begins in its place
  SilenceWatch silence_;
  SilenceWatch overtime_;  // of an ad, from its first picture on
  CaptionPresenter captions_;
};
