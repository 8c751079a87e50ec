#pragma once

#include <sys/socket.h>

#include <optional>
#include <string>

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

// Asks the kernel (rtnetlink) in the network namespace of the constructing thread. One thread at a time.
class KernelRoutes {
 public:
  KernelRoutes();
  KernelRoutes(const KernelRoutes&) = delete;
  KernelRoutes& operator=(const KernelRoutes&) = delete;
  ~KernelRoutes();

  // False when the kernel cannot be asked; then nothing is found.
  bool isOpen() const { return socket_ >= 0; }
  // nil when there is no route, or only one that refuses.
  std::optional<NetworkRoute> routeTo(const sockaddr& address);
  std::optional<NetworkInterface> interface(unsigned index);

 private:
  const int socket_;
};
