#include "platform/avkit/StageModel.h"

#include <chrono>
#include <optional>
#include <utility>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/avkit/StyledCaption.h"

using namespace std::chrono_literals;

namespace {

// An interruption shorter than this is not worth a spinner's flash.
constexpr auto interruptionLimit = 300ms;

}  // namespace

StageModel::StageModel() = default;

void StageModel::setWatch(std::shared_ptr<PlaybackWatch> watch) {
  // A controller that gives its player back is about to go: it stays black, without a spinner.
  hadPlayer_ = hadPlayer_ || watch_ || watch;
  watch_ = std::move(watch);
  begun_ = false;
  refresh();
}

void StageModel::setVisible(bool visible) {
  visible_ = visible;
  followWaiting();
}

bool StageModel::refresh() {
  const bool begins = watch_ && !begun_ && watch_->player()->rate() != 0;
  begun_ = begun_ || begins;
  const auto item = watch_ ? watch_->item() : nullptr;
  const auto caption = item && begun_ ? item->currentCaption() : std::nullopt;
  setCaption(caption ? styledText(*caption) : QString());
  setSoundOnly(item && begun_ && item->status() == AVPlayerItemStatusReadyToPlay &&
               item->asset()->tracksWithMediaType(AVMediaTypeVideo).empty());
  followWaiting();
  return begins;
}

bool StageModel::isWaiting() const {
  const auto item = watch_ ? watch_->item() : nullptr;
  if (item && item->status() == AVPlayerItemStatusFailed) return false;
  if (!begun_) return watch_ || !hadPlayer_;
  if (!item || watch_->player()->rate() == 0) return false;
  return item->status() == AVPlayerItemStatusUnknown || item->isPlaybackBufferEmpty();
}

void StageModel::followWaiting() {
  if (!visible_ || !isWaiting()) {
    spinnerDelay_ = nullptr;
    spin(false);
  } else if (!begun_) {
    spin(true);
  } else if (!spinning_ && !spinnerDelay_) {
    spinnerDelay_ = NSTimer::scheduledTimerWithTimeInterval(interruptionLimit, false, [this] { spin(true); });
  }
}

void StageModel::spin(bool spinning) {
  if (spinning == spinning_) return;
  spinnerDelay_ = nullptr;
  spinning_ = spinning;
  Q_EMIT spinningChanged();
}

void StageModel::setCaption(QString caption) {
  if (caption == caption_) return;
  caption_ = std::move(caption);
  Q_EMIT captionChanged();
}

void StageModel::setSoundOnly(bool soundOnly) {
  if (soundOnly == soundOnly_) return;
  soundOnly_ = soundOnly;
  Q_EMIT soundOnlyChanged();
}
