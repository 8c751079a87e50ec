#pragma once

#include <functional>
#include <memory>

#include "platform/foundation/NSObject.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/UIView.h"

class UIPresentation;
class UIWindow;

// Owns a view and what happens in it; shows others over the whole window. Always held by shared_ptr. Main thread.
//
// Kept from the platform: the view is made on first use; a presented controller is held by the one that presents it,
// covers the window, follows its size and has the presses until it is dismissed; Menu, when it leaves that, goes to the
// one that presents it. Unlike the platform's, a dismissal frees the place at once, so that the next controller may be
// presented while the last one fades out. Left out: containment, presentation styles, rotation, notices to the one that
// is covered.
class YMR_API UIViewController : public NSObject {
 public:
  using Completion = std::function<void()>;

  UIViewController();
  ~UIViewController() override;

  // Made by loadView() when it is asked for first, followed by viewDidLoad().
  const std::shared_ptr<UIView>& view();
  void setView(std::shared_ptr<UIView> view);
  bool isViewLoaded() const { return view_ != nullptr; }

  // Shows `controller` over the window of this one's view; animated, it fades in. `completion` (may be empty) runs on a
  // later turn of the main queue, when it is fully there, exactly once. Ignored, and the completion dropped, when
  // `controller` is nil or already presented, when this one already presents another, or when its view is in no window.
  void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                             Completion completion = {});
  // Dismisses what this one presents, with everything above it; what presents nothing but is presented dismisses
  // itself. `completion` runs on a later turn when it is gone, exactly once. Ignored, and the completion dropped, when
  // there is nothing to dismiss.
  void dismissViewControllerAnimated(bool animated, Completion completion = {});
  std::shared_ptr<UIViewController> presentedViewController() const { return presented_; }
  std::shared_ptr<UIViewController> presentingViewController() const { return presenting_.lock(); }

  // The view that has the presses first when the controller appears; the controller's view by default.
  virtual std::shared_ptr<UIView> preferredFirstResponder();

  // What a system with a status bar, whose screen turns, asks of a controller that is presented. This one has neither,
  // so nothing follows from the answers; hosts may ask. By default the status bar shows, the view turns with the
  // screen, and appears as the application stands.
  virtual bool prefersStatusBarHidden() const;
  virtual bool shouldAutorotate() const;
  virtual UIInterfaceOrientation preferredInterfaceOrientationForPresentation() const;

 protected:
  // Makes the view; a plain one by default.
  virtual void loadView();
  virtual void viewDidLoad();
  // Around presentation and dismissal (for a window's root: around becoming it). Did comes when the fade is over.
  virtual void viewWillAppear(bool animated);
  virtual void viewDidAppear(bool animated);
  virtual void viewWillDisappear(bool animated);
  virtual void viewDidDisappear(bool animated);
  // Presses that the view has not taken; see there.
  virtual bool pressesBegan(const UIPress& press);
  virtual void pressesEnded(const UIPress& press);
  virtual void pressesCancelled(const UIPress& press);

 private:
  friend class UIWindow;
  friend class UIPressDelivery;
  friend class UIPresentation;

  std::shared_ptr<UIView> view_;
  std::shared_ptr<UIPresentation> presentation_;  // while it is on a window, fades included
  std::shared_ptr<UIViewController> presented_;
  std::weak_ptr<UIViewController> presenting_;
};
