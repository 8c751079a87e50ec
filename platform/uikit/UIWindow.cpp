#include "platform/uikit/UIWindow.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QSaveFile>
#include <QScreen>
#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/QtRunLoop.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/UIPressDelivery.h"
#include "platform/uikit/WindowFilling.h"

namespace {

bool isAnyToBeSeen() {
  const auto state = QGuiApplication::applicationState();
  if (state == Qt::ApplicationSuspended || state == Qt::ApplicationHidden) return false;
  for (const QWindow* window : QGuiApplication::topLevelWindows()) {
    if (window->isVisible() && !(window->windowStates() & Qt::WindowMinimized)) return true;
  }
  return false;
}

// What must be before the first window: the run loop, by which animations go, the choice of how to draw, and when. Qt
// would wait 5 ms for more to draw; a picture that is due has none to wait for.
QWindow* prepared(UIGraphics graphics) {
  QtRunLoop::installIfNeeded();
  constexpr const char* drawingDelay = "QT_QPA_UPDATE_IDLE_TIME";
  if (!qEnvironmentVariableIsSet(drawingDelay)) qputenv(drawingDelay, "0");
  UIChooseGraphics(graphics);
  return nullptr;
}

}  // namespace

UIWindow::UIWindow(std::optional<CGSize> size, UIGraphics graphics)
    : QQuickWindow(prepared(graphics)), requestedSize_(size) {
  YMR_ASSERT_MAIN_THREAD();
  setColor(Qt::black);
  setCursor(Qt::BlankCursor);
  if (size) {
    resize(int(size->width), int(size->height));
  } else if (screen()) {
    setGeometry(screen()->geometry());
  }
  connect(this, &QWindow::visibilityChanged, this, &UIWindow::tellVisibility);
  connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &UIWindow::tellVisibility);
}

UIWindow::~UIWindow() {
  disconnect(this, &QWindow::visibilityChanged, this, nullptr);
  setRootViewController(nullptr);
}

void UIWindow::tellVisibility() {
  wasSeen_ |= isVisible();
  if (wasSeen_) UIApplication::sharedApplication().setVisible(isAnyToBeSeen());
}

void UIWindow::setRootViewController(std::shared_ptr<UIViewController> controller) {
  YMR_ASSERT_MAIN_THREAD();
  if (root_ == controller) return;
  if (const auto former = std::exchange(root_, controller)) {
    if (former->presentedViewController()) former->dismissViewControllerAnimated(false);
    former->viewWillDisappear(false);
    former->view()->removeFromSuperview();
    former->viewDidDisappear(false);
  }
  if (!controller || root_ != controller) return;
  const auto view = controller->view();
  fillWindow(*view, *this);
  controller->viewWillAppear(false);
  if (const auto first = controller->preferredFirstResponder()) first->becomeFirstResponder();
  controller->viewDidAppear(false);
}

std::shared_ptr<UIViewController> UIViewControllerInWindow(QQuickWindow& window) {
  YMR_ASSERT_MAIN_THREAD();
  QtRunLoop::installIfNeeded();
  auto controller = std::make_shared<UIViewController>();
  controller->view()->setParentItem(window.contentItem());
  return controller;
}

void UIWindow::makeKeyAndVisible() {
  YMR_ASSERT_MAIN_THREAD();
  requestedSize_ ? show() : showFullScreen();
  requestActivate();
}

QImage UIWindow::snapshot() {
  YMR_ASSERT_MAIN_THREAD();
  return grabWindow();
}

bool UIWindow::writeSnapshot(const std::string& path) {
  const QString name = QString::fromStdString(path);
  if (const QFileInfo there(name); there.exists() && !there.isFile()) return false;  // a device is not to be replaced
  QSaveFile file(name);               // in the place of one that is there only when it is whole
  file.setDirectWriteFallback(true);  // a folder where nothing can be made
  return file.open(QIODevice::WriteOnly) && snapshot().save(&file, "PNG") && file.commit();
}

bool UIWindow::sendPress(UIPressType type) {
  return UIPressSend(*this, type);
}

// What the host's own items leave goes to the views as a press.
void UIWindow::keyPressEvent(QKeyEvent* event) {
  QQuickWindow::keyPressEvent(event);
  const auto type = UIPressTypeForKey(event->key());
  if (event->isAccepted() || !type || event->isAutoRepeat()) return;
  event->setAccepted(UIPressDelivery::of(*this).begin(*type));
}
