#include "platform/avfoundation/AVPlayer.h"

#include <glib.h>

#include <mutex>
#include <utility>

#include "platform/avfoundation/ItemPlayback.h"
#include "platform/avfoundation/PeriodicTimeObservers.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSString.h"

// What outlives the player for the rest of the turn in which it is destroyed from inside one of its own calls.
class AVPlayer::Core final : public ItemPlayback::Player, public std::enable_shared_from_this<Core> {
 public:
  Core() : observers_(std::make_shared<PeriodicTimeObservers>([this] { return pace(); })) {}

  std::shared_ptr<AVPlayerItem> item() const {
    std::lock_guard lock(itemMutex_);
    return item_;
  }
  void setItem(const std::shared_ptr<AVPlayerItem>& item);
  bool setRate(float rate);
  void setMuted(bool muted);
  void setFrameSink(std::shared_ptr<VideoFrameSink> sink);
  void seek(const CMTime& time, AVPlayer::SeekCompletion completion);
  // Ends everything; nobody is called any more.
  void close();

  void itemDidFail() override;
  void itemDidReachEnd() override;
  void itemDidJump() override { observers_->timeDidJump(); }
  void itemPaceDidChange() override { observers_->paceDidChange(); }

  PeriodicTimeObservers& observers() { return *observers_; }
  float rate() const { return rate_; }

  AVPlayerActionAtItemEnd actionAtItemEnd = AVPlayerActionAtItemEndPause;

 private:
  PeriodicTimeObservers::Pace pace() const;
  std::shared_ptr<AVPlayerItem> exchangeItem(std::shared_ptr<AVPlayerItem> item);

  mutable std::mutex itemMutex_;
  std::shared_ptr<AVPlayerItem> item_;
  ItemPlayback* playback_ = nullptr;  // the one of item_
  float rate_ = 0;
  bool isMuted_ = false;
  bool isClosed_ = false;
  std::shared_ptr<VideoFrameSink> frameSink_;
  std::shared_ptr<PeriodicTimeObservers> observers_;
};

PeriodicTimeObservers::Pace AVPlayer::Core::pace() const {
  if (!playback_) return {.position = kCMTimeZero};
  const bool runs = playback_->canRun() && !playback_->isAtEnd();
  return {.position = playback_->currentTime(),
          .rate = runs ? rate_ : 0,
          .isSeeking = playback_->isSeeking(),
          .isWaiting = playback_->isBufferEmpty()};
}

void AVPlayer::Core::setItem(const std::shared_ptr<AVPlayerItem>& item) {
  if (item && item->playback()->hasBegun()) {
    throw NSInternalInconsistencyException("An item can play in one player only, and once");
  }
  if (playback_) playback_->letGo();
  const auto old = exchangeItem(item);
  playback_ = item ? item->playback().get() : nullptr;
  if (playback_) {
    playback_->begin(weak_from_this(), {.rate = rate_, .muted = isMuted_, .frameSink = frameSink_});
  } else if (frameSink_) {
    frameSink_->present({});
  }
  observers_->restart();
}

bool AVPlayer::Core::setRate(float rate) {
  if (rate == rate_ || (playback_ && playback_->status() == AVPlayerItemStatusFailed)) return false;
  rate_ = rate;
  if (playback_) playback_->setRate(rate);
  observers_->paceDidChange();
  return true;
}

void AVPlayer::Core::setMuted(bool muted) {
  isMuted_ = muted;
  if (playback_) playback_->setMuted(muted);
}

void AVPlayer::Core::setFrameSink(std::shared_ptr<VideoFrameSink> sink) {
  frameSink_ = std::move(sink);
  if (playback_) playback_->setFrameSink(frameSink_);
}

void AVPlayer::Core::seek(const CMTime& time, AVPlayer::SeekCompletion completion) {
  auto unlessClosed = weakly(weak_from_this(), [completion = std::move(completion)](const Core& self, bool finished) {
    if (completion && !self.isClosed_) completion(finished);
  });
  if (playback_) return playback_->seek(time, std::move(unlessClosed));
  RunLoop::main().post([unlessClosed = std::move(unlessClosed)] { unlessClosed(false); });
}

