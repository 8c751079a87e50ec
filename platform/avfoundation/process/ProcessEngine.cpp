#include "platform/avfoundation/process/ProcessEngine.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include "platform/avfoundation/bytes/PipeBytes.h"
#include "platform/avfoundation/bytes/ServerErrors.h"
#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/avfoundation/process/FetchedSource.h"
#include "platform/avfoundation/process/MediaProcesses.h"
#include "platform/foundation/MainThread.h"

namespace {

constexpr std::int32_t nanoseconds = 1'000'000'000;
// How many processes in a row may go before their first word, and how many in all before they begin with the media.
constexpr int muteLimit = 3;
// Of one that is ended without waiting for it: a driver may keep it from going.
constexpr const char* hungReason = "stood still";
// A process that begins further off than this has not come where it was sent.
constexpr std::int64_t jumpLimit = nanoseconds;
// How far a position goes on by itself when nothing new has been written.
constexpr RunLoop::Duration freshnessLimit = std::chrono::milliseconds(500);

CMTime timeOf(std::int64_t place) {
  return CMTimeMake(place, nanoseconds);
}

std::int64_t placeOf(const CMTime& time) {
  return CMTIME_IS_NUMERIC(time) ? CMTimeConvertScale(time, nanoseconds).value : INT64_MAX;
}

bool isPlace(const CMTime& time) {
  return CMTIME_IS_VALID(time) && !CMTIME_IS_INDEFINITE(time);
}

}  // namespace

ProcessEngine::ProcessEngine(const MediaSource& source, Launch launch, Fetch fetch)
    : source_(source),
      launch_(std::move(launch)),
      fetch_(std::move(fetch)),
      fetcher_(fetch_ ? fetch_() : nullptr),
      silence_([this] { fail(silenceError(source_.url, std::chrono::duration<double>(silenceLimit()).count())); }) {}

ProcessEngine::~ProcessEngine() {
  YMR_ASSERT_MAIN_THREAD();
  hop_.close();
  cut();
}

void ProcessEngine::cut() {
  look_.reset();
  hangs_.end();
  if (link_) std::exchange(link_, nullptr)->cut();
}

template <class Function, class... Arguments>
void ProcessEngine::tell(Function Events::*event, Arguments... arguments) {
  const auto events = events_;  // the host may replace them, or end the engine, from inside
  if (const auto& function = (*events).*event) function(arguments...);
}

template <class Function, class... Arguments>
void ProcessEngine::report(Function Events::*event, Arguments... arguments) {
  hop_.post([this, event, ... arguments = std::move(arguments)] { tell(event, arguments...); });
}

void ProcessEngine::setEvents(Events events) {
  events_ = std::make_shared<const Events>(std::move(events));
}

void ProcessEngine::load(const CMTime& start) {
  YMR_ASSERT_MAIN_THREAD();
  if (isLoaded_) return;
  isLoaded_ = true;
  if (pending_.empty() && start > kCMTimeZero && isPlace(start)) floor_ = reachable(start);
  if (auto text = localPlaylist(source_)) {
    playlist_.emplace(source_.url, std::move(*text));
    return this->start();
  }
  auto bytes = fetcher_ ? fetcher_->makeReader() : nullptr;
  if (!bytes) return this->start();
  silence_.setWaiting(true, silenceLimit());
  look_ = std::make_unique<PlaylistLook>(std::move(bytes), [this](const auto& result) { looked(result); });
}

