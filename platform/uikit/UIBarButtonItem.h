#pragma once

#include <functional>
#include <memory>

#include "platform/Export.h"

class UIView;

// The items that a bar draws by itself. Play/pause, which shows both, and info are this system's own.
enum UIBarButtonSystemItem {
  UIBarButtonSystemItemFixedSpace = 6,
  UIBarButtonSystemItemStop = 14,
  UIBarButtonSystemItemPlayPause = 100,
  UIBarButtonSystemItemInfo = 101,
};

// One thing on a UIToolbar: a button, a space between others, or a view. Held by the bar and whoever made it. Main
// thread.
//
// Kept from the platform: system items, fixed spaces, custom views. Left out: titles, images, styles, disabled buttons.
class YMR_API UIBarButtonItem {
 public:
  // Called when the button is pressed, and may do anything, destroying the bar included. It must hold its target
  // weakly.
  using Action = std::function<void(UIBarButtonItem& sender)>;

  // A button, or a fixed space, whose action is never called.
  explicit UIBarButtonItem(UIBarButtonSystemItem item, Action action = {});
  // A view, which becomes as high as the bar. nil is an empty one.
  explicit UIBarButtonItem(std::shared_ptr<UIView> customView);
  UIBarButtonItem(const UIBarButtonItem&) = delete;
  UIBarButtonItem& operator=(const UIBarButtonItem&) = delete;
  ~UIBarButtonItem();

  UIBarButtonSystemItem systemItem() const { return systemItem_; }
  // nil for system items.
  const std::shared_ptr<UIView>& customView() const { return customView_; }
  // Whether it can have the focus and be pressed.
  bool isButton() const { return !customView_ && systemItem_ != UIBarButtonSystemItemFixedSpace; }
  const Action& action() const { return action_; }

  // Of a space or a custom view, in points of a bar of standard height (see UIToolbar). 0, as it starts: no space; a
  // custom view shares what the rest leaves of the bar. Read when the bar is laid out, so set it before the bar has the
  // item.
  double width() const { return width_; }
  void setWidth(double width) { width_ = width; }

 private:
  const UIBarButtonSystemItem systemItem_;
  const std::shared_ptr<UIView> customView_;
  const Action action_;
  double width_ = 0;
};
