#pragma once

#include <memory>

#include "platform/foundation/NSTimer.h"
#include "platform/uikit/UIView.h"

// White dots in a ring that turns while something is waited for, on a disc that makes them stand out from a bright
// picture. Hidden while it does not turn. It goes by the run loop's time, twelve steps a turn, and is drawn once.
class YMR_API UIActivityIndicatorView : public UIView {
  Q_OBJECT
  Q_PROPERTY(bool animating READ isAnimating WRITE setAnimating NOTIFY animatingChanged)

 public:
  explicit UIActivityIndicatorView(QQuickItem* parent = nullptr);
  explicit UIActivityIndicatorView(const CGRect& frame);
  ~UIActivityIndicatorView() override;

  void startAnimating();
  void stopAnimating();
  bool isAnimating() const { return timer_ != nullptr; }
  // Starts or stops.
  void setAnimating(bool animating);

  // 176 x 176 points.
  CGSize intrinsicContentSize() const override;

 Q_SIGNALS:
  void animatingChanged();

 protected:
  void drawRect(QPainter& painter, const CGRect& rect) override;

 private:
  std::shared_ptr<NSTimer> timer_;
};
