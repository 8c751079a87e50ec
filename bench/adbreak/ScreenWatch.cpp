#include "bench/adbreak/ScreenWatch.h"

#include <QImage>
#include <QPixmap>
#include <QScreen>

ScreenWatch::ScreenWatch(QQuickWindow& window) : window_(window) {
  QObject::connect(&window, &QQuickWindow::frameSwapped, [this] {
    const auto now = std::chrono::steady_clock::now();
    const int number = numberOnScreen();
    if (pictures_.empty() || pictures_.back().number != number) pictures_.push_back({now, number});
  });
}

int ScreenWatch::numberOnScreen() const {
  const QImage strip = window_.screen()->grabWindow(window_.winId(), 0, 2, window_.width(), 1).toImage();
  int number = 0;
  for (int block = 0; block < 16; ++block) {
    const QRgb pixel = strip.pixel((2 * block + 1) * strip.width() / 32, 0);
    number = 2 * number + (qGray(pixel) > 128);
  }
  return number;
}
