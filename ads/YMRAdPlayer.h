#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Export.h"
#include "platform/avfoundation/AVPlayer.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

class AVPlayerLayer;
class CALayer;
class UIView;

// Plays the film of one ad: its item, a player of its own, the layer that shows it, and all that is observed of them.
// Main thread.
//
// May be destroyed at any moment, also from inside one of its listener's functions. Observers, layer and player then go
// at once, in this order: the listener hears nothing more, and of no pause that nobody made.
class YMR_API YMRAdPlayer {
 public:
  // Who is told how the film goes. May do anything from inside, the player's destruction included.
  class YMR_API Listener {
   public:
    virtual ~Listener();
    // Each second of the film, and after a jump.
    virtual void adPlayerTick(const CMTime& time) = 0;
    // "status" or "playbackLikelyToKeepUp" of the item, "rate" of the player. The second comes once from listen()
    // itself.
    virtual void adPlayerDidChange(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                   const NSKeyValueChange& change) = 0;
    // The first picture is there.
    virtual void adPictureDidArrive() = 0;
    // The film has played to its end. The spelling, with its capital L, is given and stays.
    virtual void adDidPLayToEndTime() = 0;
    // The item has failed; the last word, after adPlayerDidChange().
    virtual void adItemDidFail(const NSError& error) = 0;
  };

  // Begins to load the film; nil is one that fails. Only what an ad may be in is opened, unless `anyContainer`. Throws
  // when no player can be made.
  explicit YMRAdPlayer(const std::optional<NSURL>& film, bool anyContainer = false);
  // Goes on with a film that may have been made ready.
  explicit YMRAdPlayer(const std::shared_ptr<AVURLAsset>& film);
  YMRAdPlayer(const YMRAdPlayer&) = delete;
  YMRAdPlayer& operator=(const YMRAdPlayer&) = delete;
  ~YMRAdPlayer();

  // Never nil. It plays when it is told to.
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  const std::shared_ptr<AVPlayerItem>& item() const { return item_; }
  const std::shared_ptr<AVPlayerLayer>& layer() const { return layer_; }

  // Shows the film in all of `view`, on top of what it holds.
  void showIn(UIView& view);
  bool isShown() const;
  // Parts from the film's last picture: the layer stays where it is shown, and goes on showing it when the player of
  // the ad goes. nil, and nothing of it, before the first picture.
  std::shared_ptr<CALayer> leavePicture();
  // Tells `listener` from now on. Once.
  void listen(std::weak_ptr<Listener> listener);
  // Tells nobody any more.
  void stopListening();

 private:
  class Watch;

  const std::shared_ptr<AVPlayerItem> item_;
  const std::shared_ptr<AVPlayer> player_;
  const std::shared_ptr<AVPlayerLayer> layer_;
  std::shared_ptr<Watch> watch_;  // while somebody listens
};
