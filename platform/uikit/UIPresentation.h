#pragma once

#include <QPointer>
#include <QQuickItem>
#include <memory>

#include "platform/uikit/UIViewController.h"

// One stay of a view controller on a window, from its presentation to the end of its dismissal. Held by the controller
// while it is presented, and by the fades. Main thread.
class UIPresentation : public std::enable_shared_from_this<UIPresentation> {
 public:
  using Completion = UIViewController::Completion;

  explicit UIPresentation(const std::shared_ptr<UIViewController>& controller) : controller_(controller) {}

  void appear(QQuickWindow& window, bool animated, Completion completion);
  void disappear(bool animated, Completion completion);

 private:
  // Whether the controller has not been presented anew since.
  bool isCurrent() const;
  void endWithoutWindow();

  const std::weak_ptr<UIViewController> controller_;
  QPointer<QQuickItem> focusBefore_;
  bool dismissed_ = false;
  QObject context_;  // its connections to the view end with it
};
