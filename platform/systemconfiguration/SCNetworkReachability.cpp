#include "platform/systemconfiguration/SCNetworkReachability.h"

#include <netinet/in.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/dispatch/Weakly.h"
#include "platform/systemconfiguration/NameLookups.h"
#include "platform/systemconfiguration/NetworkChanges.h"
#include "platform/systemconfiguration/ReachabilityRules.h"

namespace {

// How long a watch waits before it looks a name up again: from the first pause, doubled after each failure.
constexpr std::chrono::seconds firstPause{1}, pauseLimit{60};

using Addresses = NameLookups::Addresses;

// The kernel's answers for a name or an address.
class KernelReachability final : public SCNetworkReachability {
 public:
  explicit KernelReachability(std::string name)
      : name_(std::move(name)),
        addresses_(NameLookups::ofNumber(name_)),
        lookups_(addresses_.empty() ? NameLookups::shared() : nullptr) {}
  explicit KernelReachability(const sockaddr_storage& address) : addresses_{address} {}

  ~KernelReachability() override { unwatch(); }

  std::optional<SCNetworkReachabilityFlags> flags() override {
    if (lookups_ && !hasAsked_.exchange(true)) lookups_->start(name_, nullptr);
    KernelRoutes kernel;
    if (!kernel.isOpen()) return std::nullopt;
    const Addresses addresses = lookups_ ? lookups_->known(name_) : addresses_;
    if (addresses.empty()) return reachabilityFlagsOfAnybody(kernel);
    for (const auto& address : addresses) {
      const auto flags = reachabilityFlags(kernel, reinterpret_cast<const sockaddr&>(address));
      if (flags & kSCNetworkReachabilityFlagsReachable) return flags;
    }
    return 0;
  }

  bool setCallback(SCNetworkReachabilityCallBack callback, std::weak_ptr<void> info) override {
    std::lock_guard lock(mutex_);
    callback_ = callback;
    info_ = std::move(info);
    return true;
  }

  bool setDispatchQueue(const dispatch_queue_t& queue) override {
    std::lock_guard control(control_);
    unwatch();
    if (!queue) return true;
    changes_ = NetworkChanges::shared();
    if (!changes_) return false;
    std::unique_lock lock(mutex_);
    const Watch watch{queue, watch_};
    const auto round = ++round_;
    lock.unlock();
    token_ = changes_->add(
        [weak = weakSelf(), watch] { hand(watch.queue, weak, [watch](auto& self) { self.networkChanged(watch); }); });
    const auto baseline = flags();
    lock.lock();
    if (watch.number == watch_ && !last_) last_ = baseline;
    lock.unlock();
    lookUp(watch, round, firstPause);
    return true;
  }

 private:
  struct Watch {
    dispatch_queue_t queue;
    std::uint64_t number;
  };

  // Runs `use` on the queue, when the object is still there. Whoever calls it must not be the one to let go of the
  // object.
  static void hand(const dispatch_queue_t& queue, std::weak_ptr<KernelReachability> weak,
                   std::function<void(KernelReachability&)> use) {
    RunLoop::whileInstalled([&](RunLoop&) { dispatch_async(queue, weakly(std::move(weak), std::move(use))); });
  }

  std::weak_ptr<KernelReachability> weakSelf() {
    return std::static_pointer_cast<KernelReachability>(shared_from_this());
  }

  void unwatch() {
    {
      std::lock_guard lock(mutex_);
      ++watch_;
      last_.reset();
    }
    if (changes_) changes_->remove(token_);
    changes_.reset();
  }

  // Routes tell at once what the addresses of the name, which may be others now, tell later. On the queue.
  void networkChanged(const Watch& watch) {
    look(watch);
    std::unique_lock lock(mutex_);
    if (watch.number != watch_) return;
    const auto round = ++round_;
    lock.unlock();
    lookUp(watch, round, firstPause);
  }

  void lookUp(const Watch& watch, std::uint64_t round, std::chrono::seconds pause) {
    if (!lookups_) return;
    lookups_->start(name_, [weak = weakSelf(), watch, round, pause](bool found) {
      hand(watch.queue, weak, [=](auto& self) { self.lookedUp(watch, round, pause, found); });
    });
  }

  // One that fails says nothing of the network: the last answer stays. On the queue.
  void lookedUp(const Watch& watch, std::uint64_t round, std::chrono::seconds pause, bool found) {
    if (found) return look(watch);
    std::lock_guard lock(mutex_);
    if (watch.number != watch_ || round != round_) return;
    RunLoop::main().schedule(pause, weakly(weakSelf(), [watch, round, pause](KernelReachability& self) {
                               if (self.isCurrent(watch)) self.lookUp(watch, round, std::min(2 * pause, pauseLimit));
                             }));
  }

  bool isCurrent(const Watch& watch) {
    std::lock_guard lock(mutex_);
    return watch.number == watch_;
  }

  // Tells when the flags have changed. On the queue.
  void look(const Watch& watch) {
    const auto present = flags();
    std::unique_lock lock(mutex_);
    if (!present || watch.number != watch_) return;
    const bool isNews = last_ && present != last_;
    last_ = present;
    const auto callback = callback_;
    const auto info = info_.lock();
    lock.unlock();
    if (isNews && callback && info) callback(shared_from_this(), *present, info);
  }

  const std::string name_;
  const Addresses addresses_;                   // of an address or a number
  const std::shared_ptr<NameLookups> lookups_;  // nil for these
  std::atomic<bool> hasAsked_{false};
  std::mutex control_;                       // held to begin and end a watch
  std::shared_ptr<NetworkChanges> changes_;  // while watching
  NetworkChanges::Token token_ = 0;
  std::mutex mutex_;  // for what follows
  SCNetworkReachabilityCallBack callback_ = nullptr;
  std::weak_ptr<void> info_;
  std::uint64_t watch_ = 0;                         // blocks of an earlier watch do nothing
  std::uint64_t round_ = 0;                         // of look-ups: only the last change's goes on
  std::optional<SCNetworkReachabilityFlags> last_;  // what changes are told from
};

}  // namespace

SCNetworkReachability::~SCNetworkReachability() = default;

SCNetworkReachabilityRef SCNetworkReachability::createWithName(const std::string& name) {
  if (name.empty()) return nullptr;
  return std::make_shared<KernelReachability>(name);
}

SCNetworkReachabilityRef SCNetworkReachability::createWithAddress(const sockaddr& address) {
  if (address.sa_family != AF_INET && address.sa_family != AF_INET6) return nullptr;
  sockaddr_storage copy{};
  std::memcpy(&copy, &address, address.sa_family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6));
  return std::make_shared<KernelReachability>(copy);
}