void ProcessEngine::start() {
  segments_ = playlist_ ? segmentFetcher(playlist_->first, playlist_->second, source_.purpose) : nullptr;
  Descriptor file;
  if (source_.url.isFileURL() && !segments_ && source_.purpose == MediaPurpose::programme) {
    // A FIFO opens here at once, and waits where nobody waits for it.
    file = PipeBytes::open(source_.url.path());
    if (!file) return fail(fileError(source_.url, errno));
    comesOnce_ = lseek(file.get(), 0, SEEK_CUR) < 0;
  }
  auto peer = launch_();
  shared_ = SharedPosition::make();
  if (peer && !shared_) MediaProcesses::noteFailure("there is no memory to share");
  if (!peer || !shared_) return fallBack();
  ProcessLink::Events events;
  events.said = [this](const wire::ToHost& message) { hear(message); };
  events.died = [this](const MediaPeer::Death& death) { died(death); };
  link_ = ProcessLink::connect(std::move(peer), hop_, std::move(events));

  jumps_ = UINT64_MAX;  // what the one before counted means nothing
  hangs_.begin([this] { return link_->peer().signsOfLife(); }, [this] { died({false, hungReason}); });

  wire::Load load;
  load.url = source_.url.absoluteString();
  load.purpose = source_.purpose;
  load.hasFile = static_cast<bool>(file);
  load.hasBytes = fetcher_ || segments_;
  load.areSegments = segments_ != nullptr;
  load.isNetworkAllowed = isPlaylist_;
  // The next process of a live stream calls its times otherwise: no seek finds its place there.
  if (isLive()) finishSeeks(UINT64_MAX, false);
  const std::int64_t place = pending_.empty() ? floor_ : reachable(pending_.back().time);
  load.hasBegun = isReady_;
  load.isWithoutTexts = source_.isWithoutTexts || crashes_.isSuspect(crashPlace(place));
  load.start = isLive() ? kCMTimeZero : timeOf(place);
  load.settings = MediaEngineSettings::shared();
  std::vector<int> descriptors{shared_->descriptor()};
  if (file) descriptors.push_back(file.get());
  if (load.hasBytes) {
    const auto [memory, control, wake] = segments_ ? segments_->descriptors() : fetcher_->descriptors();
    descriptors.insert(descriptors.end(), {memory, control, wake});
  }
  link_->peer().send(load, descriptors);
  // In the start's place: so it tells whether it came there.
  if (!pending_.empty()) send(wire::Seek{pending_.back().number, pending_.back().time});
  send(wire::SetMuted{isMuted_});
  send(wire::SetRate{rate_});
  send(wire::SelectLegible{legible_});
  setFrameSink(sink_);
}

RunLoop::Duration ProcessEngine::silenceLimit() const {
  const MediaEngineSettings& settings = MediaEngineSettings::shared();
  const bool isPatient = isReady_ && source_.purpose == MediaPurpose::programme;
  const std::chrono::duration<double> limit(isPatient ? settings.programmeSilenceLimit
                                                      : settings.firstFrameSilenceLimit);
  return std::chrono::duration_cast<RunLoop::Duration>(limit);
}

std::int64_t ProcessEngine::crashPlace(std::int64_t place) const {
  return facts_.isLive ? std::chrono::nanoseconds(RunLoop::main().now()).count() : place;
}

void ProcessEngine::send(const wire::ToProcess& message) const {
  if (link_) link_->peer().send(message);
}

// What a process has died of never comes into the host.
void ProcessEngine::fallBack() {
  if (isReady_ || hasCrashed_) return fail(crashError(source_.url));
  cut();
  fallback_ = MediaEngine::make(segments_ ? withSegments(source_, std::move(segments_)) : withBytes(source_, fetcher_));
  Events events;
  events.ready = [this] { hear(wire::Ready{}); };
  events.failed = [this](const NSError& error) { fail(error); };
  events.durationChanged = [this] { tell(&Events::durationChanged); };
  events.tracksChanged = [this] { tell(&Events::tracksChanged); };
  events.bufferingChanged = [this] { tell(&Events::bufferingChanged); };
  events.ended = [this] { tell(&Events::ended); };
  events.captionChanged = [this](const std::optional<MediaCaption>& due) { tell(&Events::captionChanged, due); };
  fallback_->setEvents(std::move(events));
  fallback_->setMuted(isMuted_);
  fallback_->setFrameSink(sink_);
  fallback_->load(timeOf(floor_));
  for (Pending& seek : std::exchange(pending_, {})) fallback_->seek(seek.time, std::move(seek.completion));
  fallback_->selectLegibleTrack(legible_);
  fallback_->setRate(rate_);
}

void ProcessEngine::setRate(double rate) {
  YMR_ASSERT_MAIN_THREAD();
  if (hasFailed_) return;
  rate_ = rate;
  fallback_ ? fallback_->setRate(rate) : send(wire::SetRate{rate});
}

void ProcessEngine::setMuted(bool muted) {
  YMR_ASSERT_MAIN_THREAD();
  isMuted_ = muted;
  fallback_ ? fallback_->setMuted(muted) : send(wire::SetMuted{muted});
}

