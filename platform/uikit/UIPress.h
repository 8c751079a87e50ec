#pragma once

#include <optional>

#include "platform/Export.h"

class QQuickWindow;

// The buttons of a remote, with the platform's numbers.
enum UIPressType {
  UIPressTypeUpArrow = 0,
  UIPressTypeDownArrow = 1,
  UIPressTypeLeftArrow = 2,
  UIPressTypeRightArrow = 3,
  UIPressTypeSelect = 4,
  UIPressTypeMenu = 5,
  UIPressTypePlayPause = 6,
};

// One press of a button, while it goes down, stays down and comes up.
//
// A press is offered to the first responder, then to what holds it, up to the window. At each view the gesture
// recognisers come first, then the view itself, then its view controller; the first that handles it ends the way. It
// alone hears how the press goes on: repetitions, and either the end or, when its view has left the window or is hidden
// by then, or the window has lost the keys, that it is cancelled.
struct UIPress {
  UIPressType type = UIPressTypeSelect;
  // The button is being held and this is one of the repetitions. Recognisers do not see repetitions.
  bool isRepeat = false;
};

// The button that a key of Qt's stands for; nil for a key that no remote has. Arrows; Return, Enter and Select; Space
// and the media keys play/pause; Escape, Backspace, Back, Menu and Exit.
YMR_API std::optional<UIPressType> UIPressTypeForKey(int qtKey);

// Presses and lets go of a button as if the remote of `window` had done it, whether or not the window has the focus.
// Returns whether somebody handled it. Main thread.
YMR_API bool UIPressSend(QQuickWindow& window, UIPressType type);
