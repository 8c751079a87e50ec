#pragma once

#include <memory>

#include "platform/Export.h"

class IdleInhibitor;

// No window is to be seen any more, or the system has suspended the program. Object: nil.
inline constexpr const char* UIApplicationDidEnterBackgroundNotification =
    "UIApplicationDidEnterBackgroundNotification";
// It is to be seen again. Losing and getting the focus alone is neither. Object: nil.
inline constexpr const char* UIApplicationDidBecomeActiveNotification = "UIApplicationDidBecomeActiveNotification";

// The running program. Main thread.
class YMR_API UIApplication {
 public:
  static UIApplication& sharedApplication();

  // True keeps the screen saver and the screen's switching off away; for as long as something plays. Uses what there
  // is: the session's screen saver service, the X server; with neither it has no effect.
  bool isIdleTimerDisabled() const;
  void setIdleTimerDisabled(bool disabled);

  // True between the two notifications.
  bool isInBackground() const;

  // For windows and tests: whether the program is to be seen. Posts a notification when that changes.
  void setVisible(bool visible);

 private:
  UIApplication();
  ~UIApplication();
  std::unique_ptr<IdleInhibitor> inhibitor_;
  bool inBackground_ = false;
};
