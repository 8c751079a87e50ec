#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/Export.h"
#include "platform/avfoundation/AVPlayer.h"
#include "platform/foundation/NSObject.h"
#include "platform/uikit/UIEvent.h"

class ASBPlayerScrubbing;
class UILabel;
class UISlider;
class UIView;

// Hears of each refresh.
class YMR_API ASBPlayerScrubbingDelegate {
 public:
  virtual ~ASBPlayerScrubbingDelegate();
  // The labels say where the player is now. Main thread; anything may be called from here, the destruction of
  // `scrubbing` included. What it throws is caught and logged.
  virtual void playerScrubbingDidUpdateTime(const std::shared_ptr<ASBPlayerScrubbing>& scrubbing) = 0;
};

// Keeps up to three labels (elapsed, total and remaining time) in step with a player, once a frame, and does what a
// play button and a slider need. For hosts that build controls of their own; all parts are optional.
//
//   auto scrubbing = std::make_shared<ASBPlayerScrubbing>();
//   scrubbing->setCurrentTimeLabel(elapsed);      // held weakly, as the delegate is
//   scrubbing->setRemainingTimeLabel(remaining);
//   scrubbing->setPlayer(player);                 // held strongly
//   slider->setValueChanged([weak = std::weak_ptr(scrubbing)](UISlider& slider, const UIEvent& event) {
//     if (const auto self = weak.lock()) self->sliderValueChanged(&slider, event);
//   });
//
// Always held by shared_ptr. Main thread. A refresh with neither labels nor a delegate costs next to nothing.
class YMR_API ASBPlayerScrubbing : public NSKeyValueObserver, public std::enable_shared_from_this<ASBPlayerScrubbing> {
 public:
  // Calls setup().
  ASBPlayerScrubbing();
  ASBPlayerScrubbing(const ASBPlayerScrubbing&) = delete;
  ASBPlayerScrubbing& operator=(const ASBPlayerScrubbing&) = delete;
  // Stops observing "duration" when the item is a live stream, the one case in which it surely still does. Does nothing
  // else: another observation of the item ends with the item, and the player's tick takes itself off when it next
  // comes.
  ~ASBPlayerScrubbing() override;
  // For who makes it from an interface file: calls setup().
  void awakeFromNib() { setup(); }
  // Shows the minus sign.
  void setup() { setShowMinusSignOnRemainingTime(true); }

