#include "net/SKReachability.h"

#include <arpa/inet.h>
#include <libintl.h>
#include <netinet/in.h>

#include <cstdio>
#include <utility>

#include "platform/foundation/NSNotificationCenter.h"

namespace {

constexpr const char* queueLabel = "tv.ymr.reachability";

std::shared_ptr<SKReachability> reachabilityOver(SCNetworkReachabilityRef ref) {
  return ref ? std::make_shared<SKReachability>(std::move(ref)) : nullptr;
}

std::shared_ptr<SKReachability> reachabilityWithIPv4(std::uint32_t address) {
  sockaddr_in v4{};
  v4.sin_family = AF_INET;
  v4.sin_addr.s_addr = htonl(address);
  return SKReachability::reachabilityWithAddress(reinterpret_cast<const sockaddr&>(v4));
}

}  // namespace

std::shared_ptr<SKReachability> SKReachability::reachabilityWithHostname(const std::string& hostname) {
  return reachabilityOver(SCNetworkReachability::createWithName(hostname));
}

std::shared_ptr<SKReachability> SKReachability::reachabilityWithHostName(const std::string& hostname) {
  return reachabilityWithHostname(hostname);
}

std::shared_ptr<SKReachability> SKReachability::reachabilityWithAddress(const sockaddr& address) {
  return reachabilityOver(SCNetworkReachability::createWithAddress(address));
}

std::shared_ptr<SKReachability> SKReachability::reachabilityForInternetConnection() {
  return reachabilityWithIPv4(INADDR_ANY);
}

std::shared_ptr<SKReachability> SKReachability::reachabilityForLocalWiFi() {
  return reachabilityWithIPv4(0xA9FE0000);  // 169.254.0.0
}

SKReachability::SKReachability(SCNetworkReachabilityRef ref) : reachabilityRef_(std::move(ref)) {}

SKReachability::~SKReachability() {
  stopNotifier();
}

std::shared_ptr<SKReachability> SKReachability::self() {
  return std::static_pointer_cast<SKReachability>(shared_from_this());
}

dispatch_queue_t SKReachability::reachabilitySerialQueue() const {
  std::lock_guard lock(mutex_);
  return reachabilitySerialQueue_;
}

void SKReachability::setReachableBlock(NetworkReachable block) {
  std::lock_guard lock(mutex_);
  reachableBlock_.swap(block);
}

void SKReachability::setUnreachableBlock(NetworkUnreachable block) {
  std::lock_guard lock(mutex_);
  unreachableBlock_.swap(block);
}

// --- Queries -----------------------------------------------------------------------------------------------------

bool SKReachability::isReachableWithFlags(SCNetworkReachabilityFlags flags) const {
  constexpr auto needsDialling =
      kSCNetworkReachabilityFlagsConnectionRequired | kSCNetworkReachabilityFlagsTransientConnection;
  if (!(flags & kSCNetworkReachabilityFlagsReachable)) return false;
  if ((flags & needsDialling) == needsDialling) return false;
  return !(flags & kSCNetworkReachabilityFlagsIsWWAN) || reachableOnWWAN_;
}

bool SKReachability::isReachable() const {
  return isReachableWithFlags(reachabilityFlags());
}

bool SKReachability::isReachableViaWWAN() const {
  constexpr auto both = kSCNetworkReachabilityFlagsReachable | kSCNetworkReachabilityFlagsIsWWAN;
  return (reachabilityFlags() & both) == both;
}

bool SKReachability::isReachableViaWiFi() const {
  constexpr auto both = kSCNetworkReachabilityFlagsReachable | kSCNetworkReachabilityFlagsIsWWAN;
  return (reachabilityFlags() & both) == kSCNetworkReachabilityFlagsReachable;
}

bool SKReachability::connectionRequired() const {
  return reachabilityFlags() & kSCNetworkReachabilityFlagsConnectionRequired;
}

bool SKReachability::isConnectionRequired() const {
  return connectionRequired();
}

bool SKReachability::isConnectionOnDemand() const {
  const auto flags = reachabilityFlags();
  return (flags & kSCNetworkReachabilityFlagsConnectionRequired) &&
         (flags & (kSCNetworkReachabilityFlagsConnectionOnTraffic | kSCNetworkReachabilityFlagsConnectionOnDemand));
}

