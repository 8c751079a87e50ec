#include "platform/uikit/RunLoopAnimationDriver.h"

#include "platform/uikit/QtRunLoop.h"

void RunLoopAnimationDriver::installUnlessQtLoop() {
  static bool installed = false;
  if (installed || dynamic_cast<QtRunLoop*>(RunLoop::mainIfInstalled())) return;
  installed = true;
  static RunLoopAnimationDriver driver;
  driver.install();
}

void RunLoopAnimationDriver::start() {
  begin_ = RunLoop::main().now();
  QAnimationDriver::start();
  tick();
}

void RunLoopAnimationDriver::stop() {
  QAnimationDriver::stop();
  if (RunLoop* loop = RunLoop::mainIfInstalled()) loop->cancel(timer_);
}

void RunLoopAnimationDriver::tick() {
  timer_ = RunLoop::main().schedule(std::chrono::milliseconds(16), [this] {
    if (!isRunning()) return;
    tick();
    advance();
  });
}

void RunLoopAnimationDriver::advance() {
  advanceAnimation();
}

qint64 RunLoopAnimationDriver::elapsed() const {
  const RunLoop* loop = RunLoop::mainIfInstalled();
  return loop && isRunning() ? (loop->now() - begin_) / std::chrono::milliseconds(1) : 0;
}
