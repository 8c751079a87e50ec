#include "platform/avfoundation/AVURLAsset.h"

#include <algorithm>
#include <utility>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/avfoundation/EngineSession.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/MainThread.h"

namespace {

const char* mediaTypeOf(MediaTrack::Kind kind) {
  switch (kind) {
    case MediaTrack::Kind::video:
      return AVMediaTypeVideo;
    case MediaTrack::Kind::audio:
      return AVMediaTypeAudio;
    case MediaTrack::Kind::subtitle:
      return AVMediaTypeSubtitle;
    case MediaTrack::Kind::closedCaption:
      return AVMediaTypeClosedCaption;
  }
  return AVMediaTypeVideo;
}

bool isLegible(const MediaTrack& track) {
  return track.kind == MediaTrack::Kind::subtitle || track.kind == MediaTrack::Kind::closedCaption;
}

std::shared_ptr<AVMediaSelectionGroup> legibleGroupOf(const std::vector<MediaTrack>& tracks) {
  std::vector<std::shared_ptr<AVMediaSelectionOption>> options;
  for (const auto& track : tracks) {
    if (!isLegible(track)) continue;
    options.push_back(std::make_shared<AVMediaSelectionOption>(track.identifier, mediaTypeOf(track.kind),
                                                               track.languageTag, track.title));
  }
  return options.empty() ? nullptr : std::make_shared<AVMediaSelectionGroup>(std::move(options));
}

bool sameOptions(const AVMediaSelectionGroup* left, const AVMediaSelectionGroup* right) {
  if (!left || !right) return left == right;
  return std::equal(left->options().begin(), left->options().end(), right->options().begin(), right->options().end(),
                    [](const auto& a, const auto& b) { return *a == *b; });
}

}  // namespace

// What the asset learns from the first engine that is opened for it, its own or an item's.
class AVURLAsset::Loading final : public EngineListener {
 public:
  explicit Loading(AVURLAsset& asset) : asset_(asset) {}
  void engineDidBecomeReady() override { asset_.loaded(); }
  void engineDidFail(const NSError& error) override { asset_.failed(error); }
  void engineDurationDidChange() override { asset_.learn(); }
  void engineTracksDidChange() override { asset_.learn(); }
  void engineWasLetGo() override { asset_.givenUp(); }

 private:
  AVURLAsset& asset_;
};

AVURLAsset::AVURLAsset(std::optional<NSURL> url, AVURLAssetOptions options)
    : url_(std::move(url)), options_(options), loading_(std::make_shared<Loading>(*this)) {
  if (!url_) failed({NSURLErrorDomain, NSURLErrorBadURL, "There is no URL to load from"});
}

AVURLAsset::~AVURLAsset() {
  loading_.reset();
  if (RunLoop::mainIfInstalled()) completeWaiters();
}

void AVURLAsset::setStartTime(const CMTime& time) {
  YMR_ASSERT_MAIN_THREAD();
  const CMTime before = startTime_;
  startTime_ = CMTIME_IS_NUMERIC(time) && time > kCMTimeZero ? time : kCMTimeZero;
  if (session_ && startTime_ != before) session_->seek(startTime_, [](bool) {});
}

void AVURLAsset::loadValuesAsynchronouslyForKeys(const std::vector<std::string>&, std::function<void()> completion) {
  YMR_ASSERT_MAIN_THREAD();
  if (completion) waiters_.push_back(std::move(completion));
  if (status_ == AVKeyValueStatusUnknown) {
    session_ = openSession();
    if (session_ && isAdvertisement(options_.purpose)) session_->keepPicture();
  }
  if (status_ != AVKeyValueStatusLoading) completeWaiters();
}

AVKeyValueStatus AVURLAsset::statusOfValueForKey(std::string_view, NSError* error) const {
  if (error && status_ == AVKeyValueStatusFailed) *error = error_;
  return status_;
}

std::vector<AVAssetTrack> AVURLAsset::tracksWithMediaType(std::string_view mediaType) const {
  std::vector<AVAssetTrack> found;
  for (const auto& track : tracks_) {
    const char* type = mediaTypeOf(track.kind);
    if (type == mediaType) found.push_back({type, track.languageTag, track.nominalFrameRate});
  }
  return found;
}

std::shared_ptr<AVMediaSelectionGroup> AVURLAsset::mediaSelectionGroupForMediaCharacteristic(
    std::string_view characteristic) const {
  return characteristic == AVMediaCharacteristicLegible ? legibleGroup_ : nullptr;
}

std::shared_ptr<EngineSession> AVURLAsset::takeSession() {
  YMR_ASSERT_MAIN_THREAD();
  if (session_) return std::exchange(session_, nullptr);
  return status_ == AVKeyValueStatusFailed ? nullptr : openSession();
}

std::shared_ptr<EngineSession> AVURLAsset::openSession() {
  auto session = EngineSession::open({*url_, options_.purpose}, startTime_);
  if (!session) {
    failed({AVFoundationErrorDomain, AVErrorUnknown, "There is nothing to play media with"});
  } else if (status_ == AVKeyValueStatusUnknown) {
    status_ = AVKeyValueStatusLoading;
    session->addListener(loading_);
    learnsFrom_ = session;
  }
  return session;
}

void AVURLAsset::loaded() {
  status_ = AVKeyValueStatusLoaded;
  learn();
  completeWaiters();
}

void AVURLAsset::failed(const NSError& error) {
  session_.reset();
  if (status_ == AVKeyValueStatusLoaded) return;  // a later failure is its item's; the next item opens anew
  status_ = AVKeyValueStatusFailed;
  error_ = error;
  completeWaiters();
}

void AVURLAsset::givenUp() {
  if (status_ != AVKeyValueStatusLoading) return;
  status_ = AVKeyValueStatusUnknown;
  completeWaiters();
}

void AVURLAsset::learn() {
  const auto session = learnsFrom_.lock();
  if (!session || status_ != AVKeyValueStatusLoaded) return;
  duration_ = session->engine().duration();
  tracks_ = session->engine().tracks();
  if (auto group = legibleGroupOf(tracks_); !sameOptions(group.get(), legibleGroup_.get())) {
    legibleGroup_ = std::move(group);
  }
}

void AVURLAsset::completeWaiters() {
  for (auto& waiter : std::exchange(waiters_, {})) dispatch_async(dispatch_get_main_queue(), std::move(waiter));
}