bool SKReachability::isInterventionRequired() const {
  constexpr auto both = kSCNetworkReachabilityFlagsConnectionRequired | kSCNetworkReachabilityFlagsInterventionRequired;
  return (reachabilityFlags() & both) == both;
}

NetworkStatus SKReachability::currentReachabilityStatus() const {
  if (!isReachable()) return NotReachable;
  return isReachableViaWiFi() ? ReachableViaWiFi : ReachableViaWWAN;
}

SCNetworkReachabilityFlags SKReachability::reachabilityFlags() const {
  return reachabilityRef_->flags().value_or(0);
}

std::string SKReachability::currentReachabilityString() const {
  const NetworkStatus status = currentReachabilityStatus();
  if (status == static_cast<NetworkStatus>(reachableOnWWAN())) return ::gettext("Cellular");
  return status == ReachableViaWiFi ? ::gettext("WiFi") : ::gettext("No Connection");
}

std::string SKReachability::currentReachabilityFlags() const {
  const auto flags = reachabilityFlags();
  const auto shown = [flags](SCNetworkReachabilityFlags flag, char letter) { return flags & flag ? letter : '-'; };
  return {shown(kSCNetworkReachabilityFlagsIsWWAN, 'W'),
          shown(kSCNetworkReachabilityFlagsReachable, 'R'),
          ' ',
          shown(kSCNetworkReachabilityFlagsConnectionRequired, 'c'),
          shown(kSCNetworkReachabilityFlagsTransientConnection, 't'),
          shown(kSCNetworkReachabilityFlagsInterventionRequired, 'i'),
          shown(kSCNetworkReachabilityFlagsConnectionOnTraffic, 'C'),
          shown(kSCNetworkReachabilityFlagsConnectionOnDemand, 'D'),
          shown(kSCNetworkReachabilityFlagsIsLocalAddress, 'l'),
          shown(kSCNetworkReachabilityFlagsIsDirect, 'd')};
}

std::string SKReachability::description() const {
  char text[48];
  std::snprintf(text, sizeof text, "<SKReachability: %#x>",
                static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(this)));
  return text;
}

// --- Notifier ----------------------------------------------------------------------------------------------------

bool SKReachability::startNotifier() {
  const auto own = self();
  std::lock_guard lock(mutex_);
  if (reachabilityObject_) return true;
  auto queue = dispatch_queue_create(queueLabel);
  if (!reachabilityRef_->setCallback(&ReachabilityCallback, own)) return false;
  if (!reachabilityRef_->setDispatchQueue(queue)) {
    reachabilityRef_->setCallback(nullptr, {});
    return false;
  }
  reachabilitySerialQueue_ = std::move(queue);
  reachabilityObject_ = own;
  return true;
}

void SKReachability::stopNotifier() {
  std::shared_ptr<SKReachability> last;  // destroyed after the lock is released: what it owns may call back
  std::lock_guard lock(mutex_);
  if (!reachabilityObject_) return;
  reachabilityRef_->setCallback(nullptr, {});
  reachabilityRef_->setDispatchQueue(nullptr);
  reachabilitySerialQueue_ = nullptr;
  last.swap(reachabilityObject_);
}

void SKReachability::reachabilityChanged(SCNetworkReachabilityFlags flags) {
  std::unique_lock lock(mutex_);
  const auto block = isReachableWithFlags(flags) ? reachableBlock_ : unreachableBlock_;
  lock.unlock();
  const auto own = self();
  try {
    if (block) block(own);
  } catch (...) {
  }
  RunLoop::whileInstalled([&](RunLoop&) {
    dispatch_async(dispatch_get_main_queue(), [own] {
      NSNotificationCenter::defaultCenter().postNotificationName(kReachabilityChangedNotification, own);
    });
  });
}

void ReachabilityCallback(const SCNetworkReachabilityRef&, SCNetworkReachabilityFlags flags,
                          const std::shared_ptr<void>& info) {
  std::static_pointer_cast<SKReachability>(info)->reachabilityChanged(flags);
}
