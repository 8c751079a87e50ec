#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "tests/support/Reaction.h"
#include "tests/support/ScriptedMediaEngine.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

inline CMTime seconds(double value) {
  return CMTimeMakeWithSeconds(value, 1000000000);
}

inline std::string text(const CMTime& time) {
  std::ostringstream out;
  out.precision(12);
  out << CMTimeGetSeconds(time);
  return out.str();
}

// Writes down, in order, what players and items say.
class Diary final : public NSKeyValueObserver {
 public:
  ~Diary() override { NSNotificationCenter::defaultCenter().removeObserver(this); }

  void note(std::string line) { lines_.push_back(std::move(line)); }
  // What was noted since the last time.
  std::vector<std::string> take() { return std::exchange(lines_, {}); }
  const std::vector<std::string>& lines() const { return lines_; }

  static void watch(const std::shared_ptr<Diary>& diary, const std::shared_ptr<NSObject>& object,
                    const std::vector<std::string>& keys) {
    for (const auto& key : keys) object->addObserver(diary, key, NSKeyValueObservingOptionNew);
  }

  // "status 1", "ended", "jumped to 12", …
  static void watch(const std::shared_ptr<Diary>& diary, const std::shared_ptr<AVPlayer>& player,
                    const std::shared_ptr<AVPlayerItem>& item) {
    watch(diary, player, {"rate"});
    watch(diary, item, {"status", "duration", "playbackBufferEmpty", "playbackLikelyToKeepUp", "currentCaption"});
    auto& center = NSNotificationCenter::defaultCenter();
    center.addObserver(diary.get(), AVPlayerItemDidPlayToEndTimeNotification, item,
                       [self = diary.get()](const NSNotification&) { self->note("ended"); });
    center.addObserver(diary.get(), AVPlayerItemTimeJumpedNotification, item,
                       [self = diary.get()](const NSNotification& notification) {
                         const auto* jumped = static_cast<AVPlayerItem*>(notification.object.get());
                         self->note("jumped to " + text(jumped->currentTime()));
                       });
  }

  void observeValueForKeyPath(const std::string& key, const std::shared_ptr<NSObject>&, const NSKeyValueChange& change,
                              void*) override {
    note(key + " " + valueText(change.newValue));
  }

 private:
  static std::string valueText(const std::any& value) {
    if (const auto* flag = std::any_cast<bool>(&value)) return *flag ? "yes" : "no";
    if (const auto* rate = std::any_cast<float>(&value)) return text(seconds(*rate));
    if (const auto* time = std::any_cast<CMTime>(&value)) return text(*time);
    if (const auto* status = std::any_cast<AVPlayerItemStatus>(&value)) return std::to_string(*status);
    if (const auto* caption = std::any_cast<std::optional<MediaCaption>>(&value)) {
      return *caption ? (*caption)->text : "nil";
    }
    if (const auto* ranges = std::any_cast<std::vector<CMTimeRange>>(&value)) return std::to_string(ranges->size());
    return "?";
  }

  std::vector<std::string> lines_;
};

// A player of one scripted programme of 60 s on virtual time.
class PlayerTest : public testing::Test {
 protected:
  static constexpr const char* programme = "http://example.com/programme.mp4";
  static constexpr const char* advertisement = "http://example.com/ad.mp4";

  static std::shared_ptr<AVPlayerItem> itemOf(const char* url) {
    return AVPlayerItem::playerItemWithURL(NSURL::URLWithString(url));
  }

  // A player that has just been made, and is being written down.
  void open(const char* url = programme) {
    item = itemOf(url);
    player = AVPlayer::playerWithPlayerItem(item);
    Diary::watch(diary, player, item);
  }
  // As open(), and ready.
  void openReady(const char* url = programme) {
    open(url);
    loop.advance(50ms);
    diary->take();
  }
  void tickEvery(double interval, const std::string& name = "tick") {
    token = player->addPeriodicTimeObserver(seconds(interval), nullptr,
                                            [this, name](CMTime time) { diary->note(name + " " + text(time)); });
  }
  AVPlayer::SeekCompletion noted() {
    return [self = diary](bool finished) { self->note(finished ? "finished" : "not finished"); };
  }
  ScriptedMediaEngine& engine() { return *media.engine(); }
  std::string position() { return text(player->currentTime()); }

  VirtualRunLoop loop;
  ScriptedMedia media;
  std::shared_ptr<Diary> diary = std::make_shared<Diary>();
  std::shared_ptr<AVPlayerItem> item;
  std::shared_ptr<AVPlayer> player;
  AVPlayerTimeObserverToken token;
};
