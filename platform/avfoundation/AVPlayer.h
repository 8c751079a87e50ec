#pragma once

#include <any>
#include <functional>
#include <memory>

#include "platform/Export.h"
#include "platform/avfoundation/AVPlayerItem.h"
#include "platform/avfoundation/engine/VideoFrame.h"
#include "platform/coremedia/CMTime.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSObject.h"

enum AVPlayerActionAtItemEnd {
  AVPlayerActionAtItemEndPause = 1,  // the rate becomes 0
  AVPlayerActionAtItemEndNone = 2,   // the rate stays; the last picture is held
};

class AVPlayerPeriodicObserver;
// Names a periodic time observer. The player holds the observer; the token may be held or forgotten.
using AVPlayerTimeObserverToken = std::shared_ptr<AVPlayerPeriodicObserver>;

// Plays an item. Always held by shared_ptr. Main thread, except currentItem().
//
// Keys to observe: "rate" and "currentItem". "rate" notifies inside play(), pause() and setRate(), when the value
// changes. An end (with end action pause) and a failure of the item set the rate to 0 without a notification: they have
// notifications of their own. Everything else that a player has to say comes on later turns of the main queue. When it
// is destroyed nobody is called any more. Anything may be called, destruction included, from inside whatever it calls.
//
// Kept from the platform: rate, mute, exact seeking, end action, periodic observers. Left out: queues of items, volume,
// boundary observers, external playback, rates other than 0 and 1, waiting to minimise stalls.
class YMR_API AVPlayer : public NSObject {
 public:
  using SeekCompletion = std::function<void(bool finished)>;

  // A nil item gives a player without one. Throws NSInternalInconsistencyException for an item that a player has had.
  static std::shared_ptr<AVPlayer> playerWithPlayerItem(const std::shared_ptr<AVPlayerItem>& item);
  ~AVPlayer() override;

  // Any thread.
  std::shared_ptr<AVPlayerItem> currentItem() const;
  // Lets go of the present item and takes the new one (or none) with the rate, mute and frame sink that are set.
  void replaceCurrentItemWithPlayerItem(const std::shared_ptr<AVPlayerItem>& item);

  // 0 holds, 1 plays. While the item waits for data the rate stays what was asked for. A failed item's stays 0. There
  // is no playing faster, slower or backwards: any other rate is refused with a warning of GLib's, and changes nothing.
  float rate() const;
  void setRate(float rate);
  void play() { setRate(1); }
  void pause() { setRate(0); }

  void setMuted(bool muted);
  AVPlayerActionAtItemEnd actionAtItemEnd() const;
  void setActionAtItemEnd(AVPlayerActionAtItemEnd action);

  // The item's time; zero without an item.
  CMTime currentTime() const;
  // Goes to exactly `time`, clamped to the item: exact is within any tolerance. The completion comes on a later turn:
  // true when the seek was carried out; false when another one took its place, the item failed or was replaced, there
  // is none, the time is not numeric, or the media can't go elsewhere and plays on. A seek to where a paused item
  // stands leaves the picture alone, and jumps and completes like any other. Order: AVPlayerItemTimeJumpedNotification,
  // periodic observers, completion.
  void seekToTime(const CMTime& time, const CMTime& toleranceBefore, const CMTime& toleranceAfter,
                  SeekCompletion completion = {});
  void seekToTime(const CMTime& time, SeekCompletion completion = {}) {
    seekToTime(time, kCMTimeZero, kCMTimeZero, std::move(completion));
  }

  // Calls `block` on `queue` (nil: the main queue) with each multiple of `interval` that the item's time reaches, 0
  // and the end included, and once after each jump with the time jumped to; never while a seek is under way. Each
  // multiple comes once, in order, also across pauses and stalls. Nil, and no calls, for an interval that isn't
  // positive.
  AVPlayerTimeObserverToken addPeriodicTimeObserver(const CMTime& interval, const dispatch_queue_t& queue,
                                                    std::function<void(CMTime)> block);
  // No call begins after this, on any queue. Nil and others' tokens are ignored.
  void removeTimeObserver(const AVPlayerTimeObserverToken& token);

  // Where the pictures of the current item, whichever it is, go; nil for nowhere. For AVPlayerLayer.
  void setFrameSink(std::shared_ptr<VideoFrameSink> sink);

 protected:
  std::any valueForKey(std::string_view key) const override;

 private:
  class Core;
  AVPlayer();
  std::shared_ptr<Core> core_;
};
