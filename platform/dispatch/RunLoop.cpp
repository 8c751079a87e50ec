#include "platform/dispatch/RunLoop.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <shared_mutex>
#include <utility>

#include "platform/dispatch/TimerQueue.h"

namespace {

std::atomic<RunLoop*> installed{nullptr};
std::atomic<bool> hasBeenInstalled{false};  // any
std::shared_mutex usedElsewhere;            // shared while whileInstalled() uses the loop

// After the last loop. What is handed over goes before the call returns; nothing is waited for, since nothing comes.
class RunLoopThatIsOver final : public RunLoop {
 public:
  Duration now() const override {
    return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch());
  }
  bool isCurrent() const override { return true; }
  void post(Block) override {}
  // The token is that of no timer, nor will a later loop give it to one.
  TimerToken schedule(Duration, Block block) override { return TimerQueue().add({}, std::move(block)); }
  void cancel(TimerToken) override {}
  void performWork(Block) override {}
  void waitUntil(const std::function<bool()>&) override {}
  void notifyWaiters() override {}
};

// Never destroyed: what is static may outlive it.
RunLoop& loopThatIsOver() {
  static auto* loop = new RunLoopThatIsOver;
  return *loop;
}

}  // namespace

RunLoop::~RunLoop() {
  uninstall();
}

RunLoop& RunLoop::main() {
  RunLoop* loop = installed.load(std::memory_order_acquire);
  if (loop) return *loop;
  if (!hasBeenInstalled) {
    std::fputs("RunLoop: no run loop is installed; make a PlainRunLoop or a UIWindow first\n", stderr);
    std::abort();
  }
  return loopThatIsOver();
}

RunLoop* RunLoop::mainIfInstalled() {
  return installed.load(std::memory_order_acquire);
}

bool RunLoop::whileInstalled(const std::function<void(RunLoop&)>& use) {
  std::shared_lock lock(usedElsewhere);
  RunLoop* loop = installed.load(std::memory_order_acquire);
  if (loop) use(*loop);
  return loop != nullptr;
}

void RunLoop::install(RunLoop* loop) {
  std::lock_guard lock(usedElsewhere);
  installed.store(loop, std::memory_order_release);
  if (loop) hasBeenInstalled = true;
}

void RunLoop::uninstall() {
  std::lock_guard lock(usedElsewhere);
  RunLoop* self = this;
  installed.compare_exchange_strong(self, nullptr);
}