void ProcessEngine::selectLegibleTrack(const std::optional<std::string>& identifier) {
  YMR_ASSERT_MAIN_THREAD();
  legible_ = identifier;
  fallback_ ? fallback_->selectLegibleTrack(identifier) : send(wire::SelectLegible{identifier});
}

void ProcessEngine::setFrameSink(std::shared_ptr<VideoFrameSink> sink) {
  YMR_ASSERT_MAIN_THREAD();
  if (fallback_) return fallback_->setFrameSink(std::move(sink));
  sink_ = std::move(sink);
  if (!link_) return;
  link_->pictures().setSink(++sinks_, sink_);
  send(wire::SetSink{sinks_, sink_ != nullptr});
}

void ProcessEngine::seek(const CMTime& time, SeekCompletion completion) {
  YMR_ASSERT_MAIN_THREAD();
  if (fallback_) return fallback_->seek(time, std::move(completion));
  if (hasFailed_ || !isPlace(time)) {
    if (completion) hop_.post([completion = std::move(completion)] { completion(false); });
    return;
  }
  pending_.push_back({++seeks_, time, std::move(completion)});
  floor_ = reachable(time);
  const bool hadGone = hasEnded_ && !link_;
  hasEnded_ = false;
  if (hadGone) return recover();
  // Exactly as it is, unless it has to be moved.
  send(wire::Seek{seeks_, shift_ == 0 ? time : CMTimeSubtract(time, timeOf(shift_))});
}

void ProcessEngine::hear(const wire::ToHost& message) {
  std::visit(
      [this](const auto& said) {
        if constexpr (requires { hear(said); }) hear(said);
      },
      message);
}

void ProcessEngine::hear(const wire::Hello&) {
  MediaProcesses::noteSuccess();
  hangs_.begin([this] { return shared_->beats(); }, [this] { died({true, hungReason}); });
}

void ProcessEngine::hear(const wire::Facts& facts) {
  facts_ = facts;
  if (!isReady_) return;
  if (facts.areNewTracks) report(&Events::tracksChanged);
  if (facts.isNewDuration) tell(&Events::durationChanged);
}

void ProcessEngine::hear(const wire::Ready&) {
  silence_.reset();
  mute_ = 0;
  if (!std::exchange(isReady_, true)) return tell(&Events::ready);
  if (!std::exchange(isRecovering_, false)) return;
  takeOver();
  tell(&Events::bufferingChanged);
}

void ProcessEngine::takeOver() {
  const auto state = shared_->read();
  if (!state || !pending_.empty()) return;
  if (facts_.isLive) {
    floor_ = std::min(floor_, INT64_MAX / 4);
    shift_ = floor_ - state->time;
  } else if (std::abs(state->time - floor_) > jumpLimit) {
    floor_ = 0;
    report(&Events::jumped);
  }
}

void ProcessEngine::hear(const wire::Failed& failed) {
  // In the fetcher's own words, when that is why.
  if (const auto failure = segments_ ? segments_->failure() : std::nullopt) return fail(*failure);
  fail(fetcher_ ? fetcher_->failure().value_or(failed.error) : failed.error);
}

void ProcessEngine::hear(const wire::Buffering& buffering) {
  buffering_ = buffering;
  if (isReady_ && !isRecovering_) tell(&Events::bufferingChanged);
}

void ProcessEngine::hear(const wire::Ended&) {
  if (!isReady_ || !pending_.empty()) return;  // of before the seek
  hasEnded_ = true;
  tell(&Events::ended);
}

void ProcessEngine::hear(const wire::Caption& caption) {
  caption_ = caption.caption;
  tell(&Events::captionChanged, caption_);
}

void ProcessEngine::hear(const wire::SeekDone& done) {
  finishSeeks(done.number, done.finished);
}

void ProcessEngine::finishSeeks(std::uint64_t number, bool finished) {
  while (!pending_.empty() && pending_.front().number <= number) {
    Pending seek = std::move(pending_.front());
    pending_.pop_front();
    const bool isIt = finished && seek.number == number;
    if (seek.completion) hop_.post([completion = std::move(seek.completion), isIt] { completion(isIt); });
  }
}

