#include "platform/avkit/PlaybackWatch.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/dispatch/Weakly.h"
#include "platform/foundation/NSNotificationCenter.h"

namespace {

using Change = PlaybackWatch::Change;

constexpr std::array<std::pair<std::string_view, Change>, 2> playerKeys{{
    {"rate", Change::rate},
    {"currentItem", Change::item},
}};

constexpr std::array<std::pair<std::string_view, Change>, 5> itemKeys{{
    {"status", Change::status},
    {"duration", Change::duration},
    {"loadedTimeRanges", Change::buffer},
    {"playbackBufferEmpty", Change::buffer},
    {"currentCaption", Change::caption},
}};

}  // namespace

std::shared_ptr<PlaybackWatch> PlaybackWatch::watch(std::shared_ptr<AVPlayer> player, Changed changed) {
  std::shared_ptr<PlaybackWatch> watch(new PlaybackWatch(std::move(player), std::move(changed)));
  for (const auto& [key, change] : playerKeys) watch->player_->addObserver(watch, key);
  watch->takeItem();
  return watch;
}

PlaybackWatch::PlaybackWatch(std::shared_ptr<AVPlayer> player, Changed changed)
    : player_(std::move(player)), changed_(std::move(changed)) {}

PlaybackWatch::~PlaybackWatch() {
  leaveItem();
  for (const auto& [key, change] : playerKeys) player_->removeObserver(this, key);
}

void PlaybackWatch::takeItem() {
  item_ = player_->currentItem();
  if (!item_) return;
  for (const auto& [key, change] : itemKeys) item_->addObserver(shared_from_this(), key);
  NSNotificationCenter::defaultCenter().addObserver(
      this, AVPlayerItemDidPlayToEndTimeNotification, item_,
      weakly(weak_from_this(), [](PlaybackWatch& self) { self.changed_(Change::rate); }));
}

void PlaybackWatch::leaveItem() {
  if (!item_) return;
  NSNotificationCenter::defaultCenter().removeObserver(this);
  for (const auto& [key, change] : itemKeys) item_->removeObserver(this, key);
  item_ = nullptr;
}

void PlaybackWatch::observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                           const NSKeyValueChange&, void*) {
  const auto self = shared_from_this();
  const auto tell = [&](const auto& keys) {
    const auto found = std::find_if(keys.begin(), keys.end(), [&](const auto& key) { return key.first == keyPath; });
    if (found == keys.end()) return;
    if (found->second == Change::item) {
      leaveItem();
      takeItem();
    }
    changed_(found->second);
  };
  if (object == player_) {
    tell(playerKeys);
  } else if (object == item_) {
    tell(itemKeys);
  }
}
