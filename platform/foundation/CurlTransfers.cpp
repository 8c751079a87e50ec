#include "platform/foundation/CurlTransfers.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/dispatch/BlockedSignals.h"
#include "platform/foundation/CurlMulti.h"
#include "platform/foundation/CurlTransfer.h"

namespace {

// How often a running transfer is looked at although nothing came: the grain of the silence limit.
constexpr int lookMilliseconds = 100;
constexpr int idleMilliseconds = 60 * 60 * 1000;

// What shares connections: scheme, host and port.
std::string server(const NSURL& url) {
  return url.absoluteString().substr(0, url.absoluteString().find('/', url.scheme().size() + 3));
}

}  // namespace

// The easy handles in flight and what drives them.
class CurlTransfers::Multi {
 public:
  ~Multi() {
    for (const auto& transfer : active_) multi_.remove(transfer->handle());
  }

  void wakeUp() { multi_.wakeUp(); }

  void add(std::unique_ptr<CurlTransfer> transfer) {
    if (!multi_.add(transfer->handle())) {
      failed_.push_back(std::move(transfer));
    } else {
      active_.push_back(std::move(transfer));
    }
  }

  // Moves everything on and returns what ended, after waiting for something to do.
  std::vector<std::pair<std::unique_ptr<CurlTransfer>, CURLcode>> turn() {
    std::vector<std::pair<std::unique_ptr<CurlTransfer>, CURLcode>> ended;
    for (auto& transfer : failed_) ended.emplace_back(std::move(transfer), CURLE_OUT_OF_MEMORY);
    failed_.clear();
    for (const auto& [easy, code] : multi_.perform()) ended.emplace_back(take(easy), code);
    if (ended.empty()) multi_.wait({}, active_.empty() ? idleMilliseconds : lookMilliseconds);
    return ended;
  }

  std::vector<std::unique_ptr<CurlTransfer>> takeAll() {
    for (const auto& transfer : active_) multi_.remove(transfer->handle());
    return std::move(active_);
  }

 private:
  std::unique_ptr<CurlTransfer> take(CURL* easy) {
    const auto found = std::find_if(active_.begin(), active_.end(),
                                    [easy](const auto& transfer) { return transfer->handle() == easy; });
    auto transfer = std::move(*found);
    active_.erase(found);
    return transfer;
  }

  CurlMulti multi_;
  std::vector<std::unique_ptr<CurlTransfer>> active_;
  std::vector<std::unique_ptr<CurlTransfer>> failed_;
};

CurlTransfers::State::State(HostLimits limits) : multi(std::make_unique<Multi>()), lanes(limits) {}
CurlTransfers::State::~State() = default;

CurlTransfers::CurlTransfers(HostLimits limits) : state_(std::make_shared<State>(limits)) {}

CurlTransfers::~CurlTransfers() {
  {
    std::lock_guard lock(state_->mutex);
    state_->stopping = true;
  }
  state_->multi->wakeUp();
  if (!thread_.joinable()) return;
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();  // it ends when the completion that brought it here has returned
  } else {
    thread_.join();
  }
}

bool CurlTransfers::start(URLRequest request, Done done) {
  {
    std::lock_guard lock(state_->mutex);
    const std::string lane = server(request.url);
    if (!state_->lanes.push(lane, {std::move(request), std::move(done)})) return false;
    if (!thread_.joinable()) {
      const BlockedSignals blocked;
      thread_ = std::thread([state = state_] { state->run(); });
    }
  }
  state_->multi->wakeUp();
  return true;
}

bool CurlTransfers::drain(std::chrono::milliseconds bound) {
  std::unique_lock lock(state_->mutex);
  return state_->idle.wait_for(lock, bound, [this] { return state_->lanes.empty(); });
}

void CurlTransfers::State::run() {
  std::unique_lock lock(mutex);
  while (!stopping) {
    while (auto waiting = lanes.pop()) {
      multi->add(std::make_unique<CurlTransfer>(std::move(waiting->request), std::move(waiting->done)));
    }
    lock.unlock();
    const auto ended = multi->turn();
    for (const auto& [transfer, code] : ended) transfer->finish(code);
    lock.lock();
    for (const auto& [transfer, code] : ended) lanes.finished(server(transfer->url()));
    if (lanes.empty()) idle.notify_all();
  }
  lock.unlock();  // the destructor has been called, and nobody else calls any more
  for (const auto& transfer : multi->takeAll()) {
    transfer->cancel();
    lanes.finished(server(transfer->url()));
  }
  while (auto waiting = lanes.pop()) {
    lanes.finished(server(waiting->request.url));
    CurlTransfer(std::move(waiting->request), std::move(waiting->done)).cancel();
  }
}
