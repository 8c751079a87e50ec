#pragma once

#include <sys/socket.h>

#include <memory>
#include <optional>
#include <string>

struct nl_sock;

// Where packets to an address would go.
struct NetworkRoute {
  unsigned interface = 0;
  bool isLocal = false;   // an address of this machine
  bool isDirect = false;  // without a gateway
};

struct NetworkInterface {
  std::string name;
  bool isUp = false;  // set up and with a carrier
  bool isPointToPoint = false;
  bool isWWAN = false;
};

// Whether no router passes packets to an IPv4 or IPv6 address on.
bool isLinkLocal(const sockaddr& address);

// Asks the kernel (rtnetlink) in the network namespace of the constructing thread. One thread at a time.
class KernelRoutes {
 public:
  KernelRoutes();
  KernelRoutes(const KernelRoutes&) = delete;
  KernelRoutes& operator=(const KernelRoutes&) = delete;

  // False when the kernel cannot be asked; then nothing is found.
  bool isOpen() const { return socket_ != nullptr; }
  // nil when there is no route, or only one that refuses.
  std::optional<NetworkRoute> routeTo(const sockaddr& address);
  std::optional<NetworkInterface> interface(unsigned index);
  // One that is up and has an address by which others can reach it; nil when there is none.
  std::optional<NetworkInterface> interfaceToNeighbours();

 private:
  std::unique_ptr<nl_sock, void (*)(nl_sock*)> socket_;
};
