#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>
#include <functional>
#include <memory>
#include <vector>

#include "platform/Export.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/uikit/CALayer.h"
#include "platform/uikit/NSLayoutConstraint.h"
#include "platform/uikit/UIEvent.h"
#include "platform/uikit/UIGestureRecognizer.h"
#include "platform/uikit/UIPress.h"
#include "platform/uikit/values/CGGeometry.h"
#include "platform/uikit/values/UIColor.h"

class QPainter;
class UIViewAnimation;
class UIViewController;

// A rectangle of the screen: an item of Qt Quick's with the platform's manners. Main thread.
//
// Always held by shared_ptr: by its superview, and by whoever made it. It has no parent in the sense of QObject; adding
// a view sets the visual parent only. Views that an interface file makes are taken over by their superviews when the
// file has been read. The first view installs a QtRunLoop when the process has no run loop.
//
// Kept from the platform: the tree, frames, constraints, layout before the next picture, content drawn once and kept,
// gesture recognisers and presses, touches, animation of alpha. Left out: autoresizing masks, transforms, tint,
// gestures of touches.
class YMR_API UIView : public QQuickItem, public std::enable_shared_from_this<UIView> {
  Q_OBJECT
  Q_PROPERTY(QColor backgroundColor READ qmlBackgroundColor WRITE setQmlBackgroundColor)

 public:
  // An empty frame. `parent` is for interface files.
  explicit UIView(QQuickItem* parent = nullptr);
  explicit UIView(const CGRect& frame);
  ~UIView() override;

  // A view that `item` fills from now on. The item stays its owner's: it may go at any time, which leaves the view
  // empty, and it is let go of, without a visual parent, when the view goes. The same view for an item that is one. Nil
  // for nil and for a window's content item, which can't leave its window; see UIViewControllerInWindow().
  static std::shared_ptr<UIView> wrap(QQuickItem* item);

  // Position in the superview (in the window's content when there is none) and size.
  CGRect frame() const;
  void setFrame(const CGRect& frame);
  // The same size at 0, 0.
  CGRect bounds() const;