  // nil at first, and again when somebody else lets go of the last reference.
  std::shared_ptr<UILabel> durationLabel() const { return durationLabel_.lock(); }
  void setDurationLabel(std::weak_ptr<UILabel> label) { durationLabel_ = std::move(label); }
  std::shared_ptr<UILabel> currentTimeLabel() const { return currentTimeLabel_.lock(); }
  void setCurrentTimeLabel(std::weak_ptr<UILabel> label) { currentTimeLabel_ = std::move(label); }
  std::shared_ptr<UILabel> remainingTimeLabel() const { return remainingTimeLabel_.lock(); }
  void setRemainingTimeLabel(std::weak_ptr<UILabel> label) { remainingTimeLabel_ = std::move(label); }
  std::shared_ptr<ASBPlayerScrubbingDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<ASBPlayerScrubbingDelegate> delegate) { delegate_ = std::move(delegate); }

  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  // Pauses the player before, if any, and lets go of it; sets the elapsed time to zero and keeps in step with the new
  // one (nil: with none). The frame rate is that of its item now, or, while the asset has not loaded, as soon as the
  // duration is known. An item that the player takes later is followed at the same frame rate; its duration is not
  // waited for. Called from inside the pause, the inner call counts.
  void setPlayer(const std::shared_ptr<AVPlayer>& player);

  // Whether the hours are shown when they are 0; false at first. This and the next two refresh when the value changes.
  bool showTimeHours() const { return showTimeHours_; }
  void setShowTimeHours(bool shows);
  // Whether the number of the frame within its second is shown; false at first.
  bool showTimeFrames() const { return showTimeFrames_; }
  void setShowTimeFrames(bool shows);
  // Whether a negative time is written as one; true after setup().
  bool showMinusSignOnRemainingTime() const { return showMinusSignOnRemainingTime_; }
  void setShowMinusSignOnRemainingTime(bool shows);

  // Whether the player played when the last drag began. For the host, who decides what happens after a drag.
  bool playAfterDrag() const { return playAfterDrag_; }
  void setPlayAfterDrag(bool plays) { playAfterDrag_ = plays; }
  // Frames a second of the player's media; 0 before there are any, and without pictures. One that is set counts for the
  // frames in the labels, and as the pace of the next setupTimeObserver().
  double nbFramesPerSecond() const { return nbFramesPerSecond_; }
  void setNbFramesPerSecond(double frames) { nbFramesPerSecond_ = frames; }
  // What a frame lasts, in seconds: 0 before the first player, infinite without pictures. Setting it moves nothing.
  double frameDuration() const { return frameDuration_; }
  void setFrameDuration(double seconds) { frameDuration_ = seconds; }
  // Frames a second of the first video track of the player's current item's asset; 0 when there is none, or the asset
  // has not loaded.
  static double nominalFrameRateForPlayer(const std::shared_ptr<AVPlayer>& player);

  // The player's observer that calls playerTimeChanged(); nil when there is none. Held by the player alone.
  AVPlayerTimeObserverToken timeObserver() const { return timeObserver_.lock(); }
  // Has the player call once a frame, at no lower bound, unless it does so already or nbFramesPerSecond() is not more
  // than 0: media without pictures refresh only when their duration becomes known.
  void setupTimeObserver();
  // Nothing when there is none.
  void removeTimeObserver();
  // Refreshes the labels and tells the delegate. Nothing without a current item. While the duration is unknown or
  // endless its label stays as it is, and the remaining time counts from 0.
  void playerTimeChanged();
  // Set a label, if it is there. Seconds; what remains is given as a positive number and shown as a negative one.
  void updateDurationLabelWithTime(double seconds);
  void updateCurrentTimeLabelWithTime(double seconds);
  void updateRemainingTimeLabelWithTime(double seconds);

  // "01:05", with U+2212 before it when it is negative, with ":frames" behind it and "hours:" before it where they are
  // to be shown; everything is cut off, nothing rounded. An hour here has 1440 seconds, of which 24 come off what the
  // minutes count: 3600 seconds are "2:59:12". What is not finite counts as 0, and what is beyond 10^12 seconds as
  // that.
  std::string timecodeForTimeInterval(double seconds) const;

  // The play button: pauses what plays, plays what is paused, and plays again from the start what has ended. `sender`
  // is ignored.
  void playPause(const UIView* sender = nullptr);
  // Each phase of a slider's drag: notes at the beginning whether the player plays, and pauses it; then calls
  // updatePlayer(). The first touch of the event decides; an event without one is none of the phases. `slider` is
  // ignored and may be nil.
  void sliderValueChanged(const UISlider* slider, const UIEvent& event);
  // What follows each phase; `dragEnded` when it was the last. Does nothing: where to go, and whether to play on, is
  // the host's to decide.
  virtual void updatePlayer(bool dragEnded);

 private:
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context) override;
  void learnFrameRate();
  void setFlag(bool& flag, bool value);

  std::weak_ptr<UILabel> durationLabel_;
  std::weak_ptr<UILabel> currentTimeLabel_;
  std::weak_ptr<UILabel> remainingTimeLabel_;
  std::shared_ptr<AVPlayer> player_;
  std::weak_ptr<ASBPlayerScrubbingDelegate> delegate_;
  bool showTimeHours_ = false;
  bool showTimeFrames_ = false;
  bool showMinusSignOnRemainingTime_ = false;
  bool playAfterDrag_ = false;
  std::weak_ptr<AVPlayerPeriodicObserver> timeObserver_;
  double frameDuration_ = 0;
  double nbFramesPerSecond_ = 0;
};
