#pragma once

#include <memory>

#include "platform/foundation/NSTimer.h"
#include "platform/uikit/UIView.h"

// The wheel that turns while something is waited for. Hidden while it does not turn. It goes by the run loop's time,
// twelve steps a turn, and is drawn once.
class YMR_API UIActivityIndicatorView : public UIView {
  Q_OBJECT
 public:
  explicit UIActivityIndicatorView(QQuickItem* parent = nullptr);
  explicit UIActivityIndicatorView(const CGRect& frame);
  ~UIActivityIndicatorView() override;

  void startAnimating();
  void stopAnimating();
  bool isAnimating() const { return timer_ != nullptr; }
  // White at first.
  const UIColor& color() const { return color_; }
  void setColor(const UIColor& color);

  // 80 x 80 points: seen from three metres.
  CGSize intrinsicContentSize() const override;

 protected:
  void drawRect(QPainter& painter, const CGRect& rect) override;

 private:
  UIColor color_ = UIColor::whiteColor();
  std::shared_ptr<NSTimer> timer_;
};