void AVPlayer::Core::close() {
  isClosed_ = true;
  observers_->close();
  if (playback_) std::exchange(playback_, nullptr)->letGo();
  exchangeItem(nullptr);
}

std::shared_ptr<AVPlayerItem> AVPlayer::Core::exchangeItem(std::shared_ptr<AVPlayerItem> item) {
  std::lock_guard lock(itemMutex_);
  return std::exchange(item_, std::move(item));
}

void AVPlayer::Core::itemDidFail() {
  rate_ = 0;
  observers_->paceDidChange();
}

void AVPlayer::Core::itemDidReachEnd() {
  const auto self = shared_from_this();
  const auto* playback = playback_;
  observers_->catchUp();
  if (isClosed_ || playback_ != playback || !playback_->isAtEnd()) return;
  if (actionAtItemEnd == AVPlayerActionAtItemEndPause && rate_ != 0) {
    rate_ = 0;
    playback_->setRate(0);
  }
  observers_->paceDidChange();
}

AVPlayer::AVPlayer() : core_(std::make_shared<Core>()) {}

AVPlayer::~AVPlayer() {
  auto* loop = RunLoop::mainIfInstalled();
  if (!loop || loop->isCurrent()) {
    core_->close();
  } else {
    loop->post([core = std::move(core_)] { core->close(); });
  }
}

std::shared_ptr<AVPlayer> AVPlayer::playerWithPlayerItem(const std::shared_ptr<AVPlayerItem>& item) {
  YMR_ASSERT_MAIN_THREAD();
  const std::shared_ptr<AVPlayer> player(new AVPlayer);
  player->core_->setItem(item);
  return player;
}

std::shared_ptr<AVPlayerItem> AVPlayer::currentItem() const {
  return core_->item();
}

void AVPlayer::replaceCurrentItemWithPlayerItem(const std::shared_ptr<AVPlayerItem>& item) {
  YMR_ASSERT_MAIN_THREAD();
  if (item == core_->item()) return;
  core_->setItem(item);
  didChangeValueForKey("currentItem");
}

float AVPlayer::rate() const {
  return core_->rate();
}

void AVPlayer::setRate(float rate) {
  YMR_ASSERT_MAIN_THREAD();
  if (rate != 0 && rate != 1) {
    const std::string text = stringWithDouble(rate, 2);
    return g_warning("AVPlayer plays at the rates 0 and 1; %s is refused", text.c_str());
  }
  if (core_->setRate(rate)) didChangeValueForKey("rate");
}

void AVPlayer::setMuted(bool muted) {
  YMR_ASSERT_MAIN_THREAD();
  core_->setMuted(muted);
}
AVPlayerActionAtItemEnd AVPlayer::actionAtItemEnd() const {
  return core_->actionAtItemEnd;
}
void AVPlayer::setActionAtItemEnd(AVPlayerActionAtItemEnd action) {
  core_->actionAtItemEnd = action;
}

CMTime AVPlayer::currentTime() const {
  const auto item = core_->item();
  return item ? item->currentTime() : kCMTimeZero;
}

void AVPlayer::seekToTime(const CMTime& time, const CMTime&, const CMTime&, SeekCompletion completion) {
  YMR_ASSERT_MAIN_THREAD();
  core_->seek(time, std::move(completion));
}

AVPlayerTimeObserverToken AVPlayer::addPeriodicTimeObserver(const CMTime& interval, const dispatch_queue_t& queue,
                                                            std::function<void(CMTime)> block) {
  YMR_ASSERT_MAIN_THREAD();
  return core_->observers().add(interval, queue, std::move(block));
}

void AVPlayer::removeTimeObserver(const AVPlayerTimeObserverToken& token) {
  YMR_ASSERT_MAIN_THREAD();
  core_->observers().remove(token);
}

void AVPlayer::setFrameSink(std::shared_ptr<VideoFrameSink> sink) {
  YMR_ASSERT_MAIN_THREAD();
  core_->setFrameSink(std::move(sink));
}

std::any AVPlayer::valueForKey(std::string_view key) const {
  if (key == "rate") return rate();
  if (key == "currentItem") return currentItem();
  return {};
}
