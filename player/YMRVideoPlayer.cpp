#include "player/YMRVideoPlayer.h"

#include "player/YMRVideoPlayerImpl.h"

YMRVideoPlayer::YMRVideoPlayer() : ymrPlayer_(YMRVideoPlayerImpl::init()) {}
YMRVideoPlayer::~YMRVideoPlayer() = default;

std::shared_ptr<YMRVideoPlayerDelegate> YMRVideoPlayer::delegate() const {
  return ymrPlayer_->delegate();
}

void YMRVideoPlayer::setDelegate(std::weak_ptr<YMRVideoPlayerDelegate> delegate) {
  ymrPlayer_->setDelegate(std::move(delegate));
}

const std::shared_ptr<YMRAdSchedule>& YMRVideoPlayer::adSchedule() const {
  return ymrPlayer_->adSchedule();
}

void YMRVideoPlayer::setAdSchedule(const std::shared_ptr<YMRAdSchedule>& schedule) {
  ymrPlayer_->setAdSchedule(schedule);
}

const std::shared_ptr<YMRSubtitleConfig>& YMRVideoPlayer::subtitle() const {
  return ymrPlayer_->subtitle();
}

void YMRVideoPlayer::setSubtitle(const std::shared_ptr<YMRSubtitleConfig>& subtitle) {
  ymrPlayer_->setSubtitle(subtitle);
}

const std::shared_ptr<UIView>& YMRVideoPlayer::overlayView() const {
  return ymrPlayer_->overlayView();
}

void YMRVideoPlayer::setOverlayView(std::shared_ptr<UIView> view) {
  ymrPlayer_->setOverlayView(std::move(view));
}

void YMRVideoPlayer::presentWithController(const std::shared_ptr<UIViewController>& controller) {
  ymrPlayer_->presentWithController(controller);
}

void YMRVideoPlayer::playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, std::int64_t startPosition) {
  ymrPlayer_->playWithMediaItem(mediaItem, startPosition);
}

void YMRVideoPlayer::playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem,
                                       const std::shared_ptr<AVURLAsset>& asset, std::int64_t startPosition) {
  ymrPlayer_->playWithMediaItem(mediaItem, asset, startPosition);
}

void YMRVideoPlayer::start() {
  ymrPlayer_->start();
}

void YMRVideoPlayer::dismiss() {
  ymrPlayer_->dismiss();
}

double YMRVideoPlayer::currentPosition() const {
  return ymrPlayer_->currentPosition();
}

double YMRVideoPlayer::videoDuration() const {
  return ymrPlayer_->videoDuration();
}

void YMRVideoPlayer::switchSubtitle(std::int32_t index) {
  ymrPlayer_->switchSubtitle(index);
}

void YMRVideoPlayer::toggleSubtitle(bool visible) {
  ymrPlayer_->toggleSubtitle(visible);
}

std::vector<std::string> YMRVideoPlayer::getClosedCaptionLanguageList() const {
  return ymrPlayer_->getClosedCaptionLanguageList();
}

bool YMRVideoPlayer::setClosedCaption(const std::string& languageTag) {
  return ymrPlayer_->setClosedCaption(languageTag);
}

std::string YMRVideoPlayer::currentClosedCaption() const {
  return ymrPlayer_->currentClosedCaption();
}

void YMRVideoPlayer::disableAutoClosedCaptionOptions() {
  ymrPlayer_->disableAutoClosedCaptionOptions();
}
