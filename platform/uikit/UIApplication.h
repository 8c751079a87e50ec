#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Export.h"

class IdleInhibitor;

// No window is to be seen any more, or the system has suspended the program. Object: nil.
inline constexpr const char* UIApplicationDidEnterBackgroundNotification =
    "UIApplicationDidEnterBackgroundNotification";
// It is to be seen again. Losing and getting the focus alone is neither. Object: nil.
inline constexpr const char* UIApplicationDidBecomeActiveNotification = "UIApplicationDidBecomeActiveNotification";

// The application object (QGuiApplication) is being destroyed. What plays or shows something ends now, for good and in
// silence, with its views: the run loop and Qt's things go right after. Object: nil.
inline constexpr const char* UIApplicationWillTerminateNotification = "UIApplicationWillTerminateNotification";

// How an interface stands, with the platform's numbers.
enum UIInterfaceOrientation {
  UIInterfaceOrientationPortrait = 1,
  UIInterfaceOrientationPortraitUpsideDown = 2,
  UIInterfaceOrientationLandscapeRight = 3,
  UIInterfaceOrientationLandscapeLeft = 4,
};

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

  // How the main screen stands: landscape right, or portrait where it is higher than wide. There is no status bar that
  // turns; the window alone decides.
  UIInterfaceOrientation statusBarOrientation() const;
  // The orientations that the host says it supports, by name ("UIInterfaceOrientationLandscapeLeft" and so on): what
  // stands under "UISupportedInterfaceOrientations" where a program has a property list. Empty, as it starts: the host
  // says nothing. It turns nothing; view controllers read it to answer shouldAutorotate().
  const std::vector<std::string>& supportedInterfaceOrientations() const { return supportedOrientations_; }
  void setSupportedInterfaceOrientations(std::vector<std::string> names);

  // For windows and tests: whether the program is to be seen. Posts a notification when that changes.
  void setVisible(bool visible);
  // For the run loop: the application object goes.
  void terminate();

 private:
  UIApplication();
  ~UIApplication();
  std::unique_ptr<IdleInhibitor> inhibitor_;
  std::vector<std::string> supportedOrientations_;
  bool inBackground_ = false;
};
