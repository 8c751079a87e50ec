#include "platform/dispatch/RunLoop.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <shared_mutex>

namespace {

std::atomic<RunLoop*> installed{nullptr};
std::shared_mutex usedElsewhere;  // shared while whileInstalled() uses the loop

}  // namespace

RunLoop::~RunLoop() {
  uninstall();
}

RunLoop& RunLoop::main() {
  RunLoop* loop = installed.load(std::memory_order_acquire);
  if (!loop) {
    std::fputs("RunLoop: no run loop is installed; make a PlainRunLoop or a UIWindow first\n", stderr);
    std::abort();
  }
  return *loop;
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
}

void RunLoop::uninstall() {
  std::lock_guard lock(usedElsewhere);
  RunLoop* self = this;
  installed.compare_exchange_strong(self, nullptr);
}
