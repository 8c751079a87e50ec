// The ad after the one that plays: its film is made ready ahead of its turn, in silence.
#include "platform/uikit/UIApplication.h"
#include "player/YMRVideoPlayerImpl.h"

void YMRVideoPlayerImpl::prepareNextFilm(double second) {
  if (!isPlayingAd_ || ads_.isEmpty() || lookedAheadFrom_ == adNumber_) return;
  if (UIApplication::sharedApplication().isInBackground()) return;
  const bool isSkippable = !adSchedule_ || adSchedule_->allowsSkipping();
  if (!YMRNextFilm::isDue(*adPlayer_->item(), second, isSkippable ? ad_.skipOffset : std::nullopt)) return;
  lookedAheadFrom_ = adNumber_;
  nextFilm_.prepare(ads_, macroValues());
}
