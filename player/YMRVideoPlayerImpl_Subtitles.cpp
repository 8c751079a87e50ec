// External subtitle tracks, and the subtitle and caption renditions that the media carry.
#include <algorithm>
#include <utility>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/foundation/MainThread.h"
#include "player/YMRSubtitleStage.h"
#include "player/YMRVideoPlayerImpl.h"
#include "subtitles/ASBPlayerScrubbing.h"

void YMRVideoPlayerImpl::initSubtitle() {
  subtitleStage_->addToPlayerScreen(avPlayerVC_);
}

const std::shared_ptr<ASBPlayerSubtitling>& YMRVideoPlayerImpl::subtitling() const {
  return subtitleStage_->subtitling();
}

const std::shared_ptr<YMRSubtitleConfig>& YMRVideoPlayerImpl::subtitle() const {
  return subtitleStage_->subtitle();
}

void YMRVideoPlayerImpl::setSubtitle(const std::shared_ptr<YMRSubtitleConfig>& subtitle) {
  YMR_ASSERT_MAIN_THREAD();
  subtitleStage_->setSubtitle(subtitle);
}

void YMRVideoPlayerImpl::loadSubtitle() {
  const auto player = vodPlayer_;
  scrubbing_->setPlayer(player);  // pauses the programme before, which somebody may hear of
  if (vodPlayer_ == player) subtitleStage_->loadSubtitle(player);
}

void YMRVideoPlayerImpl::switchSubtitle(std::int32_t index) {
  YMR_ASSERT_MAIN_THREAD();
  if (presentation_ == Presentation::alive) subtitleStage_->switchSubtitle(index);
}

void YMRVideoPlayerImpl::toggleSubtitle(bool visible) {
  YMR_ASSERT_MAIN_THREAD();
  subtitleStage_->toggleSubtitle(visible);
}

std::shared_ptr<AVMediaSelectionGroup> YMRVideoPlayerImpl::legibleGroup() const {
  const auto item = vodPlayer_ ? vodPlayer_->currentItem() : nullptr;
  return item ? item->asset()->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible) : nullptr;
}

std::vector<std::string> YMRVideoPlayerImpl::getClosedCaptionLanguageList() const {
  std::vector<std::string> languages;
  const auto group = legibleGroup();
  if (!group) return languages;
  for (const auto& option : group->options()) {
    if (auto tag = option->extendedLanguageTag()) languages.push_back(std::move(*tag));
  }
  return languages;
}

bool YMRVideoPlayerImpl::setClosedCaption(const std::string& languageTag) {
  const auto group = legibleGroup();
  if (!group) return false;
  const auto& options = group->options();
  const auto option = std::find_if(options.begin(), options.end(),
                                   [&](const auto& each) { return each->extendedLanguageTag() == languageTag; });
  if (option == options.end()) return false;
  vodPlayer_->currentItem()->selectMediaOption(*option, group);
  return true;
}

std::string YMRVideoPlayerImpl::currentClosedCaption() const {
  const auto group = legibleGroup();
  const auto option = group ? vodPlayer_->currentItem()->selectedMediaOptionInMediaSelectionGroup(group) : nullptr;
  return option ? option->extendedLanguageTag().value_or("") : "";
}

void YMRVideoPlayerImpl::disableAutoClosedCaptionOptions() {
  if (avPlayerVC_) avPlayerVC_->setAllowedSubtitleOptionLanguages(getClosedCaptionLanguageList());
}

// Only subtitles are reported; closed captions and "off" deliberately are not.
void YMRVideoPlayerImpl::playerViewController(const std::shared_ptr<AVPlayerViewController>&,
                                              const std::shared_ptr<AVMediaSelectionOption>& option,
                                              const std::shared_ptr<AVMediaSelectionGroup>&) {
  if (!option || option->mediaType() != AVMediaTypeSubtitle) return;
  tell(&YMRVideoPlayerDelegate::videoClosedCaptionDidChange, option->extendedLanguageTag().value_or(""));
}
