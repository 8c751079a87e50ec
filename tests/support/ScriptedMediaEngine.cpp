#include "tests/support/ScriptedMediaEngine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using std::chrono::nanoseconds;

nanoseconds fromSeconds(double seconds) {
  return nanoseconds(std::llround(seconds * 1e9));
}
CMTime timeOf(nanoseconds position) {
  return CMTimeMake(position.count(), 1000000000);
}

nanoseconds fromTime(const CMTime& time) {
  if (!CMTIME_IS_NUMERIC(time)) return nanoseconds::zero();
  return nanoseconds(CMTimeConvertScale(time, 1000000000).value);
}

}  // namespace

ScriptedMediaEngine::ScriptedMediaEngine(ScriptedMedia* media, MediaScript script, std::shared_ptr<MediaEngineLog> log)
    : media_(media), script_(std::move(script)), log_(std::move(log)), anchorTime_(RunLoop::main().now()) {}

ScriptedMediaEngine::~ScriptedMediaEngine() {
  for (auto* timer : {&loadTimer_, &planTimer_, &seekTimer_, &silenceTimer_, &stallTimer_}) cancel(*timer);
  if (media_) std::erase(media_->engines_, this);
}

void ScriptedMediaEngine::report(std::function<void()> report) {
  RunLoop::main().post([this, alive = std::weak_ptr(alive_), report = std::move(report)] {
    if (alive.expired() || failed_) return;
    report();
  });
}

void ScriptedMediaEngine::tell(const std::function<void()>& event) {
  report([&event] {
    if (const auto heard = event) heard();
  });
}

void ScriptedMediaEngine::schedule(RunLoop::TimerToken& timer, Nanoseconds delay, Action action) {
  cancel(timer);
  timer = RunLoop::main().schedule(delay, [&timer, action = std::move(action)] {
    timer = 0;
    action();
  });
}

void ScriptedMediaEngine::cancel(RunLoop::TimerToken& timer) {
  if (timer) RunLoop::main().cancel(std::exchange(timer, 0));
}

void ScriptedMediaEngine::load(const CMTime& start) {
  log_->start = CMTimeGetSeconds(start);
  anchorPosition_ = std::clamp(fromTime(start), Nanoseconds::zero(), end());
  loading_ = true;
  planSilence();
  if (script_.neverLoads) return;
  schedule(loadTimer_, fromSeconds(script_.loadDelay), [this] { becomeReady(); });
}

void ScriptedMediaEngine::becomeReady() {
  cancel(loadTimer_);
  if (script_.loadFailure) return fail(*script_.loadFailure);
  report([this] {
    if (ready_ || failing_) return;
    change([this] { ready_ = true; });
    if (seek_) schedule(seekTimer_, fromSeconds(script_.seekDelay), [this] { carryOutSeek(); });
    present();
    if (const auto ready = events_.ready) ready();
  });
}

void ScriptedMediaEngine::fail(NSError error) {
  if (failing_) return;
  change([this] { failing_ = true; });
  cancel(loadTimer_);
  cancel(seekTimer_);
  cancel(stallTimer_);
  report([this, error = std::move(error)] {
    failed_ = true;
    if (const auto failed = events_.failed) failed(error);
  });
}

void ScriptedMediaEngine::setStalled(bool stalled) {
  if (stalled_ == stalled) return;
  cancel(stallTimer_);
  change([&] { stalled_ = stalled; });
  tell(events_.bufferingChanged);
}

void ScriptedMediaEngine::setBuffering(bool empty, double lead) {
  saysEmpty_ = empty;
  script_.bufferedLead = lead;
  tell(events_.bufferingChanged);
}

void ScriptedMediaEngine::setDuration(double seconds) {
  change([&] { script_.duration = seconds; });
  tell(events_.durationChanged);
}

void ScriptedMediaEngine::setTracks(std::vector<MediaTrack> tracks) {
  script_.tracks = std::move(tracks);
  tell(events_.tracksChanged);
}

