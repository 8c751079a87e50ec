#pragma once

#include <QImage>
#include <QQuickWindow>
#include <memory>
#include <optional>
#include <string>

#include "platform/uikit/UIViewController.h"

// How the process draws.
enum class UIGraphics {
  automatic,  // the GPU where there is a usable one, else the software scene graph; never software GL
  software,
  gpu,
};

// A window with a view controller's view in it, black behind. Made after the QGuiApplication. Main thread.
//
// The first one decides how the process draws, unless the host already has windows or has decided itself (through Qt or
// its environment), and installs a QtRunLoop when there is no run loop. It tells UIScreen its size, hides the pointer,
// turns keys into presses, and posts the application's notifications when it goes out of sight and comes back.
class YMR_API UIWindow : public QQuickWindow {
  Q_OBJECT
 public:
  // Without a size the window covers the screen.
  explicit UIWindow(std::optional<CGSize> size = std::nullopt, UIGraphics graphics = UIGraphics::automatic);
  ~UIWindow() override;

  std::shared_ptr<UIViewController> rootViewController() const { return root_; }
  // Its view fills the window and follows its size. What the former one presents is dismissed, as it is when the window
  // goes; so is what anything else in the window presents, on a later turn, when the window goes.
  void setRootViewController(std::shared_ptr<UIViewController> controller);
  // Shows the window and gives it the keys.
  void makeKeyAndVisible();

  // What the window shows, video included, in pixels; laid out and drawn for it. An empty picture when it can't be
  // drawn.
  QImage snapshot();
  // Writes a PNG, in the place of a file that is there; false when that fails, which leaves no half of one. Nothing is
  // written to a pipe or a device.
  bool writeSnapshot(const std::string& path);

  // Presses and lets go of a button; see UIPressSend().
  bool sendPress(UIPressType type);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void tellVisibility();

  std::optional<CGSize> requestedSize_;
  std::shared_ptr<UIViewController> root_;
  bool wasSeen_ = false;
};

// A controller in a window of the host's own, to present over: its view is empty and hides nothing; what it presents
// covers the window, takes its keys, and leaves everything as it was. Installs a QtRunLoop when there is no run loop.
// Call UIChooseGraphics() before the window is made. Main thread.
YMR_API std::shared_ptr<UIViewController> UIViewControllerInWindow(QQuickWindow& window);

// Decides how the process draws; what the first UIWindow calls. Does nothing when that has been decided. Returns what
// the process draws with. Before the first window, for a host that makes its own.
YMR_API UIGraphics UIChooseGraphics(UIGraphics wish = UIGraphics::automatic);
