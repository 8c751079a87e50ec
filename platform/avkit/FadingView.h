#pragma once

#include "platform/uikit/UIView.h"

// A part of the interface that comes and goes softly, for the interface file. Gone, it is hidden and costs nothing.
// Main thread.
class FadingView : public UIView {
  Q_OBJECT
  Q_PROPERTY(bool shown READ isShown WRITE setShown NOTIFY shownChanged)

 public:
  explicit FadingView(QQuickItem* parent = nullptr);

  bool isShown() const { return shown_; }
  void setShown(bool shown);

 Q_SIGNALS:
  void shownChanged();

 private:
  bool shown_ = false;
};
