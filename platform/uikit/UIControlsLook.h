#pragma once

#include "platform/uikit/values/UIColor.h"

// The colours of controls that are drawn over a picture, the same as the player's own.
namespace UIControlsLook {

inline constexpr UIColor plate = UIColor::colorWithRed(20 / 255.0, 22 / 255.0, 25 / 255.0, 0.94);
inline constexpr UIColor accent = UIColor::colorWithRed(1, 184 / 255.0, 28 / 255.0, 1);
// What is drawn on the accent.
inline constexpr UIColor ink = UIColor::colorWithWhite(20 / 255.0, 1);
// What can be pressed but has no focus.
inline constexpr UIColor button = UIColor::colorWithWhite(1, 0.2);
inline constexpr UIColor track = UIColor::colorWithWhite(1, 0.25);

}  // namespace UIControlsLook
