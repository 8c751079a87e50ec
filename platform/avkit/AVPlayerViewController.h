#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/avfoundation/AVPlayer.h"
#include "platform/uikit/UIViewController.h"

class AVPlayerViewController;

// Who hears of a viewer's choices.
class YMR_API AVPlayerViewControllerDelegate {
 public:
  virtual ~AVPlayerViewControllerDelegate();
  // The viewer chose from the captions menu; nil for "Off". The item has selected it already. Called on the main thread
  // from inside the press, once for each choice, also of what was selected before; anything may be called from here.
  virtual void playerViewController(const std::shared_ptr<AVPlayerViewController>& playerViewController,
                                    const std::shared_ptr<AVMediaSelectionOption>& didSelectMediaSelectionOption,
                                    const std::shared_ptr<AVMediaSelectionGroup>& inMediaSelectionGroup) = 0;
};

// The player that a viewer meets: the picture, and over it what a remote control needs. Main thread; always held by
// shared_ptr. Presented like any other controller.
//
// Until the player's rate first leaves 0 it shows black and the spinner; from then on the picture, the caption that is
// due, and the spinner whenever playing waits for data. A programme without pictures shows its artwork and title.
//
// The remote:
//   any button       brings the transport bar, which hides itself 3 s after the last one
//   Play/Pause       toggles; so does Select
//   Left, Right      look for a place in steps of 10 s, larger ones the longer it goes on; the bar shows where. 0.6 s
//                    after the last press, or at Select, it seeks there, once; Up and Down give it up.
//   Down             opens the panel: "Info" (title, description, artwork) and "Subtitles" (Off and the legible
//                    options), those of them that there is anything to show for. Up, from its first row, closes it.
//   Menu             belongs to the recogniser below
// A view that somebody adds over the controller's own view takes the remote as long as it is there: the controls
// vanish, every press that this view's recognisers leave is offered to it, whether or not it has the focus, and what it
// leaves does nothing.
//
// The view's gestureRecognizers hold, from the start, one UITapGestureRecognizer for Menu, which dismisses; whoever
// wants another meaning replaces it. Out of sight (UIApplicationDidEnterBackgroundNotification) the player is paused
// and stays so. The screen saver is kept off while the player plays, or another view is over it.
//
// Kept from the platform: the members below. Left out: picture in picture, playback controls of the host's, navigation
// markers, audio tracks, the display's modes.
class YMR_API AVPlayerViewController : public UIViewController {
 public:
  AVPlayerViewController();
  ~AVPlayerViewController() override;

  // nil for none. Held strongly; given back by setting nil.
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  void setPlayer(std::shared_ptr<AVPlayer> player);

  std::shared_ptr<AVPlayerViewControllerDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<AVPlayerViewControllerDelegate> delegate) { delegate_ = std::move(delegate); }

  // Fills the view, over the picture and under the captions and controls. For the host's own views.
  const std::shared_ptr<UIView>& contentOverlayView();

  // The part of the view, in its points, that neither the transport bar nor a caption covers: where the host's overlay
  // has what is to be read. The whole view while they are not to be seen.
  CGRect unobscuredContentFrame();
  // Called when that has changed; empty, as it starts, for nobody.
  void setUnobscuredContentFrameDidChange(std::function<void()> didChange);

  // The languages (BCP 47) that the captions menu offers; nil, as it starts, for all. A tag also allows its narrower
  // forms ("en" allows "en-GB"), whatever the case. Options without a language are offered only when it is nil. What is
  // selected stays selected.
  const std::optional<std::vector<std::string>>& allowedSubtitleOptionLanguages() const { return languages_; }
  void setAllowedSubtitleOptionLanguages(std::optional<std::vector<std::string>> languages);

  // True while the transport bar is to be seen, or the panel is.
  bool showsPlaybackControls() const;

 protected:
  void loadView() override;
  void viewWillAppear(bool animated) override;
  void viewDidDisappear(bool animated) override;
  bool pressesBegan(const UIPress& press) override;
  void pressesEnded(const UIPress& press) override;
  void pressesCancelled(const UIPress& press) override;

 private:
  class Parts;
  std::shared_ptr<AVPlayer> player_;
  std::optional<std::vector<std::string>> languages_;
  std::unique_ptr<Parts> parts_;  // made with the view
  std::weak_ptr<AVPlayerViewControllerDelegate> delegate_;
};
