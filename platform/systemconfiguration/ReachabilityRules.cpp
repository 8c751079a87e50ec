#include "platform/systemconfiguration/ReachabilityRules.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>

namespace {

// Addresses of root name servers: what a route to the internet covers, by a default route or by narrower ones.
constexpr const char* internetAddress4 = "198.41.0.4";
constexpr const char* internetAddress6 = "2001:503:ba3e::2:30";

const in6_addr& v6(const sockaddr& address) {
  return reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
}

std::uint32_t v4(const sockaddr& address) {
  return ntohl(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr);
}

bool isUnspecified(const sockaddr& address) {
  return address.sa_family == AF_INET ? v4(address) == INADDR_ANY : IN6_IS_ADDR_UNSPECIFIED(&v6(address));
}

SCNetworkReachabilityFlags internetFlags(KernelRoutes& kernel) {
  sockaddr_in address4{};
  address4.sin_family = AF_INET;
  ::inet_pton(AF_INET, internetAddress4, &address4.sin_addr);
  if (const auto flags = reachabilityFlags(kernel, reinterpret_cast<const sockaddr&>(address4))) return flags;
  sockaddr_in6 address6{};
  address6.sin6_family = AF_INET6;
  ::inet_pton(AF_INET6, internetAddress6, &address6.sin6_addr);
  return reachabilityFlags(kernel, reinterpret_cast<const sockaddr&>(address6));
}

}  // namespace

SCNetworkReachabilityFlags reachabilityFlags(const std::optional<NetworkRoute>& route,
                                             const std::optional<NetworkInterface>& interface, bool staysOnLink) {
  if (!route || !interface || !interface->isUp) return 0;
  if (staysOnLink && !route->isDirect) return 0;
  SCNetworkReachabilityFlags flags = kSCNetworkReachabilityFlagsReachable;
  if (route->isLocal) flags |= kSCNetworkReachabilityFlagsIsLocalAddress;
  if (route->isDirect) flags |= kSCNetworkReachabilityFlagsIsDirect;
  if (interface->isPointToPoint) flags |= kSCNetworkReachabilityFlagsTransientConnection;
  if (interface->isWWAN) flags |= kSCNetworkReachabilityFlagsIsWWAN;
  return flags;
}

SCNetworkReachabilityFlags reachabilityFlags(KernelRoutes& kernel, const sockaddr& address) {
  if (isUnspecified(address)) return internetFlags(kernel);
  const auto route = kernel.routeTo(address);
  const auto interface = route ? kernel.interface(route->interface) : std::nullopt;
  return reachabilityFlags(route, interface, isLinkLocal(address));
}

SCNetworkReachabilityFlags reachabilityFlagsOfAnybody(KernelRoutes& kernel) {
  if (const auto flags = internetFlags(kernel)) return flags;
  return reachabilityFlags(NetworkRoute{.isDirect = true}, kernel.interfaceToNeighbours(), false);
}
