#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/avfoundation/engine/CaptionTimeline.h"
#include "platform/dispatch/RunLoop.h"

// Says when the text of the chosen legible track changes, by the media's own time; no more often than pictures do. Main
// thread.
class CaptionPresenter {
 public:
  // `changed` is called within the functions below and by timers.
  explicit CaptionPresenter(std::function<void(std::optional<MediaCaption>)> changed);
  CaptionPresenter(const CaptionPresenter&) = delete;
  CaptionPresenter& operator=(const CaptionPresenter&) = delete;
  ~CaptionPresenter();

  void add(const std::string& track, CaptionCue cue) { timeline_.add(track, std::move(cue)); }
  // nil: no track, and no text.
  void select(std::optional<std::string> track) { track_ = std::move(track); }
  // Takes note of the time that is due, in nanoseconds, and whether it runs on; asks `now` again when a text begins or
  // ends. To be called after each of the above, and when time has jumped, stopped or started.
  void update(std::function<std::int64_t()> now, bool runs);

 private:
  void present();
  void presentIn(RunLoop::Duration duration);

  const std::function<void(std::optional<MediaCaption>)> changed_;
  CaptionTimeline timeline_;
  std::optional<std::string> track_;
  std::optional<MediaCaption> shown_;
  std::function<std::int64_t()> now_;
  bool runs_ = false;
  RunLoop::Duration changedAt_ = -std::chrono::hours(1);
  RunLoop::TimerToken timer_ = 0;
};
