#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/avkit/SeekBurst.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/NSTimer.h"

// The part of `item` that can be gone to, in seconds: all of a programme, of a live stream what is buffered. nil when
// nothing is known, or there is nowhere to go.
std::optional<std::pair<double, double>> reachableRange(const std::shared_ptr<AVPlayerItem>& item);

// Turns left and right presses into seeks of a player: one seek a burst of presses, when the viewer has found the
// place. The player goes on playing meanwhile. Main thread.
class Scrubber {
 public:
  using Direction = SeekBurst::Direction;

  // `changed` is called when target() has changed.
  explicit Scrubber(std::function<void()> changed);

  // Gives up what was begun; nil for none.
  void setPlayer(std::shared_ptr<AVPlayer> player);

  // A button went down: a step. Nothing when the player has nowhere to go.
  void press(Direction direction);
  // It is still down: a step now and then, however often this comes. The seek waits.
  void repeat(Direction direction);
  // It came up, or was forgotten about: repetitions no longer come. The seek follows when no other press does.
  void release();
  // Seeks now. Nothing when there is no burst.
  void commit();
  void cancel();

  // Where the burst would lead, in seconds; nil when there is none.
  std::optional<double> target() const;

 private:
  void step(Direction direction);
  void commitAfter(RunLoop::Duration delay);

  const std::function<void()> changed_;
  std::shared_ptr<AVPlayer> player_;
  std::optional<SeekBurst> burst_;
  RunLoop::Duration lastStep_{};
  std::shared_ptr<NSTimer> timer_;  // of the seek
};
