#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/avfoundation/AVPlayer.h"

// Tells of every change of a player, and of the item that it has at the time, that a screen can show. Main thread.
class PlaybackWatch final : public NSKeyValueObserver, public std::enable_shared_from_this<PlaybackWatch> {
 public:
  // What changed; a new item counts as all of the item's facts having changed, and an end, which stops a player
  // without a word, as a change of rate. May let go of the watch.
  enum class Change { rate, item, status, duration, buffer, caption };
  using Changed = std::function<void(Change)>;

  static std::shared_ptr<PlaybackWatch> watch(std::shared_ptr<AVPlayer> player, Changed changed);
  ~PlaybackWatch() override;

  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  const std::shared_ptr<AVPlayerItem>& item() const { return item_; }

 private:
  PlaybackWatch(std::shared_ptr<AVPlayer> player, Changed changed);
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context) override;
  void takeItem();
  void leaveItem();

  const std::shared_ptr<AVPlayer> player_;
  const Changed changed_;
  std::shared_ptr<AVPlayerItem> item_;
};