void ScriptedMediaEngine::setCaption(std::optional<MediaCaption> due) {
  report([this, due = std::move(due)] {
    if (const auto changed = events_.captionChanged) changed(due);
  });
}

void ScriptedMediaEngine::skipTo(double seconds) {
  change([&] { anchorPosition_ = std::min(fromSeconds(seconds), end()); });
  if (moves() && anchorPosition_ == end()) reachEnd();
}

void ScriptedMediaEngine::setRate(double rate) {
  log_->rates.push_back(rate);
  change([&] { rate_ = rate; });
}

void ScriptedMediaEngine::seek(const CMTime& time, SeekCompletion completion) {
  log_->seeks.push_back(CMTimeGetSeconds(time));
  const auto target = std::clamp(fromTime(time), Nanoseconds::zero(), end());
  change([&] {
    if (seek_) {
      report([superseded = std::move(seek_->completion)] {
        if (superseded) superseded(false);
      });
    }
    seek_ = Seek{target, std::move(completion)};
  });
  if (ready_ && !failing_) schedule(seekTimer_, fromSeconds(script_.seekDelay), [this] { carryOutSeek(); });
}

void ScriptedMediaEngine::carryOutSeek() {
  ++log_->flushes;
  cancel(stallTimer_);
  const Seek seek = std::move(*seek_);
  change([&] {
    anchorPosition_ = seek.target;
    seek_.reset();
    stalled_ = ended_ = saysEmpty_ = false;
  });
  tell(events_.bufferingChanged);
  present();
  if (seek.completion) seek.completion(true);
}

CMTime ScriptedMediaEngine::position() const {
  return timeOf(seek_ ? seek_->target : played());
}

CMTime ScriptedMediaEngine::duration() const {
  if (!ready_) return kCMTimeInvalid;
  return script_.live ? kCMTimeIndefinite : timeOf(end());
}

std::vector<CMTimeRange> ScriptedMediaEngine::bufferedRanges() const {
  const auto start = fromTime(position());
  const auto length = std::min(fromSeconds(script_.bufferedLead), end() - start);
  if (!ready_ || stalled_ || length <= Nanoseconds::zero()) return {};
  return {{timeOf(start), timeOf(length)}};
}

std::vector<MediaTrack> ScriptedMediaEngine::tracks() const {
  return ready_ ? script_.tracks : std::vector<MediaTrack>{};
}

void ScriptedMediaEngine::setFrameSink(std::shared_ptr<VideoFrameSink> sink) {
  sink_ = std::move(sink);
  present();
}

bool ScriptedMediaEngine::moves() const {
  return ready_ && !failing_ && !stalled_ && !ended_ && !seek_ && rate_ > 0;
}

ScriptedMediaEngine::Nanoseconds ScriptedMediaEngine::end() const {
  return script_.live ? Nanoseconds::max() / 2 : fromSeconds(script_.duration);
}

ScriptedMediaEngine::Nanoseconds ScriptedMediaEngine::played() const {
  if (!moves()) return anchorPosition_;
  const auto elapsed = static_cast<double>((RunLoop::main().now() - anchorTime_).count());
  return std::min(anchorPosition_ + Nanoseconds(std::llround(elapsed * rate_)), end());
}

void ScriptedMediaEngine::change(const std::function<void()>& change) {
  anchorPosition_ = played();
  anchorTime_ = RunLoop::main().now();
  change();
  plan();
  planSilence();
}

void ScriptedMediaEngine::plan() {
  cancel(planTimer_);
  if (!moves()) return;
  auto next = Nanoseconds::max();
  Action action;
  const auto consider = [&](Nanoseconds position, Action then) {
    if (position < anchorPosition_ || position >= next) return;
    next = position;
    action = std::move(then);
  };
  // What comes first here comes first at the same position, too.
  if (script_.failure) consider(fromSeconds(script_.failure->position), [this] { fail(script_.failure->error); });
  for (const auto& stall : script_.stalls) consider(fromSeconds(stall.position), [this] { reachStall(); });
  if (!script_.live) consider(end(), [this] { reachEnd(); });
  if (!action) return;
  const auto delay = std::ceil(static_cast<double>((next - anchorPosition_).count()) / rate_);
  schedule(planTimer_, Nanoseconds(static_cast<std::int64_t>(delay)), std::move(action));
}

