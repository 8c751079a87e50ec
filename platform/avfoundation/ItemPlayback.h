#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/avfoundation/AVPlayerItem.h"
#include "platform/avfoundation/EngineSession.h"

// The engine's side of an item: what the engine reports becomes the item's state, notifications and jumps, in the order
// that players and their hosts rely on. An item owns it; the item's player drives it. Main thread, except
// currentTime().
//
// Life: made idle; begun by a player, once; ends by failing or by being let go of, and is then silent.
class ItemPlayback final : public EngineListener, public std::enable_shared_from_this<ItemPlayback> {
 public:
  // The player, as far as its item needs to know it. It is told before the item's observers are.
  class Player {
   public:
    virtual ~Player() = default;
    virtual void itemDidFail() = 0;
    virtual void itemDidReachEnd() = 0;
    virtual void itemDidJump() = 0;
    // Time began or ceased to run, or may have.
    virtual void itemPaceDidChange() = 0;
  };

  // How the player wants it played.
  struct Settings {
    double rate = 0;
    bool muted = false;
    std::shared_ptr<VideoFrameSink> frameSink;
  };

  // Tells the item's observers that the key has changed.
  using Notify = std::function<void(std::string_view key)>;
  using SeekCompletion = std::function<void(bool finished)>;

  ItemPlayback(std::shared_ptr<AVURLAsset> asset, std::weak_ptr<AVPlayerItem> item, Notify notify);

  // For the player.

  bool hasBegun() const { return hasBegun_; }
  void begin(const std::weak_ptr<Player>& player, const Settings& settings);
  void letGo();
  void setRate(double rate);
  void setMuted(bool muted);
  void setFrameSink(std::shared_ptr<VideoFrameSink> sink);
  // Clamps and carries out as AVPlayer::seekToTime says. The completion is called once, on a later turn, always.
  void seek(const CMTime& time, SeekCompletion completion);

  // Decoded and able to play, and no seek is under way.
  bool canRun() const { return session_ && session_->isReady() && !seek_; }
  bool isSeeking() const { return seek_.has_value(); }
  bool isAtEnd() const { return isAtEnd_; }

  // For the item.

  AVPlayerItemStatus status() const { return status_; }
  const std::optional<NSError>& error() const { return error_; }
  CMTime currentTime() const;
  CMTime duration() const { return duration_; }
  std::vector<CMTimeRange> loadedTimeRanges() const;
  bool isBufferEmpty() const { return isBufferEmpty_; }
  bool isLikelyToKeepUp() const { return isLikelyToKeepUp_; }
  const std::optional<MediaCaption>& caption() const { return caption_; }
  const std::optional<std::string>& legibleTrack() const { return legibleTrack_; }
  void selectLegibleTrack(const std::optional<std::string>& identifier);

  void engineDidBecomeReady() override { becomeReady(); }
  void engineDidFail(const NSError& error) override { fail(error); }
  void engineDurationDidChange() override;
  void engineDidJump() override;
  void engineBufferingDidChange() override;
  void engineDidReachEnd() override;
  void engineCaptionDidChange(const std::optional<MediaCaption>& caption) override;

 private:
  struct Seek {
    CMTime target;
    SeekCompletion completion;
    bool isStanding;  // goes where the pipeline stands already, so the engine does not hear of it
  };

  // True while there is somebody to hear the item, and it has not had its last word.
  bool speaks() const { return hasBegun_ && !isLetGo_ && status_ != AVPlayerItemStatusFailed; }
  // Tells the key's observers; false when one of them replaced the item or destroyed the player.
  bool notify(std::string_view key);
  void post(void (ItemPlayback::*action)());
  void becomeReady();
  void failWithAsset();
  void fail(const NSError& error);
  void updateBuffering();
  bool standsAt(const CMTime& target) const;
  void supersedeSeek();
  void tellOfJump();
  void finishSeek(bool finished);
  // Freezes what is known and ends the engine.
  void dropSession();
  CMTime position() const;
  void sample() const;

  const std::shared_ptr<AVURLAsset> asset_;
  const std::weak_ptr<AVPlayerItem> item_;
  const Notify notify_;
  std::weak_ptr<Player> player_;
  std::shared_ptr<EngineSession> session_;
  bool hasBegun_ = false;
  bool isLetGo_ = false;
  bool isAtEnd_ = false;
  double rate_ = 0;
  bool hasMoved_ = false;  // played or sought
  std::optional<Seek> seek_;
  unsigned seeks_ = 0;  // how many were asked for: tells a seek from the one that took its place

  AVPlayerItemStatus status_ = AVPlayerItemStatusUnknown;
  std::optional<NSError> error_;
  CMTime duration_;
  std::vector<CMTimeRange> loadedTimeRanges_;
  bool isBufferEmpty_ = false;
  bool isLikelyToKeepUp_ = false;
  std::optional<MediaCaption> caption_;
  std::optional<std::string> legibleTrack_;

  mutable std::mutex sampleMutex_;
  mutable CMTime sampled_;  // the time as other threads read it
};
