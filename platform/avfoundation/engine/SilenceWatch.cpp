#include "platform/avfoundation/engine/SilenceWatch.h"

#include <utility>

SilenceWatch::SilenceWatch(std::function<void()> expired) : expired_(std::move(expired)) {}

SilenceWatch::~SilenceWatch() {
  if (timer_) RunLoop::main().cancel(timer_);
}

void SilenceWatch::setWaiting(bool waiting, RunLoop::Duration limit) {
  RunLoop& loop = RunLoop::main();
  if (waiting == (timer_ != 0)) return;
  if (waiting) {
    began_ = loop.now();
    timer_ = loop.schedule(limit - spent_, [this] {
      timer_ = 0;
      spent_ = {};
      expired_();
    });
  } else {
    spent_ += loop.now() - began_;
    loop.cancel(std::exchange(timer_, 0));
  }
}

void SilenceWatch::reset() {
  spent_ = {};
  if (timer_) RunLoop::main().cancel(std::exchange(timer_, 0));
}
