#include "apps/ymrplay/LineOutput.h"

#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/dispatch/RunLoop.h"

namespace {

constexpr std::size_t waitingLimit = 1 << 20;  // bytes
constexpr auto readerLimit = std::chrono::seconds(1);

}  // namespace

// What the two threads share. It outlives a writer that never comes back from its reader.
struct LineOutput::Shared {
  std::mutex mutex;
  std::condition_variable changed;
  std::string waiting;
  std::size_t written = 0;  // in all
  bool isWriting = false;
  bool isEnding = false;
  bool isBroken = false;
  bool hasLeftOut = false;
  std::function<void(const std::string&)> broken;

  bool isDone() const { return waiting.empty() && !isWriting; }
  void write(const std::shared_ptr<Shared>& self);
};

// On the writer's thread.
void LineOutput::Shared::write(const std::shared_ptr<Shared>& self) {
  std::unique_lock lock(mutex);
  while (true) {
    changed.wait(lock, [this] { return !waiting.empty() || isEnding; });
    if (waiting.empty()) return;
    const std::string block = std::exchange(waiting, {});
    isWriting = true;
    for (std::size_t done = 0; done < block.size();) {
      lock.unlock();
      const auto count = ::write(STDOUT_FILENO, block.data() + done, block.size() - done);
      const int error = count < 0 ? errno : 0;
      lock.lock();
      if (error == EINTR) continue;
      if (error != 0) {
        isBroken = true;
        isWriting = false;
        waiting.clear();
        changed.notify_all();
        lock.unlock();
        RunLoop::whileInstalled([&self, error](RunLoop& loop) {
          loop.post([self, why = std::string(std::strerror(error))] {
            if (const auto tell = std::exchange(self->broken, nullptr)) tell(why);
          });
        });
        return;
      }
      done += static_cast<std::size_t>(count);
      written += static_cast<std::size_t>(count);
      changed.notify_all();
    }
    isWriting = false;
    changed.notify_all();
  }
}

LineOutput::LineOutput(std::function<void(const std::string&)> broken) : shared_(std::make_shared<Shared>()) {
  shared_->broken = std::move(broken);
  std::thread([shared = shared_] { shared->write(shared); }).detach();
}

LineOutput::~LineOutput() {
  finish();
  shared_->broken = nullptr;
}

void LineOutput::print(const std::string& line) {
  const std::lock_guard lock(shared_->mutex);
  if (shared_->isBroken) return;
  if (shared_->waiting.size() + line.size() < waitingLimit) {
    shared_->waiting += line + '\n';
    shared_->changed.notify_all();
  } else if (!std::exchange(shared_->hasLeftOut, true)) {
    std::fprintf(stderr, "ymrplay: standard output is not read: events are left out\n");
  }
}

bool LineOutput::finish() {
  std::unique_lock lock(shared_->mutex);
  shared_->isEnding = true;
  shared_->changed.notify_all();
  const auto isOver = [this] { return shared_->isBroken || shared_->isDone(); };
  for (std::size_t before = 0; !isOver(); before = shared_->written) {
    const bool moved =
        shared_->changed.wait_for(lock, readerLimit, [&] { return isOver() || shared_->written != before; });
    if (!moved) break;
  }
  return !shared_->isBroken && shared_->isDone() && !shared_->hasLeftOut;
}
