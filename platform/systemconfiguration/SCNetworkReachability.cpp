#include "platform/systemconfiguration/SCNetworkReachability.h"

#include <netinet/in.h>

#include <cstring>
#include <mutex>
#include <vector>

#include "platform/systemconfiguration/NameLookup.h"
#include "platform/systemconfiguration/NetworkChanges.h"
#include "platform/systemconfiguration/ReachabilityRules.h"

namespace {

constexpr std::chrono::milliseconds lookUpBound{2'000};

using Addresses = std::vector<sockaddr_storage>;

// The kernel's answers for a name or an address.
class KernelReachability final : public SCNetworkReachability {
 public:
  KernelReachability(std::string name, Addresses addresses)
      : name_(std::move(name)), addresses_(std::move(addresses)) {}

  ~KernelReachability() override { unwatch(); }

  std::optional<SCNetworkReachabilityFlags> flags() override {
    KernelRoutes kernel;
    if (!kernel.isOpen()) return std::nullopt;
    for (const auto& address : addresses()) {
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
    const auto watch = watch_;
    lock.unlock();
    dispatch_async(queue, [weak = weakSelf(), watch] {
      if (const auto self = weak.lock()) self->look(watch, true);
    });
    token_ = changes_->add([weak = weakSelf(), queue, watch] {
      RunLoop::whileInstalled([&](RunLoop&) {
        dispatch_async(queue, [weak, watch] {
          if (const auto self = weak.lock()) self->look(watch, false);
        });
      });
    });
    return true;
  }

 private:
  std::weak_ptr<KernelReachability> weakSelf() {
    return std::static_pointer_cast<KernelReachability>(shared_from_this());
  }

  // A name's addresses are kept until the network changes.
  Addresses addresses() {
    std::unique_lock lock(mutex_);
    if (!addresses_.empty()) return addresses_;
    lock.unlock();
    auto found = lookUpName(name_, lookUpBound);
    lock.lock();
    return addresses_ = std::move(found);
  }

  void unwatch() {
    {
      std::lock_guard lock(mutex_);
      ++watch_;
    }
    if (changes_) changes_->remove(token_);
    changes_.reset();
  }

  // On the queue of the watch with this number: takes the flags as they are, and tells when they have changed.
  void look(std::uint64_t watch, bool isFirst) {
    {
      std::lock_guard lock(mutex_);
      if (watch != watch_) return;
      if (!isFirst && !name_.empty()) addresses_.clear();
    }
    const auto present = flags().value_or(0);
    std::unique_lock lock(mutex_);
    if (watch != watch_) return;
    const bool isNews = !isFirst && present != last_;
    last_ = present;
    const auto callback = callback_;
    const auto info = info_.lock();
    lock.unlock();
    if (isNews && callback && info) callback(shared_from_this(), present, info);
  }

  const std::string name_;                   // empty for an address
  std::mutex control_;                       // held to begin and end a watch
  std::shared_ptr<NetworkChanges> changes_;  // while watching
  NetworkChanges::Token token_ = 0;
  std::mutex mutex_;  // for what follows
  Addresses addresses_;
  SCNetworkReachabilityCallBack callback_ = nullptr;
  std::weak_ptr<void> info_;
  std::uint64_t watch_ = 0;  // blocks of an earlier watch do nothing
  SCNetworkReachabilityFlags last_ = 0;
};

}  // namespace

SCNetworkReachability::~SCNetworkReachability() = default;

SCNetworkReachabilityRef SCNetworkReachability::createWithName(const std::string& name) {
  if (name.empty()) return nullptr;
  return std::make_shared<KernelReachability>(name, Addresses());
}

SCNetworkReachabilityRef SCNetworkReachability::createWithAddress(const sockaddr& address) {
  if (address.sa_family != AF_INET && address.sa_family != AF_INET6) return nullptr;
  sockaddr_storage copy{};
  std::memcpy(&copy, &address, address.sa_family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6));
  return std::make_shared<KernelReachability>("", Addresses{copy});
}
