#include "platform/avfoundation/engine/GStreamerEngine.h"

#include <algorithm>
#include <utility>

#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/foundation/MainThread.h"

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr auto pollInterval = std::chrono::milliseconds(500);
// Media of which more than this is missing at the end have been cut off.
constexpr std::int64_t missingLimit = second;
RunLoop::Duration seconds(double count) {
  return std::chrono::duration_cast<RunLoop::Duration>(std::chrono::duration<double>(count));
}

bool mayOpen(const MediaSource& source) {
  return source.url.isHTTP() || (source.url.isFileURL() && source.purpose == MediaPurpose::programme);
}

}  // namespace

GStreamerEngine::GStreamerEngine(const MediaSource& source)
    : source_(source),
      pipeline_(std::make_shared<MediaPipeline>(source, MediaEngineSettings::shared(), pipelineEvents())),
      silence_([this] {
        const MediaEngineSettings& settings = MediaEngineSettings::shared();
        fail(silenceError(source_.url, isReady_ && source_.purpose == MediaPurpose::programme
                                           ? settings.programmeSilenceLimit
                                           : settings.firstFrameSilenceLimit));
      }),
      overtime_([this] { fail(overtimeError(source_.url)); }),
      captions_([this](std::optional<MediaCaption> due) { report(&Events::captionChanged, std::move(due)); }) {}

GStreamerEngine::~GStreamerEngine() {
  YMR_ASSERT_MAIN_THREAD();
  hop_.close();
  for (const RunLoop::TimerToken timer : {pollTimer_, overdueTimer_}) {
    if (timer) RunLoop::main().cancel(timer);
  }
  if (pipeline_) MediaPipeline::close(std::move(pipeline_));
}

template <class Function, class... Arguments>
void GStreamerEngine::report(Function Events::*event, Arguments... arguments) {
  if (hasFailed_) return;
  hop_.post([this, event, ... arguments = std::move(arguments)] {
    const auto events = events_;  // the host may replace them, or end the engine, from inside
    if (const auto& function = (*events).*event) function(arguments...);
  });
}

MediaPipeline::Events GStreamerEngine::pipelineEvents() {
  MediaPipeline::Events events;
  events.opened = [this] {
    isOpen_ = true;
    poll();
    apply();
  };
  events.prerolled = [this](std::uint64_t flushes) { prerolled(flushes); };
  events.seekStarted = [this](std::uint64_t flushes) {
    if (current_) current_->flushesBefore = flushes;
  };
  events.seekRefused = [this](bool flushed) {
    if (!current_) return;
    floor_ = flushed ? facts_.seekableStart : current_->origin;
    hasEnded_ = !flushed && current_->hadEnded;
    finishSeek(false);
  };
  events.ended = [this] { ended(); };
  events.failed = [this](const NSError& error) { fail(error); };
  events.buffered = [this](bool isFilled) { buffered(isFilled); };
  events.factsChanged = [this](MediaFacts facts) { factsChanged(std::move(facts)); };
  events.captionsFound = [this](CaptionFeed::Found cues) { captionsFound(std::move(cues)); };
  return events;
}

void GStreamerEngine::load(const CMTime& start) {
  YMR_ASSERT_MAIN_THREAD();
  if (isLoaded_) return;
  isLoaded_ = true;
  if (start > kCMTimeZero && !next_) seek(start, {});
  if (!mayOpen(source_)) return fail(unsupportedSchemeError(source_.url));
  pipeline_->open();
}

void GStreamerEngine::setRate(double rate) {
  YMR_ASSERT_MAIN_THREAD();
  rate_ = rate;
  apply();
}

void GStreamerEngine::apply() {
  if (hasFailed_) return;
  const bool shouldPlay = isReady_ && rate_ != 0 && !current_ && isFilled_ && !hasEnded_;
  if (shouldPlay != pipelinePlays_) {
    pipelinePlays_ = shouldPlay;
    pipeline_->setPlaying(shouldPlay);
  }
  const bool starves = rate_ != 0 && !isFilled_ && !hasEnded_;
  const MediaEngineSettings& settings = MediaEngineSettings::shared();
  const bool isPatient = (isReady_ || source_.hasBegun) && source_.purpose == MediaPurpose::programme;
  silence_.setWaiting(isOpen_ && (!isReady_ || current_ || starves),
                      seconds(isPatient ? settings.programmeSilenceLimit : settings.firstFrameSilenceLimit));
  if (isAdvertisement(source_.purpose) && isReady_) {
    const double length = facts_.duration ? static_cast<double>(*facts_.duration) / second : settings.lengthOfUnknownAd;
    overtime_.setWaiting(rate_ != 0 && !hasEnded_, seconds(length + settings.adOvertimeLimit));
  }
  updateCaptions();
}

