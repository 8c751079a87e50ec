#pragma once

#include <functional>
#include <memory>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/avkit/ControlsView.h"
#include "platform/avkit/Scrubber.h"
#include "platform/foundation/NSTimer.h"
#include "platform/uikit/UIPress.h"

// What the buttons of the remote do to the player and to the controls. Main thread.
//
// What it calls in the player or of the chosen function may end in the remote's own destruction; nothing is touched
// after such a call.
class PlayerRemote {
 public:
  // The viewer chose from the captions menu.
  using Chosen = std::function<void(const CaptionsMenu::Choice&)>;

  PlayerRemote(std::shared_ptr<ControlsView> controls, Chosen chosen);
  ~PlayerRemote();

  void setPlayer(std::shared_ptr<AVPlayer> player);
  // A button went down; true when it has a meaning here.
  bool began(const UIPress& press);
  // It came up, or will not be heard of any more.
  void ended(const UIPress& press);
  // Brings the bar for its usual time, unless the panel is open or the programme has not begun.
  void showBar();
  // Everything vanishes; a burst of seeking is given up.
  void dismissControls();
  // What the player's item offers has changed.
  void itemChanged();
  void giveUpSeeking() { scrubber_.cancel(); }

 private:
  void repeated(UIPressType type);
  void handle(UIPressType type);
  void handleInPanel(UIPressType type);
  void openPanel();
  void updatePages();
  void toggle();
  void hideBarLater();
  void targetChanged();

  const std::shared_ptr<ControlsView> controls_;
  const Chosen chosen_;
  std::shared_ptr<AVPlayer> player_;
  Scrubber scrubber_;
  std::shared_ptr<NSTimer> hideTimer_;
};
