#include "platform/avfoundation/fetch/FetchThread.h"

#include <algorithm>

#include "platform/avfoundation/fetch/Fetch.h"
#include "platform/dispatch/BlockedSignals.h"
#include "platform/foundation/CurlStreams.h"

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds idlePatience = 1h;

}  // namespace

// What the thread works on.
struct FetchThread::State {
  CurlStreams streams;
  std::mutex mutex;
  std::vector<std::function<void(State&)>> commands;
  bool isStopping = false;

  // The thread's own.
  std::map<std::uint64_t, std::unique_ptr<FetchWork>> fetches;
  Fetch::Time now{0};

  void run();
  bool obey();
};

FetchThread::FetchThread() : state_(std::make_shared<State>()) {
  const BlockedSignals blocked;
  thread_ = std::thread([state = state_] { state->run(); });
}

FetchThread::~FetchThread() {
  {
    std::lock_guard lock(state_->mutex);
    state_->isStopping = true;
  }
  state_->streams.wakeUp();
  thread_.join();
}

std::shared_ptr<FetchThread> FetchThread::shared() {
  static std::weak_ptr<FetchThread> known;
  auto thread = known.lock();
  if (!thread) known = thread = std::make_shared<FetchThread>();
  return thread;
}

std::uint64_t FetchThread::add(const NSURL& url, std::shared_ptr<ByteStore> store) {
  return add([=](HTTPStreams& streams) { return std::make_unique<Fetch>(url, store, streams); });
}

std::uint64_t FetchThread::add(Make make) {
  const std::uint64_t number = ++lastNumber_;
  post([=](State& state) { state.fetches[number] = make(state.streams); });
  return number;
}

void FetchThread::remove(std::uint64_t number) {
  post([=](State& state) { state.fetches.erase(number); });
}

void FetchThread::post(std::function<void(State&)> command) {
  {
    std::lock_guard lock(state_->mutex);
    state_->commands.push_back(std::move(command));
  }
  state_->streams.wakeUp();
}

// False when the thread is to end.
bool FetchThread::State::obey() {
  std::vector<std::function<void(State&)>> due;
  {
    std::lock_guard lock(mutex);
    if (isStopping) return false;
    due.swap(commands);
  }
  for (const auto& command : due) command(*this);
  return true;
}

void FetchThread::State::run() {
  while (obey()) {
    // The thread may outlive the run loop; then the clock stands.
    RunLoop::whileInstalled([this](RunLoop& loop) { now = loop.now(); });
    Fetch::Time next = now + idlePatience;
    std::vector<int> wakes;
    for (const auto& [number, fetch] : fetches) {
      if (const auto due = fetch->turn(now)) next = std::min(next, *due);
      wakes.push_back(fetch->wakeDescriptor());
    }
    const auto patience = std::max(std::chrono::ceil<std::chrono::milliseconds>(next - now), 0ms);
    const auto woken = streams.turn(wakes, patience);
    for (const auto& [number, fetch] : fetches) {
      if (std::ranges::count(woken, fetch->wakeDescriptor()) > 0) fetch->takeWake();
    }
  }
  fetches.clear();
}
