#include "platform/foundation/PerformSelector.h"

#include <list>
#include <string>
#include <utility>

#include "platform/foundation/MainThread.h"

namespace {

struct Request {
  const void* target;
  std::string selector;
  RunLoop::TimerToken token;
};

// Never destroyed: targets may be static.
std::list<Request>& requests() {
  static auto* list = new std::list<Request>;
  return *list;
}

void cancelIf(const std::function<bool(const Request&)>& matches) {
  YMR_ASSERT_MAIN_THREAD();
  std::list<Request> cancelled;  // out of the list first: what a block owns may cancel again as it goes
  for (auto request = requests().begin(); request != requests().end();) {
    const auto next = std::next(request);
    if (matches(*request)) cancelled.splice(cancelled.end(), requests(), request);
    request = next;
  }
  RunLoop* loop = RunLoop::mainIfInstalled();
  for (const Request& request : cancelled) {
    if (loop) loop->cancel(request.token);
  }
}

}  // namespace

void performSelectorAfterDelay(const void* target, std::string_view selector, RunLoop::Duration delay,
                               std::function<void()> block) {
  YMR_ASSERT_MAIN_THREAD();
  const auto request = requests().insert(requests().end(), {target, std::string(selector), 0});
  request->token = RunLoop::main().schedule(delay, [request, block = std::move(block)] {
    requests().erase(request);
    block();
  });
}

void cancelPreviousPerformRequestsWithTarget(const void* target) {
  cancelIf([target](const Request& request) { return request.target == target; });
}

void cancelPreviousPerformRequestsWithTarget(const void* target, std::string_view selector) {
  cancelIf([=](const Request& request) { return request.target == target && request.selector == selector; });
}
