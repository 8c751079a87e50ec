#pragma once

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QTimer>
#include <string>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/uikit/UIWindow.h"

// The process's QGuiApplication, made on first use and kept: Qt bears one only. Needs QT_QPA_PLATFORM=offscreen, which
// ymr_test() sets.
inline QGuiApplication& screenApplication() {
  static int count = 1;
  static char name[] = "test";
  static char* arguments[] = {name, nullptr};
  static auto* application = new QGuiApplication(count, arguments);
  return *application;
}

// Runs Qt's events until `done`, in real time; false when that does not come about within ten seconds.
template <typename Done>
bool runEventsUntil(Done done) {
  QElapsedTimer passed;
  passed.start();
  while (!done()) {
    if (passed.elapsed() > 10000) return false;
    QTimer::singleShot(10, [] {});  // so that waiting ends when nothing else happens
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

// How tests draw: by software, or on the GPU with YMR_GRAPHICS=gpu (under a real display or a virtual one).
inline UIGraphics screenGraphics() {
  return qEnvironmentVariable("YMR_GRAPHICS") == "gpu" ? UIGraphics::gpu : UIGraphics::software;
}

// A window of 640 x 360 points, on virtual time.
//
// Set YMR_PICTURES to a folder to have every snapshot written there as a PNG, named after the test.
class ScreenTest : public testing::Test {
 protected:
  ScreenTest() {
    window.setRootViewController(controller);
    window.makeKeyAndVisible();
    EXPECT_TRUE(runEventsUntil([this] { return window.isExposed(); }));
  }

  // Lets time pass, in steps of a sixtieth of a second, with Qt's events in between.
  void run(RunLoop::Duration duration) {
    constexpr RunLoop::Duration step = std::chrono::milliseconds(16);
    for (; duration > step; duration -= step) advance(step);
    advance(duration);
  }

  void resize(int width, int height) {
    window.resize(width, height);
    QCoreApplication::processEvents();
    EXPECT_TRUE(runEventsUntil([&] { return view()->width() == width && view()->height() == height; }));
  }

  // A key of a keyboard, with its repetitions; whether somebody took it.
  bool key(int code, QEvent::Type type = QEvent::KeyPress, bool repeats = false, QObject* to = nullptr) {
    QKeyEvent event(type, code, Qt::NoModifier, {}, repeats);
    QCoreApplication::sendEvent(to ? to : &window, &event);
    return event.isAccepted();
  }

  // What the window shows now; lays out and draws first.
  QImage snapshot() {
    const QImage image = window.snapshot().convertToFormat(QImage::Format_RGB32);
    if (const QString folder = qEnvironmentVariable("YMR_PICTURES"); !folder.isEmpty()) {
      const auto* test = testing::UnitTest::GetInstance()->current_test_info();
      image.save(QString("%1/%2.%3-%4.png").arg(folder, test->test_suite_name(), test->name()).arg(++pictures_));
    }
    return image;
  }

  const std::shared_ptr<UIView>& view() { return controller->view(); }
  std::shared_ptr<UIView> addView(const CGRect& frame, const UIColor& color) {
    auto added = std::make_shared<UIView>(frame);
    added->setBackgroundColor(color);
    view()->addSubview(added);
    return added;
  }

  QGuiApplication& application = screenApplication();
  VirtualRunLoop loop;
  UIWindow window{CGSize{640, 360}, screenGraphics()};
  std::shared_ptr<UIViewController> controller = std::make_shared<UIViewController>();

 private:
  void advance(RunLoop::Duration step) {
    QCoreApplication::processEvents();
    loop.advance(step);
    QCoreApplication::processEvents();
  }

  int pictures_ = 0;
};

// "rrggbb" of a pixel, for comparisons that say what they saw.
inline std::string colorAt(const QImage& image, int x, int y) {
  return image.valid(x, y) ? image.pixelColor(x, y).name().mid(1).toStdString() : "outside";
}

// A mixture of colours, "rrggbb", as exact as ways of drawing agree on.
MATCHER_P(isAbout, color, "is about " + std::string(color)) {
  const QColor got(QString::fromStdString("#" + arg));
  const QColor wanted(QString::fromStdString("#" + std::string(color)));
  return std::abs(got.red() - wanted.red()) <= 1 && std::abs(got.green() - wanted.green()) <= 1 &&
         std::abs(got.blue() - wanted.blue()) <= 1;
}

// The smallest rectangle that holds every pixel that is not `background`; empty for none.
inline QRect inkOf(const QImage& image, const QRect& area, QRgb background = 0xff000000) {
  QRect ink;
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x) {
      if ((image.pixel(x, y) | 0xff000000) != background) ink |= QRect(x, y, 1, 1);
    }
  }
  return ink;
}

inline std::ostream& operator<<(std::ostream& out, const CGRect& rect) {
  return out << rect.origin.x << "," << rect.origin.y << " " << rect.size.width << "x" << rect.size.height;
}