void GStreamerEngine::prerolled(std::uint64_t flushes) {
  if (!hasPrerolled_) {
    hasPrerolled_ = true;
    silence_.reset();
    next_ ? begin(*std::exchange(next_, std::nullopt)) : becomeReady();
    apply();
  } else if (current_ && current_->flushesBefore && flushes > *current_->flushesBefore) {
    arrived();
  }
}

void GStreamerEngine::becomeReady() {
  if (std::exchange(isReady_, true)) return;
  connectSink();
  report(&Events::ready);
}

void GStreamerEngine::ended() {
  if (!isReady_ || current_) return;  // of before the seek
  if (isCutOff()) return fail(damagedMediaError(source_.url));
  const std::int64_t time = mediaTime();
  floor_ = facts_.duration && *facts_.duration - time < missingLimit ? std::max(time, *facts_.duration) : time;
  hasEnded_ = true;
  if (facts_.duration && *facts_.duration < floor_) {
    facts_.duration = floor_;
    report(&Events::durationChanged);
  }
  apply();
  report(&Events::ended);
}

bool GStreamerEngine::isCutOff() const {
  if (!facts_.duration || !facts_.saysItsLength) return false;
  const auto reached = pipeline_->reachedEnd();
  return *facts_.duration - (reached ? static_cast<std::int64_t>(*reached) : mediaTime()) > missingLimit;
}

void GStreamerEngine::fail(const NSError& error) {
  if (hasFailed_) return;
  floor_ = mediaTime();
  if (next_) complete(next_->completion, false);
  if (current_) complete(current_->completion, false);
  next_.reset();
  current_.reset();
  report(&Events::failed, error);
  hasFailed_ = true;
  silence_.reset();
  overtime_.reset();
  for (RunLoop::TimerToken* timer : {&pollTimer_, &overdueTimer_}) {
    if (*timer) RunLoop::main().cancel(std::exchange(*timer, 0));
  }
  MediaPipeline::close(std::move(pipeline_));
}

void GStreamerEngine::buffered(bool isFilled) {
  isFilled_ = isFilled;
  if (isFilled && !current_ && isReady_) silence_.reset();
  apply();
  report(&Events::bufferingChanged);
}

void GStreamerEngine::poll() {
  pollTimer_ = RunLoop::main().schedule(pollInterval, [this] {
    poll();
    if (!hasPrerolled_) return pipeline_->lookForSilentFailure();
    const auto end = source_.isLocal() ? std::nullopt : pipeline_->bufferedEnd();
    const bool isFull = pipeline_->isFull();
    if (end != lastBufferedEnd_) pipeline_->lookForFacts();
    if (end != lastBufferedEnd_ || isFull != wasFull_) report(&Events::bufferingChanged);
    lastBufferedEnd_ = end;
    wasFull_ = isFull;
  });
}

void GStreamerEngine::factsChanged(MediaFacts facts) {
  const bool isNewDuration = facts.duration != facts_.duration;
  const auto identifiers = [](const std::vector<MediaTrack>& tracks) {
    std::vector<std::string> result;
    for (const MediaTrack& track : tracks) result.push_back(track.identifier);
    return result;
  };
  const bool areNewTracks = identifiers(facts.tracks) != identifiers(facts_.tracks);
  facts_ = std::move(facts);
  for (MediaTrack& track : facts_.tracks) {
    if (track.kind != MediaTrack::Kind::video || track.nominalFrameRate > 0) continue;
    track.nominalFrameRate = pipeline_->frames().frameRate();
  }
  if (!isReady_) return;
  if (isNewDuration) report(&Events::durationChanged);
  if (areNewTracks) report(&Events::tracksChanged);
}

void GStreamerEngine::captionsFound(CaptionFeed::Found cues) {
  for (auto& [track, cue] : cues) captions_.add(track, std::move(cue));
  updateCaptions();
}

void GStreamerEngine::updateCaptions() {
  captions_.update([this] { return pipeline_ ? pipeline_->cueTime(mediaTime()) : mediaTime(); }, pipelinePlays_);
}

void GStreamerEngine::selectLegibleTrack(const std::optional<std::string>& identifier) {
  YMR_ASSERT_MAIN_THREAD();
  captions_.select(identifier);
  if (pipeline_ && identifier) pipeline_->fetchLegibleTrack(*identifier);
  apply();
}

void GStreamerEngine::setMuted(bool muted) {
  YMR_ASSERT_MAIN_THREAD();
  if (pipeline_) pipeline_->sound().setMuted(muted);
}

void GStreamerEngine::setFrameSink(std::shared_ptr<VideoFrameSink> sink) {
  YMR_ASSERT_MAIN_THREAD();
  frameSink_ = std::move(sink);
  isSinkKept_ = true;
  if (pipeline_) isElsewhere() ? pipeline_->frames().setSink(nullptr) : connectSink();
}

void GStreamerEngine::connectSink() {
  if (std::exchange(isSinkKept_, false)) pipeline_->frames().setSink(frameSink_);
}
