#include "player/YMRVideoPlayer.h"

#include <utility>

#include "platform/foundation/MainThread.h"
#include "player/YMRVideoPlayerImpl.h"

YMRVideoPlayer::YMRVideoPlayer() : ymrPlayer_(YMRVideoPlayerImpl::init()) {}
YMRVideoPlayer::~YMRVideoPlayer() {
  YMR_ASSERT_MAIN_THREAD();
}

std::shared_ptr<YMRVideoPlayerDelegate> YMRVideoPlayer::delegate() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->delegate();
}

void YMRVideoPlayer::setDelegate(std::weak_ptr<YMRVideoPlayerDelegate> delegate) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->setDelegate(std::move(delegate));
}

const std::shared_ptr<YMRAdSchedule>& YMRVideoPlayer::adSchedule() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->adSchedule();
}

void YMRVideoPlayer::setAdSchedule(const std::shared_ptr<YMRAdSchedule>& schedule) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->setAdSchedule(schedule);
}

const std::shared_ptr<YMRSubtitleConfig>& YMRVideoPlayer::subtitle() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->subtitle();
}

void YMRVideoPlayer::setSubtitle(const std::shared_ptr<YMRSubtitleConfig>& subtitle) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->setSubtitle(subtitle);
}

const std::shared_ptr<UIView>& YMRVideoPlayer::overlayView() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->overlayView();
}

void YMRVideoPlayer::setOverlayView(std::shared_ptr<UIView> view) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->setOverlayView(std::move(view));
}

void YMRVideoPlayer::presentWithController(const std::shared_ptr<UIViewController>& controller) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->presentWithController(controller);
}

void YMRVideoPlayer::playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, std::int64_t startPosition) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->playWithMediaItem(mediaItem, startPosition);
}

void YMRVideoPlayer::playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem,
                                       const std::shared_ptr<AVURLAsset>& asset, std::int64_t startPosition) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->playWithMediaItem(mediaItem, asset, startPosition);
}

void YMRVideoPlayer::start() {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->start();
}

void YMRVideoPlayer::dismiss() {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->dismiss();
}

double YMRVideoPlayer::currentPosition() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->currentPosition();
}

double YMRVideoPlayer::videoDuration() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->videoDuration();
}

void YMRVideoPlayer::switchSubtitle(std::int32_t index) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->switchSubtitle(index);
}

void YMRVideoPlayer::toggleSubtitle(bool visible) {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->toggleSubtitle(visible);
}

std::vector<std::string> YMRVideoPlayer::getClosedCaptionLanguageList() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->getClosedCaptionLanguageList();
}

bool YMRVideoPlayer::setClosedCaption(const std::string& languageTag) {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->setClosedCaption(languageTag);
}

std::string YMRVideoPlayer::currentClosedCaption() const {
  YMR_ASSERT_MAIN_THREAD();
  return ymrPlayer_->currentClosedCaption();
}

void YMRVideoPlayer::disableAutoClosedCaptionOptions() {
  YMR_ASSERT_MAIN_THREAD();
  ymrPlayer_->disableAutoClosedCaptionOptions();
}
