#include "platform/avkit/FadingView.h"

#include <QPointer>
#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto fadeIn = 120ms;
constexpr auto fadeOut = 240ms;

}  // namespace

FadingView::FadingView(QQuickItem* parent) : UIView(parent) {
  setAlpha(0);
  setHidden(true);
}

void FadingView::setShown(bool shown) {
  if (shown == shown_) return;
  shown_ = shown;
  if (shown) setHidden(false);
  animateWithDuration(
      shown ? fadeIn : fadeOut, [this, shown] { setAlpha(shown ? 1 : 0); },
      [view = QPointer(this)](bool finished) {
        if (view && finished && !view->shown_) view->setHidden(true);
      });
  Q_EMIT shownChanged();
}
