#include "platform/systemconfiguration/KernelRoutes.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>

namespace {

// One request with its attributes. The buffer is larger than any that is sent here.
template <typename Body>
struct Request {
  nlmsghdr head{};
  Body body{};
  char attributes[64] = {};

  explicit Request(std::uint16_t type) {
    head.nlmsg_len = NLMSG_LENGTH(sizeof body);
    head.nlmsg_type = type;
    head.nlmsg_flags = NLM_F_REQUEST;
  }

  void add(std::uint16_t type, const void* data, std::size_t size) {
    void* end = reinterpret_cast<char*>(this) + NLMSG_ALIGN(head.nlmsg_len);
    auto* attribute = static_cast<rtattr*>(end);
    attribute->rta_type = type;
    attribute->rta_len = static_cast<unsigned short>(RTA_LENGTH(size));
    std::memcpy(RTA_DATA(attribute), data, size);
    head.nlmsg_len = static_cast<std::uint32_t>(NLMSG_ALIGN(head.nlmsg_len) + RTA_ALIGN(attribute->rta_len));
  }
};

// `first` is where attributes of `length` bytes in all begin: aligned, as the kernel sends them. (The kernel's own
// macros for this cast in a way that warns.)
void forEachAttribute(const void* first, std::size_t length, const std::function<void(const rtattr&)>& visit) {
  const auto* at = static_cast<const char*>(first);
  while (length >= sizeof(rtattr)) {
    const auto& attribute = *static_cast<const rtattr*>(static_cast<const void*>(at));
    if (attribute.rta_len < sizeof(rtattr) || attribute.rta_len > length) return;
    visit(attribute);
    const std::size_t step = std::min<std::size_t>(RTA_ALIGN(attribute.rta_len), length);
    at += step;
    length -= step;
  }
}

template <typename Body>
void forEachAttributeAfter(const Body& body, const nlmsghdr& message, const std::function<void(const rtattr&)>& visit) {
  const auto size = NLMSG_ALIGN(sizeof body);
  const auto payload = NLMSG_PAYLOAD(&message, 0);
  if (payload > size) forEachAttribute(reinterpret_cast<const char*>(&body) + size, payload - size, visit);
}

std::string_view text(const rtattr& attribute) {
  const auto* characters = static_cast<const char*>(RTA_DATA(&attribute));
  return {characters, strnlen(characters, RTA_PAYLOAD(&attribute))};
}

// Sends `request` and gives the one message of the expected type that comes back, to be read from `buffer`; null for an
// error, "no route" included.
template <typename Body>
const nlmsghdr* ask(int socket, const Request<Body>& request, std::uint16_t expected, char* buffer, std::size_t size) {
  if (socket < 0 || ::send(socket, &request, request.head.nlmsg_len, 0) < 0) return nullptr;
  const auto received = ::recv(socket, buffer, size, 0);
  if (received < 0) return nullptr;
  const auto* head = reinterpret_cast<const nlmsghdr*>(buffer);
  return NLMSG_OK(head, static_cast<unsigned>(received)) && head->nlmsg_type == expected ? head : nullptr;
}

// Modems that look like an Ethernet card to the kernel are known by what their driver tells the device manager.
bool isDeviceOfTypeWWAN(const std::string& name) {
  std::ifstream file("/sys/class/net/" + name + "/uevent");
  for (std::string line; std::getline(file, line);) {
    if (line == "DEVTYPE=wwan") return true;
  }
  return false;
}

}  // namespace

KernelRoutes::KernelRoutes() : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)) {
  const timeval bound{.tv_sec = 1, .tv_usec = 0};  // the kernel answers at once or not at all
  if (socket_ >= 0) ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
}

KernelRoutes::~KernelRoutes() {
  if (socket_ >= 0) ::close(socket_);
}

std::optional<NetworkRoute> KernelRoutes::routeTo(const sockaddr& address) {
  Request<rtmsg> request(RTM_GETROUTE);
  request.body.rtm_family = static_cast<unsigned char>(address.sa_family);
  if (address.sa_family == AF_INET) {
    const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
    request.body.rtm_dst_len = 32;
    request.add(RTA_DST, &v4.sin_addr, sizeof v4.sin_addr);
  } else {
    const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address);
    request.body.rtm_dst_len = 128;
    request.add(RTA_DST, &v6.sin6_addr, sizeof v6.sin6_addr);
    if (v6.sin6_scope_id != 0) request.add(RTA_OIF, &v6.sin6_scope_id, sizeof v6.sin6_scope_id);
  }
  alignas(nlmsghdr) char buffer[8192];
  const nlmsghdr* answer = ask(socket_, request, RTM_NEWROUTE, buffer, sizeof buffer);
  if (!answer) return std::nullopt;
  const auto* body = static_cast<const rtmsg*>(NLMSG_DATA(answer));
  if (body->rtm_type > RTN_MULTICAST) return std::nullopt;  // blackhole, unreachable, prohibit
  NetworkRoute route;
  route.isLocal = body->rtm_type == RTN_LOCAL;
  route.isDirect = true;
  forEachAttributeAfter(*body, *answer, [&](const rtattr& attribute) {
    if (attribute.rta_type == RTA_OIF) std::memcpy(&route.interface, RTA_DATA(&attribute), sizeof route.interface);
    if (attribute.rta_type == RTA_GATEWAY || attribute.rta_type == RTA_VIA) route.isDirect = false;
  });
  return route;
}

std::optional<NetworkInterface> KernelRoutes::interface(unsigned index) {
  Request<ifinfomsg> request(RTM_GETLINK);
  request.body.ifi_family = AF_UNSPEC;
  request.body.ifi_index = static_cast<int>(index);
  alignas(nlmsghdr) char buffer[32768];
  const nlmsghdr* answer = ask(socket_, request, RTM_NEWLINK, buffer, sizeof buffer);
  if (!answer) return std::nullopt;
  const auto* body = static_cast<const ifinfomsg*>(NLMSG_DATA(answer));
  NetworkInterface interface;
  interface.isUp = (body->ifi_flags & IFF_UP) && (body->ifi_flags & IFF_RUNNING);
  interface.isPointToPoint = body->ifi_type == ARPHRD_PPP;
  forEachAttributeAfter(*body, *answer, [&](const rtattr& attribute) {
    if (attribute.rta_type == IFLA_IFNAME) interface.name = text(attribute);
    if (attribute.rta_type != IFLA_LINKINFO) return;
    forEachAttribute(RTA_DATA(&attribute), RTA_PAYLOAD(&attribute), [&](const rtattr& nested) {
      if (nested.rta_type == IFLA_INFO_KIND && text(nested) == "wwan") interface.isWWAN = true;
    });
  });
  interface.isWWAN = interface.isWWAN || interface.name.starts_with("ww") || isDeviceOfTypeWWAN(interface.name);
  return interface;
}
