#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/Export.h"
#include "platform/dispatch/Dispatch.h"

using SCNetworkReachabilityFlags = std::uint32_t;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsTransientConnection = 1;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsReachable = 2;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsConnectionRequired = 4;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsConnectionOnTraffic = 8;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsInterventionRequired = 16;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsConnectionOnDemand = 32;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsIsLocalAddress = 0x10000;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsIsDirect = 0x20000;
inline constexpr SCNetworkReachabilityFlags kSCNetworkReachabilityFlagsIsWWAN = 0x40000;

class SCNetworkReachability;
using SCNetworkReachabilityRef = std::shared_ptr<SCNetworkReachability>;
// `info` is what setCallback() was given.
using SCNetworkReachabilityCallBack = void (*)(const SCNetworkReachabilityRef& target, SCNetworkReachabilityFlags flags,
                                               const std::shared_ptr<void>& info);

// How the machine would reach a target, by its routes and interfaces; nothing is sent to the target. Any thread.
//
// Kept from the platform: the flags, answers by name and by address, a callback on a queue when the flags change. A
// local address counts as direct. The kernel knows no connections on demand, so those four flags are never set. Left
// out: pairs of addresses, run loops, permissions.
class YMR_API SCNetworkReachability : public std::enable_shared_from_this<SCNetworkReachability> {
 public:
  SCNetworkReachability() = default;
  SCNetworkReachability(const SCNetworkReachability&) = delete;
  SCNetworkReachability& operator=(const SCNetworkReachability&) = delete;
  virtual ~SCNetworkReachability();

  // A host's name or numeric address; nil for an empty name. Names are looked up elsewhere, from the first time on that
  // the flags are read; until addresses are known, any route to the internet or to neighbours is one that they could
  // take. A look-up that fails changes nothing.
  static SCNetworkReachabilityRef createWithName(const std::string& name);
  // An IPv4 or IPv6 address; nil for another family. 0.0.0.0 and :: stand for the internet.
  static SCNetworkReachabilityRef createWithAddress(const sockaddr& address);

  // The flags at this moment, 0 for a target without a route; nil when the kernel cannot be asked. Never waits for a
  // look-up.
  virtual std::optional<SCNetworkReachabilityFlags> flags() = 0;
  // Replaces the callback; null takes it away. It is skipped when `info` has gone.
  virtual bool setCallback(SCNetworkReachabilityCallBack callback, std::weak_ptr<void> info) = 0;
  // Begins to watch, with callbacks on `queue`, a serial one, when the flags are other than when this was called or at
  // the last callback; nil ends it, but for a callback that runs already. Names are looked up again when the network
  // changes, and when that fails until it does not. False when the kernel does not tell of changes.
  virtual bool setDispatchQueue(const dispatch_queue_t& queue) = 0;
};
