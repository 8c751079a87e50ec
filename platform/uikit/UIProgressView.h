#pragma once

#include "platform/uikit/UIView.h"

// How far something has come: a line that fills from the left. The line is slimmer than what fills it, so that the two
// are told apart by form as well as by colour. Drawn for the height that the view has. Main thread.
//
// Kept from the platform: progress, the track's tint. Left out: the other tint, which is white, animation, styles,
// images.
class YMR_API UIProgressView : public UIView {
 public:
  explicit UIProgressView(const CGRect& frame = {});
  ~UIProgressView() override;

  // 0, as it starts, to 1; what lies outside is brought inside, and what is no number is 0.
  double progress() const { return progress_; }
  void setProgress(double progress);
  // Of the part that is not filled: a translucent white at first.
  const UIColor& trackTintColor() const { return trackTintColor_; }
  void setTrackTintColor(const UIColor& color);

  // 10 points high, of no width of its own.
  CGSize intrinsicContentSize() const override;

 protected:
  void drawRect(QPainter& painter, const CGRect& rect) override;

 private:
  double progress_ = 0;
  UIColor trackTintColor_ = UIColor::colorWithWhite(1, 0.25);
};
