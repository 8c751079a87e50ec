#pragma once

#include <optional>

#include "platform/systemconfiguration/KernelRoutes.h"
#include "platform/systemconfiguration/SCNetworkReachability.h"

// The flags of a target with this route over this interface; nil is none. `staysOnLink`: no router passes packets to
// the target on.
SCNetworkReachabilityFlags reachabilityFlags(const std::optional<NetworkRoute>& route,
                                             const std::optional<NetworkInterface>& interface, bool staysOnLink);

// The flags of somebody whose address is not known: those of the internet or, without a way there, of a neighbour.
SCNetworkReachabilityFlags reachabilityFlagsOfAnybody(KernelRoutes& kernel);

// The flags of an IPv4 or IPv6 address. 0.0.0.0 and :: stand for the internet, over either protocol.
SCNetworkReachabilityFlags reachabilityFlags(KernelRoutes& kernel, const sockaddr& address);
