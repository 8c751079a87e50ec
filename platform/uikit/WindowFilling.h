#pragma once

#include <QQuickWindow>

#include "platform/uikit/UIView.h"
#include "platform/uikit/values/UIScreen.h"

// Puts `view` on top of all that is in `window` and makes it as large as the window, whose size the main screen has
// from then on, whatever it becomes, until the view is taken out of the window.
inline void fillWindow(UIView& view, QQuickWindow& window) {
  const auto fit = [&view, &window] {
    if (view.parentItem() != window.contentItem()) return;
    view.setFrame(CGRectMake(0, 0, window.width(), window.height()));
    UIScreen::mainScreen().setSize({double(window.width()), double(window.height())});
  };
  view.removeFromSuperview();
  view.setTranslatesAutoresizingMaskIntoConstraints(true);
  view.setParentItem(window.contentItem());
  QObject::disconnect(&window, nullptr, &view, nullptr);
  QObject::connect(&window, &QQuickWindow::widthChanged, &view, fit);
  QObject::connect(&window, &QQuickWindow::heightChanged, &view, fit);
  fit();
}
