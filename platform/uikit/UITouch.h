#pragma once

#include "platform/Export.h"
#include "platform/uikit/values/CGGeometry.h"

class UIView;

// The platform's numbers.
enum UITouchPhase {
  UITouchPhaseBegan = 0,
  UITouchPhaseMoved = 1,
  UITouchPhaseStationary = 2,  // others of the event have changed, this one has not
  UITouchPhaseEnded = 3,
  UITouchPhaseCancelled = 4,  // it is no longer heard of
};

// A finger on the screen, or the mouse with its left button down, at one moment. A plain value.
//
// Kept from the platform: phase and place. The platform's touch is one object for as long as it is down; here it is a
// value a moment, and the identifier says which belong together. Left out: taps, force, pencils.
class YMR_API UITouch {
 public:
  // `location` in the coordinates of the window.
  UITouch(int identifier, UITouchPhase phase, const CGPoint& location)
      : identifier_(identifier), phase_(phase), location_(location) {}

  // The same for as long as the touch is down; no two that are down have the same.
  int identifier() const { return identifier_; }
  UITouchPhase phase() const { return phase_; }
  // In the view's coordinates; the view may be any of the window's.
  CGPoint locationInView(const UIView& view) const;

  // The same touch, at the same place.
  UITouch withPhase(UITouchPhase phase) const { return {identifier_, phase, location_}; }

 private:
  int identifier_;
  UITouchPhase phase_;
  CGPoint location_;
};
