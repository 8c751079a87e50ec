#include "platform/dispatch/TimerQueue.h"

#include <atomic>

TimerQueue::TimerToken TimerQueue::nextToken() {
  static std::atomic<TimerToken> last{0};
  return ++last;
}
