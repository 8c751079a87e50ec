#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/Export.h"
#include "platform/uikit/UILabel.h"

class YMRAdSchedule;

// The button that skips an ad, made to be read from three metres: first a dark plate that counts the seconds down, then
// one that may be pressed, filled with the accent of the player's controls while Enter means it. Main thread.
//
// Sizes are those of a screen 1080 points high: whoever lays it out scales it. A finger or the mouse presses it;
// presses of the remote are its owner's, who calls press().
class YMR_API YMRSkipButton : public UILabel {
  Q_OBJECT
 public:
  // Hidden, in the texts of a schedule that nobody has changed.
  explicit YMRSkipButton(QQuickItem* parent = nullptr);
  ~YMRSkipButton() override;

  // Takes the schedule's texts, from the next second on. Nothing when nil.
  void confWithAdSchedule(const std::shared_ptr<YMRAdSchedule>& adSchedule);
  // What is left until it may be pressed: 0 for now; nil hides it, as it starts.
  void setSecondsLeft(std::optional<std::int64_t> seconds);
  // Whether it may be pressed.
  bool isReady() const { return secondsLeft_ == 0; }
  // Whether Enter means this button; true at first.
  bool hasRemote() const { return hasRemote_; }
  void setHasRemote(bool hasRemote);

  // Called when it is pressed, and may do anything; empty, as it starts, for nobody. Must not hold the button.
  void setPressed(std::function<void()> pressed) { pressed_ = std::move(pressed); }
  // Presses it; nothing unless it is ready.
  void press();

  CGSize intrinsicContentSize() const override;
  void drawTextInRect(QPainter& painter, const CGRect& rect) override;
  void touchesEnded(const UIEvent& event) override;

 private:
  void follow();

  std::string skipText_;
  std::string countdownText_;
  std::optional<std::int64_t> secondsLeft_;
  bool hasRemote_ = true;
  std::function<void()> pressed_;
};