  // A hidden view is neither drawn nor offered presses, nor is what it holds; its constraints count all the same.
  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden);
  bool clipsToBounds() const { return clip(); }
  void setClipsToBounds(bool clips) { setClip(clips); }
  // Opacity of the view and all that it holds, 0 to 1.
  double alpha() const { return alpha_; }
  void setAlpha(double alpha);
  // Clear, as it starts: no background.
  const UIColor& backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const UIColor& color);

  // On top of the others. A view has one superview: it is taken out of the one before. A view that holds this one, or
  // nil, is ignored.
  void addSubview(const std::shared_ptr<UIView>& view);
  // Also removes the constraints that outer views hold on it or on what it holds. Nothing when it has no superview.
  void removeFromSuperview();
  void bringSubviewToFront(const std::shared_ptr<UIView>& view);
  void sendSubviewToBack(const std::shared_ptr<UIView>& view);
  std::shared_ptr<UIView> superview() const;
  // From the bottom to the top.
  const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
  // True for the view itself and for what it is inside of.
  bool isDescendantOfView(const std::shared_ptr<UIView>& view) const;

  const std::shared_ptr<CALayer>& layer();

  const std::vector<std::shared_ptr<UIGestureRecognizer>>& gestureRecognizers() const { return recognizers_; }
  void setGestureRecognizers(std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers);
  void addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);

  // Presses go to the first responder of the window. True when the view is in a window and not hidden.
  bool becomeFirstResponder();
  bool isFirstResponder() const;

  // True, as it starts: the frame is what setFrame says. False: the frame comes from constraints alone; what they leave
  // open is the intrinsic size, and a position of 0, 0.
  bool translatesAutoresizingMaskIntoConstraints() const { return keepsFrame_; }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates);
  // What was added to this view, in that order.
  const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints() const { return constraints_; }
  // Takes it out of the view that held it before. Nothing when this view holds it already.
  void addConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint);
  void removeConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint);

  // Lays the tree out before the next picture: constraints, then layoutSubviews().
  void setNeedsLayout();
  // Does it now, when there is something to do.
  void layoutIfNeeded();
  // Below 0: the view has no size of its own in that direction.
  static constexpr double noIntrinsicMetric = -1;
  // The size that the content asks for; nothing by default.
  virtual CGSize intrinsicContentSize() const;
  // What the content asks for when the width is given.
  virtual double intrinsicHeightForWidth(double width) const;
  // The content's size has changed.
  void invalidateIntrinsicContentSize();

  // Draws the content anew before the next picture. Only for views that draw.
  void setNeedsDisplay();
  // By how much larger the content is drawn than its points say, on top of the view's scale and the screen's density; 1
  // at first. For a view inside of one that is shown scaled, so that its content stays sharp.
  double contentScaleFactor() const { return contentScaleFactor_; }
  void setContentScaleFactor(double factor);

  // A button goes down: true takes the press, and what follows it comes here, repetitions to pressesBegan(). Nothing by
  // default.
  virtual bool pressesBegan(const UIPress& press);
  virtual void pressesEnded(const UIPress& press);
  virtual void pressesCancelled(const UIPress& press);

  // Whether touches come here; else they go to what lies below. False, as it starts, unlike the platform's: most views
  // of a living room are only looked at.
  void setUserInteractionEnabled(bool enabled);
  // Fingers, or the mouse's left button, go down inside the view, on the topmost view there that takes touches. What
  // becomes of them comes here too, wherever they go, until they end, or are cancelled: the view is hidden, leaves its
  // window, or somebody else takes them. `event` holds all that are down on the view. Nothing by default.
  virtual void touchesBegan(const UIEvent& event);
  virtual void touchesMoved(const UIEvent& event);
  virtual void touchesEnded(const UIEvent& event);
  virtual void touchesCancelled(const UIEvent& event);

  // The controller whose view this is; null for one that is only inside of another.
  UIViewController* viewController() const { return viewController_; }

  // Runs `animations`; what they set of views' alpha is reached over `duration`, slowly at both ends, by the run loop's
  // time. `completion` (may be empty) runs once, on a later turn: true when every view got there, false when another
  // setAlpha() or the view's end came between. alpha() is the goal from the start. What `animations` throws reaches the
  // caller; what it has set until then is animated.
  static void animateWithDuration(RunLoop::Duration duration, const std::function<void()>& animations,
                                  std::function<void(bool finished)> completion = {});

  QColor qmlBackgroundColor() const;
  void setQmlBackgroundColor(const QColor& color);

 protected:
  // Whether drawRect() is called. A view that draws costs a texture of its size, times its own scale.
  void setDrawsContent(bool draws);
  // How far drawing may reach beyond the bounds on every side, in points: 0.
  virtual double contentMargin() const { return 0; }
  // Draws the content. Called before the next picture when the size, the scale, the screen's density or, after
  // setNeedsDisplay(), the content has changed; what it draws is kept in a texture. `rect` is bounds(). The painter
  // draws in points, with antialiasing, on nothing.
  virtual void drawRect(QPainter& painter, const CGRect& rect);
  // The size has changed, or setNeedsLayout() was called: the place to set frames of subviews. Constraints hold
  // already.
  virtual void layoutSubviews();

  void componentComplete() override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void keyPressEvent(QKeyEvent* event) override;
  void touchEvent(QTouchEvent* event) override;
  void touchUngrabEvent() override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseUngrabEvent() override;
  void updatePolish() override;
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

 private:
  friend class NSLayoutConstraint;
  friend class UIViewAnimation;
  friend class UIViewController;

  UIView& root();
  void detach();
  void setNeedsSolving();
  void layoutTree();
  void draw();
  void deliverTouches(const std::vector<UITouch>& changed);
  void deliverMouse(const QMouseEvent& event, UITouchPhase phase);
  void cancelTouches(bool ofMouse);

  bool hidden_ = false;
  bool keepsFrame_ = true;
  bool drawsContent_ = false;
  bool needsDisplay_ = false;
  bool needsLayout_ = true;
  bool takesTouches_ = false;
  // Of a root, about its tree:
  bool needsSolving_ = false;
  bool treeNeedsLayout_ = true;
  bool inSolving_ = false;
  bool inLayout_ = false;
  double alpha_ = 1;
  std::weak_ptr<UIViewAnimation> animation_;  // that moves the opacity
  UIColor backgroundColor_;
  QImage content_;
  double contentScaleFactor_ = 1;
  bool contentChanged_ = false;  // since the scene graph took it
  double drawnMargin_ = 0;
  QSizeF drawnSize_;  // of the content with its margins, in points
  std::vector<std::shared_ptr<UIView>> subviews_;
  std::vector<std::shared_ptr<NSLayoutConstraint>> constraints_;
  std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers_;
  std::vector<UITouch> touches_;  // that are down
  std::shared_ptr<CALayer> layer_;
  UIViewController* viewController_ = nullptr;
};
