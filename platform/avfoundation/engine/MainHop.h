#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/dispatch/Dispatch.h"
#include "platform/dispatch/RunLoop.h"

// The way from a pipeline's threads to the run loop, for one receiver, that can be cut for good.
class MainHop {
 public:
  // Any thread. The block runs on a later turn of the main queue, in the order of posting, unless close() comes first
  // or the loop goes.
  void post(RunLoop::Block block) {
    std::lock_guard lock(state_->mutex);
    if (state_->closed) return;
    RunLoop::whileInstalled([&](RunLoop& loop) {
      loop.post([state = state_, block = std::move(block)] {
        if (!state->closed) block();
      });
    });
  }

  // Any thread. Hands the block to `queue`, unless close() has come before.
  void perform(const dispatch_queue_t& queue, RunLoop::Block block) {
    std::lock_guard lock(state_->mutex);
    if (state_->closed) return;
    RunLoop::whileInstalled([&](RunLoop&) { dispatch_async(queue, std::move(block)); });
  }

  // Main thread. No posted block runs from here on, and the run loop is not touched any more.
  void close() {
    std::lock_guard lock(state_->mutex);
    state_->closed = true;
  }

 private:
  struct State {
    std::mutex mutex;
    bool closed = false;  // written on the main thread only
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};
