#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/dispatch/RunLoop.h"

// The chief tool of the player's tests: media that behave as a test says, on the run loop's clock.
//
//   ScriptedMedia media;                                  // AVPlayer and its fellows now play scripted media
//   media.script("http://example.com/ad.mp4").duration = 15;
//   … make items and players of those URLs …
//   loop.advance(3s);                                     // position follows the clock, times the rate
//   media.engine("http://example.com/ad.mp4")->fail(…);   // or drive a living engine by hand
//
// It keeps MediaEngine's contract to the letter: nothing is reported from inside a call, every report is a turn of its
// own, nothing comes after a failure, and an engine may be destroyed from inside its own reports. All times are
// seconds.

// How a medium behaves. Set before the engine is made; an engine takes a copy.
struct MediaScript {
  double duration = 60;
  bool live = false;  // endless; the duration is indefinite
  std::vector<MediaTrack> tracks = {{MediaTrack::Kind::video, "video", {}, {}, 25, 16, 9}};

  double loadDelay = 0.05;               // from load() to ready, or to the failure to load
  std::optional<NSError> loadFailure{};  // fails instead of becoming ready
  bool cannotBeMade = false;             // making the engine throws
  bool neverLoads = false;               // silence: fails with AVErrorNoDataReceived at the silence limit

  struct Failure {
    double position;
    NSError error;
  };
  std::optional<Failure> failure{};  // fails when the position gets there

  struct Stall {
    double position;
    double seconds;  // longer than the silence limit: fails instead of going on
  };
  std::vector<Stall> stalls{};  // data run out at the position; each happens once

  double bufferedLead = 30;  // how far ahead of the position data are there, outside a stall
  double seekDelay = 0;      // from seek() to its being carried out

  std::uint32_t colour = 0x00808080;  // of the pictures, 0x00RRGGBB
};

// What was asked of an engine, and what it did. Readable after the engine is gone.
struct MediaEngineLog {
  explicit MediaEngineLog(MediaSource of) : source(std::move(of)) {}

  const MediaSource source;
  double start = 0;           // where it was to begin
  std::vector<double> seeks;  // targets as given, superseded ones included
  int flushes = 0;            // seeks that were carried out
  std::vector<double> rates;  // every setRate()
  bool muted = false;
  std::optional<std::string> legibleTrack;
};

class ScriptedMedia;

// One scripted engine. Made by the factory; tests reach it through ScriptedMedia::engine().
//
// Pictures are of one colour, of the first video track's size. One is presented when the engine is ready, after each
// seek and to a new sink; none while playing.
class ScriptedMediaEngine final : public MediaEngine {
 public:
  ScriptedMediaEngine(ScriptedMedia* media, MediaScript script, std::shared_ptr<MediaEngineLog> log);
  ~ScriptedMediaEngine() override;

  // By hand, at any time. Reports come on later turns.

  void fail(NSError error);
  // Data run out until resumeData(); the silence limit applies.
  void stall() { setStalled(true); }
  void resumeData() { setStalled(false); }
  // Says whether the buffer is empty, until the next seek, and how far it reaches.
  void setBuffering(bool empty, double lead);
  void setDuration(double seconds);
  void setTracks(std::vector<MediaTrack> tracks);
  // Says that this text is due now, or none.
  void setCaption(std::optional<MediaCaption> due);
  // Puts the position there without a seek, as if the time between had been played; while playing, the end is reported.
  void skipTo(double seconds);

  const MediaEngineLog& log() const { return *log_; }

  void setEvents(Events events) override { events_ = std::move(events); }
  void load(const CMTime& start) override;
  void setRate(double rate) override;
  void seek(const CMTime& time, SeekCompletion completion) override;
  CMTime position() const override;
  CMTime duration() const override;
  bool isLive() const override { return script_.live; }
  std::vector<CMTimeRange> bufferedRanges() const override;
  bool isBufferEmpty() const override { return stalled_ || saysEmpty_; }
  bool isLikelyToKeepUp() const override { return ready_ && !isBufferEmpty(); }
  std::vector<MediaTrack> tracks() const override;
  void selectLegibleTrack(const std::optional<std::string>& identifier) override { log_->legibleTrack = identifier; }
  void setMuted(bool muted) override { log_->muted = muted; }
  void setFrameSink(std::shared_ptr<VideoFrameSink> sink) override;

 private:
  using Nanoseconds = std::chrono::nanoseconds;
  using Action = std::function<void()>;
  struct Seek {
    Nanoseconds target;
    SeekCompletion completion;
  };
  friend class ScriptedMedia;

  // Posts `report` as a turn of its own; dropped when the engine has failed or gone by then.
  void report(std::function<void()> report);
  // The same for one of `events_`.
  void tell(const std::function<void()>& event);
  void schedule(RunLoop::TimerToken& timer, Nanoseconds delay, Action action);
  static void cancel(RunLoop::TimerToken& timer);

  bool moves() const;
  Nanoseconds end() const;
  // Where playing has come to, whatever a seek under way will do.
  Nanoseconds played() const;
  // Fixes the position at this moment, does `change`, and plans what comes next on the new course.
  void change(const std::function<void()>& change);
  void plan();
  void planSilence();
  void present();
  void setStalled(bool stalled);

  // What the plan brings.
  void becomeReady();
  void reachStall();
  void reachEnd();
  void carryOutSeek();

  ScriptedMedia* media_;
  MediaScript script_;
  std::shared_ptr<MediaEngineLog> log_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
  Events events_;
  std::shared_ptr<VideoFrameSink> sink_;

  bool loading_ = false;
  bool ready_ = false;
  bool failing_ = false;  // nothing moves any more; the report is on its way
  bool failed_ = false;
  bool stalled_ = false;
  bool ended_ = false;
  bool saysEmpty_ = false;
  double rate_ = 0;
  std::optional<Seek> seek_;
  Nanoseconds anchorPosition_{0};
  Nanoseconds anchorTime_;
  RunLoop::TimerToken loadTimer_ = 0, planTimer_ = 0, seekTimer_ = 0, silenceTimer_ = 0, stallTimer_ = 0;
};

// Installs scripted engines as what MediaEngine::make() makes, while it lives. One at a time; a VirtualRunLoop (or a
// PlainRunLoop, in real time) must be installed before it and outlive it.
class ScriptedMedia {
 public:
  ScriptedMedia();
  ScriptedMedia(const ScriptedMedia&) = delete;
  ScriptedMedia& operator=(const ScriptedMedia&) = delete;
  ~ScriptedMedia();

  // How the medium of `url` behaves, to be changed at will before its engine is made.
  MediaScript& script(const std::string& url) { return scripts_.try_emplace(url, otherwise_).first->second; }
  // How media behave that have no script of their own.
  MediaScript& otherwise() { return otherwise_; }

  // The latest living engine of the URL, or of all; null when there is none.
  ScriptedMediaEngine* engine(const std::string& url) const;
  ScriptedMediaEngine* engine() const { return engines_.empty() ? nullptr : engines_.back(); }
  int aliveEngines() const { return static_cast<int>(engines_.size()); }
  // One for each engine that was ever made, of the URL or of all, in that order.
  std::vector<std::shared_ptr<const MediaEngineLog>> logs(const std::string& url) const;
  const std::vector<std::shared_ptr<const MediaEngineLog>>& logs() const { return logs_; }

 private:
  friend class ScriptedMediaEngine;
  std::map<std::string, MediaScript> scripts_;
  MediaScript otherwise_;
  std::vector<ScriptedMediaEngine*> engines_;
  std::vector<std::shared_ptr<const MediaEngineLog>> logs_;
};
