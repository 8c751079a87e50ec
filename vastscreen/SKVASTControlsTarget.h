#pragma once

#include <memory>

#include "platform/Export.h"

class UIView;

// The screen that SKVASTControls acts on. Main thread; each call may come from inside the press of a button, and may
// destroy the controls.
class YMR_API SKVASTControlsTarget {
 public:
  virtual ~SKVASTControlsTarget() = default;

  virtual void pause() = 0;
  virtual void resume() = 0;
  // True while the ad plays: the next press of play/pause pauses it.
  virtual bool isPlaying() const = 0;
  // The viewer wants to know more of what is advertised.
  virtual void info() = 0;
  // Ends the screen.
  virtual void close() = 0;
  // What the toolbar is laid into; never nil.
  virtual std::shared_ptr<UIView> view() = 0;
};
