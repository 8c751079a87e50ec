#include "platform/systemconfiguration/KernelRoutes.h"

#include <ifaddrs.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <netlink/netlink.h>
#include <netlink/route/link.h>
#include <netlink/route/nexthop.h>
#include <netlink/route/route.h>
#include <sys/time.h>

#include <fstream>
#include <string_view>

namespace {

struct Deleter {
  void operator()(nl_addr* address) const { nl_addr_put(address); }
  void operator()(rtnl_route* route) const { rtnl_route_put(route); }
  void operator()(rtnl_link* link) const { rtnl_link_put(link); }
};
template <class T>
using Owned = std::unique_ptr<T, Deleter>;

// Modems that look like an Ethernet card to the kernel are known by what their driver tells the device manager.
bool isDeviceOfTypeWWAN(const std::string& name) {
  std::ifstream file("/sys/class/net/" + name + "/uevent");
  for (std::string line; std::getline(file, line);) {
    if (line == "DEVTYPE=wwan") return true;
  }
  return false;
}

// Neither the machine's own nor one that every link gives itself.
bool isForOthers(const ifaddrs& one) {
  if (!one.ifa_addr || (one.ifa_flags & IFF_LOOPBACK)) return false;
  const auto family = one.ifa_addr->sa_family;
  return (family == AF_INET || family == AF_INET6) && !isLinkLocal(*one.ifa_addr);
}

}  // namespace

bool isLinkLocal(const sockaddr& address) {
  if (address.sa_family == AF_INET6) {
    return IN6_IS_ADDR_LINKLOCAL(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
  }
  return ntohl(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr) >> 16 == 0xA9FE;
}

KernelRoutes::KernelRoutes() : socket_(nl_socket_alloc(), &nl_socket_free) {
  if (!socket_ || nl_connect(socket_.get(), NETLINK_ROUTE) < 0) socket_.reset();
  const timeval bound{.tv_sec = 1, .tv_usec = 0};  // the kernel answers at once or not at all
  if (socket_) ::setsockopt(nl_socket_get_fd(socket_.get()), SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
}

std::optional<NetworkRoute> KernelRoutes::routeTo(const sockaddr& address) {
  if (!socket_) return std::nullopt;
  const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
  const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address);
  const bool isV4 = address.sa_family == AF_INET;
  // The interface of an address with a scope is given.
  if (!isV4 && v6.sin6_scope_id != 0) return NetworkRoute{.interface = v6.sin6_scope_id, .isDirect = true};
  const Owned<nl_addr> target(isV4 ? nl_addr_build(AF_INET, &v4.sin_addr, sizeof v4.sin_addr)
                                   : nl_addr_build(AF_INET6, &v6.sin6_addr, sizeof v6.sin6_addr));
  rtnl_route* found = nullptr;
  if (!target || rtnl_route_lookup(socket_.get(), target.get(), &found) < 0) return std::nullopt;
  const Owned<rtnl_route> owned(found);
  const auto type = rtnl_route_get_type(found);
  if (type > RTN_MULTICAST || rtnl_route_get_nnexthops(found) < 1) return std::nullopt;  // blackhole, unreachable, …
  rtnl_nexthop* hop = rtnl_route_nexthop_n(found, 0);
  NetworkRoute route;
  route.interface = static_cast<unsigned>(rtnl_route_nh_get_ifindex(hop));
  route.isLocal = type == RTN_LOCAL;
  route.isDirect = !rtnl_route_nh_get_gateway(hop) && !rtnl_route_nh_get_via(hop);
  return route;
}

std::optional<NetworkInterface> KernelRoutes::interface(unsigned index) {
  rtnl_link* found = nullptr;
  if (!socket_ || rtnl_link_get_kernel(socket_.get(), static_cast<int>(index), nullptr, &found) < 0)
    return std::nullopt;
  const Owned<rtnl_link> link(found);
  const char *name = rtnl_link_get_name(found), *kind = rtnl_link_get_type(found);
  const auto flags = rtnl_link_get_flags(found);
  NetworkInterface interface;
  interface.name = name ? name : "";
  interface.isUp = (flags & IFF_UP) && (flags & IFF_RUNNING);
  interface.isPointToPoint = rtnl_link_get_arptype(found) == ARPHRD_PPP;
  interface.isWWAN = (kind && std::string_view(kind) == "wwan") || interface.name.starts_with("ww") ||
                     isDeviceOfTypeWWAN(interface.name);
  return interface;
}

std::optional<NetworkInterface> KernelRoutes::interfaceToNeighbours() {
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return std::nullopt;
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owned(list, &::freeifaddrs);
  for (const ifaddrs* one = list; one; one = one->ifa_next) {
    if (!isForOthers(*one)) continue;
    const auto found = interface(::if_nametoindex(one->ifa_name));
    if (found && found->isUp) return found;
  }
  return std::nullopt;
}
