#include "platform/avfoundation/process/ProcessWatch.h"

#include <sys/epoll.h>

#include <array>
#include <thread>

#include "platform/dispatch/BlockedSignals.h"

// Never destroyed: the thread uses it to the end of the host.
ProcessWatch& ProcessWatch::shared() {
  static auto* watch = new ProcessWatch;
  return *watch;
}

ProcessWatch::ProcessWatch() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {
  const BlockedSignals blocked;
  std::thread([this] { run(); }).detach();
}

void ProcessWatch::add(int descriptor, std::function<bool()> ready) {
  std::lock_guard lock(mutex_);
  watched_[++last_] = std::make_shared<Watched>(Watched{descriptor, std::move(ready)});
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = last_;
  epoll_ctl(epoll_, EPOLL_CTL_ADD, descriptor, &event);
}

void ProcessWatch::run() {
  for (;;) {
    std::array<epoll_event, 16> events;
    const int count = epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), -1);
    for (int i = 0; i < count; ++i) {
      const std::uint64_t number = events[static_cast<std::size_t>(i)].data.u64;
      std::shared_ptr<Watched> watched;
      {
        std::lock_guard lock(mutex_);
        if (const auto found = watched_.find(number); found != watched_.end()) watched = found->second;
      }
      if (!watched || watched->ready()) continue;
      epoll_ctl(epoll_, EPOLL_CTL_DEL, watched->descriptor, nullptr);
      std::lock_guard lock(mutex_);
      watched_.erase(number);
    }
  }
}
