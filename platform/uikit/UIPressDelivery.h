#pragma once

#include "platform/uikit/UIPress.h"

class QQuickItem;
class QQuickWindow;
class UIView;

// The way of a press through the views. Main thread.
class UIPressDelivery {
 public:
  enum class Phase { began, ended };

  // Offers the press to one view: its recognisers, itself, its view controller. Whether one of them handled it.
  static bool offer(UIView& view, const UIPress& press, Phase phase);
  // Offers it to `first` and what holds it, until one handles it.
  static bool deliver(QQuickItem* first, const UIPress& press, Phase phase);
  // Where presses begin in `window`: what has the focus; without a focus on a visible view, the topmost view. May be
  // null.
  static QQuickItem* firstResponder(QQuickWindow& window);
};
