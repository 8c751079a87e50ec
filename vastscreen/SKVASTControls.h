#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/foundation/NSTimer.h"
#include "vastscreen/SKVASTControlsTarget.h"

class UIBarButtonItem;
class UILabel;
class UIProgressView;
class UIToolbar;

// The toolbar of the stand-alone ad screen: play/pause, the playback time with its progress, info and stop, on a dark
// plate at the foot of the screen's view. Main thread. Held by the screen, which it holds weakly.
//
// The bar follows the view's size and stays 5 % of it away from its edges. Hidden at first, as there is nothing to
// control before the ad plays.
//
// While it shows it has the remote: left and right move over the buttons, Enter presses one; every other press goes on
// to the screen's view and its controller, Play/Pause and Menu among them. While it is hidden all presses go there. A
// press in the bar, by remote, mouse or touch, keeps it up for as long as showControls() does.
class YMR_API SKVASTControls : public std::enable_shared_from_this<SKVASTControls> {
 public:
  // How long the controls stay without a press.
  static constexpr RunLoop::Duration stays = std::chrono::seconds(2);

  // Builds the bar in the view of `player`, with progress 0 and without a time. When the player has gone the buttons do
  // nothing. nil for no player.
  static std::shared_ptr<SKVASTControls> initWithVASTPlayer(const std::weak_ptr<SKVASTControlsTarget>& player);
  SKVASTControls(const SKVASTControls&) = delete;
  SKVASTControls& operator=(const SKVASTControls&) = delete;
  // Takes the bar out of the view.
  ~SKVASTControls();

  // Un-hides the bar, above all that is in the view, and hides it after two seconds; anew when it shows already. Coming
  // from hidden, play/pause has the focus. The bar takes the remote when the screen's view has it.
  void showControls();
  // Hides the bar at once and gives the remote back to the view.
  void hideControls();
  bool isShowing() const;

  // What the buttons do. `sender`, the button, is ignored.
  // Pauses the screen when it plays, else resumes it.
  void pausePlay(const UIBarButtonItem* sender = nullptr);
  void info(const UIBarButtonItem* sender = nullptr);
  void stopButtonTouched(const UIBarButtonItem* sender = nullptr);

  // Does nothing: the one look of the button says play and pause.
  void toggleToPlayButton(bool toPlay);

  // Sets the progress to played / total, 0 when that is no number, and the text to both, "00:05 / 00:30": minutes and
  // seconds, minutes beyond 99 in as many digits as they take. In seconds; what is no time counts as 0. The first
  // parameter, the share played so far, is ignored.
  void updateProgressBar(double percentagePlayed, double playedSeconds, double totalDuration);

  // The parts of the bar, for tests.
  const std::shared_ptr<UIToolbar>& toolbar() const { return toolbar_; }
  const std::shared_ptr<UIProgressView>& progressView() const { return progressView_; }
  const std::shared_ptr<UILabel>& playbackTime() const { return playbackTime_; }

 private:
  explicit SKVASTControls(const std::weak_ptr<SKVASTControlsTarget>& player) : player_(player) {}
  void build(const std::shared_ptr<UIView>& view);
  void hideLater();

  const std::weak_ptr<SKVASTControlsTarget> player_;
  std::shared_ptr<UIToolbar> toolbar_;
  std::shared_ptr<UILabel> playbackTime_;
  std::shared_ptr<UIProgressView> progressView_;
  std::shared_ptr<UIBarButtonItem> pausePlayItem_;
  std::shared_ptr<NSTimer> hideTimer_;
};
