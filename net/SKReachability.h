#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/Export.h"
#include "platform/foundation/NSObject.h"
#include "platform/systemconfiguration/SCNetworkReachability.h"

// Posted on the main queue, with the reachability object as sender, after each change.
inline constexpr const char* kReachabilityChangedNotification = "kReachabilityChangedNotification";

// currentReachabilityStatus().
enum NetworkStatus : long {
  NotReachable = 0,
  ReachableViaWWAN = 1,
  ReachableViaWiFi = 2,  // or by cable: whatever is not a mobile network
};

// Whether a host or an address can be reached, and over which kind of network.
//
// Every query reads the flags of that moment and never waits: a name's look-up goes on elsewhere, and until its
// addresses are known any route that they could take counts. Flags that cannot be read count as "no". Any thread.
// Between startNotifier() and stopNotifier() changes are reported on a serial queue of the object's own, and the object
// keeps itself alive. A look-up that fails is no change: it is made again.
class YMR_API SKReachability : public NSObject {
 public:
  using NetworkReachable = std::function<void(const std::shared_ptr<SKReachability>&)>;
  using NetworkUnreachable = NetworkReachable;

  // nil where the platform refuses: an empty name, an address that is neither IPv4 nor IPv6.
  static std::shared_ptr<SKReachability> reachabilityWithHostname(const std::string& hostname);
  static std::shared_ptr<SKReachability> reachabilityWithHostName(const std::string& hostname);
  static std::shared_ptr<SKReachability> reachabilityWithAddress(const sockaddr& address);
  static std::shared_ptr<SKReachability> reachabilityForInternetConnection();
  static std::shared_ptr<SKReachability> reachabilityForLocalWiFi();
  // `ref` is not nil.
  explicit SKReachability(SCNetworkReachabilityRef ref);
  ~SKReachability() override;

  // Whether a mobile route counts as reachable; true at first.
  bool reachableOnWWAN() const { return reachableOnWWAN_; }
  void setReachableOnWWAN(bool counts) { reachableOnWWAN_ = counts; }
  const SCNetworkReachabilityRef& reachabilityRef() const { return reachabilityRef_; }
  // While the notifier runs, else nil.
  dispatch_queue_t reachabilitySerialQueue() const;

  // Called on the serial queue at a change that finds the target reachable, or not; empty for none. What they throw is
  // dropped.
  void setReachableBlock(NetworkReachable block);
  void setUnreachableBlock(NetworkUnreachable block);

  bool isReachableWithFlags(SCNetworkReachabilityFlags flags) const;
  bool isReachable() const;
  bool isReachableViaWWAN() const;
  bool isReachableViaWiFi() const;
  bool connectionRequired() const;
  bool isConnectionRequired() const;
  bool isConnectionOnDemand() const;
  bool isInterventionRequired() const;
  NetworkStatus currentReachabilityStatus() const;
  // 0 when they cannot be read.
  SCNetworkReachabilityFlags reachabilityFlags() const;
  // For people, in the language of the host's own message catalogue. "Cellular" is what the number of
  // reachableOnWWAN() stands for, so without mobile routes an unreachable target reads "Cellular" too.
  std::string currentReachabilityString() const;
  // One character a flag: "WR ctiCDld", each "-" when it is clear.
  std::string currentReachabilityFlags() const;
  std::string description() const;

  // False when the kernel does not tell of changes. Starting twice, like stopping twice, does nothing more.
  bool startNotifier();
  // After it no change is reported, except one that is being reported already.
  void stopNotifier();
  // On the serial queue: calls the block, then posts the notification.
  void reachabilityChanged(SCNetworkReachabilityFlags flags);

 private:
  std::shared_ptr<SKReachability> self();

  std::atomic<bool> reachableOnWWAN_{true};
  const SCNetworkReachabilityRef reachabilityRef_;
  mutable std::mutex mutex_;  // for what follows
  dispatch_queue_t reachabilitySerialQueue_;
  NetworkReachable reachableBlock_;
  NetworkUnreachable unreachableBlock_;
  std::shared_ptr<SKReachability> reachabilityObject_;  // itself, while the notifier runs
};

// What the platform calls with the reference, the new flags and the object.
YMR_API void ReachabilityCallback(const SCNetworkReachabilityRef& target, SCNetworkReachabilityFlags flags,
                                  const std::shared_ptr<void>& info);
