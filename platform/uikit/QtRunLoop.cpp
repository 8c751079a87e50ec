#include "platform/uikit/QtRunLoop.h"

#include <QCoreApplication>
#include <QTimerEvent>
#include <algorithm>
#include <chrono>

#include "platform/dispatch/DropBlocks.h"
#include "platform/uikit/UIApplication.h"

namespace {

const auto wakeEvent = QEvent::Type(QEvent::registerEventType());
const auto armEvent = QEvent::Type(QEvent::registerEventType());

}  // namespace

QtRunLoop::QtRunLoop() {
  install(this);
}

QtRunLoop::~QtRunLoop() {
  stopWork();
  dropBlocks(mutex_, posted_, timers_);
  uninstall();
}

void QtRunLoop::installIfNeeded() {
  static QtRunLoop* loop;
  static bool followsApplication;
  if (!QCoreApplication::instance()) return;
  if (!mainIfInstalled()) loop = new QtRunLoop;
  if (std::exchange(followsApplication, true)) return;
  qAddPostRoutine([] {
    followsApplication = false;
    UIApplication::sharedApplication().terminate();
    delete std::exchange(loop, nullptr);
  });
}

void QtRunLoop::post(Block block) {
  {
    std::lock_guard lock(mutex_);
    posted_.emplace_back(now(), std::move(block));
  }
  QCoreApplication::postEvent(this, new QEvent(wakeEvent));
}

RunLoop::TimerToken QtRunLoop::schedule(Duration delay, Block block) {
  TimerToken token;
  bool isFirst;
  {
    std::lock_guard lock(mutex_);
    const Duration due = now() + std::max(delay, Duration::zero());
    isFirst = due < timers_.next().value_or(Duration::max());
    token = timers_.add(due, std::move(block));
  }
  if (!isFirst) return token;
  if (isCurrent()) {
    arm();
  } else {
    QCoreApplication::postEvent(this, new QEvent(armEvent));
  }
  return token;
}

void QtRunLoop::cancel(TimerToken token) {
  Block cancelled;  // goes without the lock
  std::lock_guard lock(mutex_);
  cancelled = timers_.take(token);
}

// Qt's timers count whole milliseconds; ours must not fire early.
void QtRunLoop::arm() {
  Duration due = Duration::max();
  {
    std::lock_guard lock(mutex_);
    due = timers_.next().value_or(Duration::max());
  }
  if (due == armedFor_) return;
  armedFor_ = due;
  if (timer_) killTimer(std::exchange(timer_, 0));
  if (due == Duration::max()) return;
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(std::max(due - now(), Duration::zero()));
  timer_ = startTimer(std::min<std::chrono::milliseconds>(wait, std::chrono::hours(24)), Qt::PreciseTimer);
}

QtRunLoop::Turn QtRunLoop::turn() {
  Block block;
  Turn kind = Turn::nothing;
  {
    std::lock_guard lock(mutex_);
    if (!posted_.empty() && posted_.front().first <= timers_.next().value_or(Duration::max())) {
      block = std::move(posted_.front().second);
      posted_.pop_front();
      kind = Turn::block;
    } else if ((block = timers_.takeDue(now()))) {
      kind = Turn::timer;
    }
  }
  if (block) block();
  return kind;
}

// One posted block an event, and first what was due before it: Qt's own events get their turns in between.
bool QtRunLoop::event(QEvent* event) {
  if (event->type() == wakeEvent) {
    while (turn() == Turn::timer) {
    }
    arm();
    return true;
  }
  if (event->type() == armEvent) {
    arm();
    return true;
  }
  return QObject::event(event);
}

void QtRunLoop::timerEvent(QTimerEvent* event) {
  if (event->timerId() != timer_) return;
  killTimer(std::exchange(timer_, 0));
  armedFor_ = Duration::max();
  const Duration until = now();
  for (;;) {
    {
      std::lock_guard lock(mutex_);
      if (timers_.next().value_or(Duration::max()) > until) break;
    }
    arm();  // a nested event loop inside the turn goes on with the rest
    if (turn() == Turn::nothing) break;
  }
  arm();
}
