#pragma once

#include <QObject>
#include <map>
#include <memory>

#include "platform/uikit/UIPress.h"

class QQuickItem;
class QQuickWindow;
class UIGestureRecognizer;
class UIView;
class UIViewController;

// The way of presses through the views of one window. It remembers who took each press that is down: what follows goes
// to that one alone, wherever the focus is by then. A press is cancelled when its taker's view leaves the window or is
// hidden, when the window loses the keys, and when the same button goes down again. Main thread.
class UIPressDelivery final : public QObject {
  Q_OBJECT
 public:
  // The one of `window`, made on first use, which lives as long as the window and sees its events first.
  static UIPressDelivery& of(QQuickWindow& window);
  // Where presses begin in `window`: what has the focus; without a focus on a visible view, the topmost view. May be
  // null.
  static QQuickItem* firstResponder(QQuickWindow& window);
  // Offers a press that begins to one view: its recognisers, itself, its view controller and, for Menu, the view of the
  // controller that presents that one. Whether one of them took it. When the one that takes it has itself offered the
  // press to another view, that view is the one which hears how the press goes on.
  static bool offer(UIView& view, const UIPress& press);

  // Offers a press that begins to the first responder and what holds it, until one takes it; whether one did.
  bool begin(UIPressType type);
  // Does nothing when nobody took the press.
  void end(UIPressType type);
  void cancel(UIPressType type);

  bool eventFilter(QObject* window, QEvent* event) override;

 private:
  // A view, and at most one of the others.
  struct Taker {
    std::weak_ptr<UIView> view;
    std::weak_ptr<UIGestureRecognizer> recognizer;
    std::weak_ptr<UIViewController> controller;
    bool isView = false;
  };
  enum class Phase { repeated, ended, cancelled };

  explicit UIPressDelivery(QQuickWindow& window);

  void take(UIPressType type, Taker taker);
  bool isLost(const Taker& taker) const;
  void cancelLost();
  static void tell(const Taker& taker, UIPressType type, Phase phase);

  std::map<UIPressType, Taker> takers_;
};