void ScriptedMediaEngine::reachStall() {
  const auto here = played();
  const auto due = std::find_if(script_.stalls.begin(), script_.stalls.end(), [&](const MediaScript::Stall& stall) {
    return fromSeconds(stall.position) >= anchorPosition_ && fromSeconds(stall.position) <= here;
  });
  const double seconds = due->seconds;
  script_.stalls.erase(due);
  stall();
  schedule(stallTimer_, fromSeconds(seconds), [this] { resumeData(); });
}

void ScriptedMediaEngine::reachEnd() {
  change([this] { ended_ = true; });
  tell(events_.ended);
}

void ScriptedMediaEngine::planSilence() {
  const bool waits = loading_ && !failing_ && (!ready_ || (stalled_ && !seek_ && rate_ > 0));
  if (!waits) return cancel(silenceTimer_);
  if (silenceTimer_) return;
  const auto& settings = MediaEngineSettings::shared();
  const bool begun = ready_ && log_->source.purpose == MediaPurpose::programme;
  const double limit = begun ? settings.programmeSilenceLimit : settings.firstFrameSilenceLimit;
  schedule(silenceTimer_, fromSeconds(limit), [this] {
    fail({AVFoundationErrorDomain, AVErrorNoDataReceived, "No data came in time"});
  });
}

void ScriptedMediaEngine::present() {
  const auto video = std::find_if(script_.tracks.begin(), script_.tracks.end(),
                                  [](const MediaTrack& track) { return track.kind == MediaTrack::Kind::video; });
  if (!sink_ || !ready_ || video == script_.tracks.end()) return;
  VideoFrame frame;
  frame.width = std::max(video->width, 1);
  frame.height = std::max(video->height, 1);
  frame.stride = frame.width * 4;
  const auto pixels = std::make_shared<std::vector<std::uint32_t>>(
      static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height), script_.colour);
  frame.bits = reinterpret_cast<const std::uint8_t*>(pixels->data());
  frame.owner = pixels;
  frame.time = position();
  sink_->present(std::move(frame));
}

ScriptedMedia::ScriptedMedia() {
  MediaEngine::setFactory([this](const MediaSource& source) -> std::unique_ptr<MediaEngine> {
    const auto own = scripts_.find(source.url.absoluteString());
    const auto& script = own == scripts_.end() ? otherwise_ : own->second;
    if (script.cannotBeMade) throw std::runtime_error("no engine can be made");
    const auto log = std::make_shared<MediaEngineLog>(source);
    auto engine = std::make_unique<ScriptedMediaEngine>(this, script, log);
    logs_.push_back(log);
    engines_.push_back(engine.get());
    return engine;
  });
}

ScriptedMedia::~ScriptedMedia() {
  MediaEngine::setFactory(nullptr);
  for (auto* engine : engines_) engine->media_ = nullptr;
}

ScriptedMediaEngine* ScriptedMedia::engine(const std::string& url) const {
  const auto latest = std::find_if(engines_.rbegin(), engines_.rend(), [&](const ScriptedMediaEngine* engine) {
    return engine->log().source.url.absoluteString() == url;
  });
  return latest == engines_.rend() ? nullptr : *latest;
}

std::vector<std::shared_ptr<const MediaEngineLog>> ScriptedMedia::logs(const std::string& url) const {
  std::vector<std::shared_ptr<const MediaEngineLog>> found;
  std::copy_if(logs_.begin(), logs_.end(), std::back_inserter(found),
               [&](const auto& log) { return log->source.url.absoluteString() == url; });
  return found;
}