void ProcessEngine::died(const MediaPeer::Death& death) {
  floor_ = place();
  cut();
  if (!death.hasSpoken) {
    if (++mute_ < muteLimit) return start();
    MediaProcesses::noteFailure(death.reason);
    return fallBack();
  }
  // It says that it has not touched the media. Whether that is true or not, these media never come into the host.
  if (!shared_->read() && ++idle_ < muteLimit) return start();
  hasCrashed_ = true;
  g_log("ymr", G_LOG_LEVEL_WARNING, "the media process of %s: %s", nameOfMedia(source_.url).c_str(),
        death.reason.c_str());
  // Nothing is missing: the last picture is there. Another one begins with the next seek.
  if (hasEnded_) return;
  const bool isWorthIt = !comesOnce_ && crashes_.note(RunLoop::main().now(), crashPlace(floor_));
  if (isAdvertisement(source_.purpose) || !isWorthIt) return fail(crashError(source_.url));
  recover();
}

void ProcessEngine::recover() {
  isRecovering_ = isReady_;
  if (isReady_) report(&Events::bufferingChanged);
  if (caption_) {
    caption_.reset();
    report(&Events::captionChanged, caption_);
  }
  startAnew();
}

void ProcessEngine::fail(const NSError& error) {
  if (std::exchange(hasFailed_, true)) return;
  if (!fallback_) floor_ = place();
  cut();
  silence_.reset();
  finishSeeks(UINT64_MAX, false);
  if (fallback_) {  // its seeks end with it
    fallback_->setRate(0);
    fallback_->setFrameSink(nullptr);
  }
  report(&Events::failed, error);
}

std::int64_t ProcessEngine::reachable(const CMTime& time) const {
  const std::int64_t end = placeOf(facts_.duration);
  return std::clamp<std::int64_t>(CMTimeGetSeconds(time) < 0 ? 0 : placeOf(time), 0, std::max<std::int64_t>(end, 0));
}

std::int64_t ProcessEngine::place() const {
  const auto state = shared_ && link_ ? shared_->read() : std::nullopt;
  const bool isKnown = state && (pending_.empty() || state->seek >= pending_.back().number);
  if (!isKnown || isRecovering_ || !isReady_) return floor_;
  std::int64_t time = state->time + shift_;
  if (state->moves) {
    time += std::clamp(RunLoop::main().now() - state->at, RunLoop::Duration::zero(), freshnessLimit).count();
  }
  if (!isLive()) time = std::min(time, std::max(state->end, state->time));
  if (std::exchange(jumps_, state->jumps) != state->jumps) floor_ = 0;
  return floor_ = std::max(floor_, time);
}

CMTime ProcessEngine::position() const {
  YMR_ASSERT_MAIN_THREAD();
  return fallback_ ? fallback_->position() : timeOf(place());
}

CMTime ProcessEngine::duration() const {
  if (fallback_) return fallback_->duration();
  return isReady_ ? facts_.duration : kCMTimeInvalid;
}

bool ProcessEngine::isLive() const {
  return fallback_ ? fallback_->isLive() : isReady_ && facts_.isLive;
}

std::vector<MediaTrack> ProcessEngine::tracks() const {
  if (fallback_) return fallback_->tracks();
  return isReady_ ? facts_.tracks : std::vector<MediaTrack>();
}

std::vector<CMTimeRange> ProcessEngine::bufferedRanges() const {
  if (fallback_) return fallback_->bufferedRanges();
  if (!isReady_ || hasFailed_ || isRecovering_) return {};
  auto ranges = buffering_.ranges;
  if (shift_ == 0) return ranges;
  for (CMTimeRange& range : ranges) range.start = CMTimeAdd(range.start, timeOf(shift_));
  return ranges;
}

bool ProcessEngine::isBufferEmpty() const {
  if (fallback_) return fallback_->isBufferEmpty();
  return !isReady_ || isRecovering_ || (buffering_.isEmpty && !hasEnded_);
}

bool ProcessEngine::isLikelyToKeepUp() const {
  if (fallback_) return fallback_->isLikelyToKeepUp();
  return isReady_ && !isRecovering_ && (buffering_.isLikelyToKeepUp || hasEnded_);
}
