#include "platform/dispatch/RunLoop.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {
std::atomic<RunLoop*> installed{nullptr};
}

RunLoop::~RunLoop() {
  RunLoop* self = this;
  installed.compare_exchange_strong(self, nullptr);
}

RunLoop& RunLoop::main() {
  RunLoop* loop = installed.load(std::memory_order_acquire);
  if (!loop) {
    std::fputs("RunLoop: no run loop is installed; make a PlainRunLoop or a UIWindow first\n", stderr);
    std::abort();
  }
  return *loop;
}

RunLoop* RunLoop::mainIfInstalled() { return installed.load(std::memory_order_acquire); }

void RunLoop::install(RunLoop* loop) { installed.store(loop, std::memory_order_release); }
