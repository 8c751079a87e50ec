#pragma once

#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

// An empty network of the process's own, to be laid out with ip(8). It is the calling thread's and that of all threads
// begun later, until the process ends.
class NetworkNamespace {
 public:
  // Tries to move into one.
  NetworkNamespace() {
    const auto user = std::to_string(::getuid()), group = std::to_string(::getgid());
    if (std::system("ip -V >/dev/null 2>&1") != 0) {
      obstacle_ = "there is no ip command";
    } else if (::unshare(CLONE_NEWNET) != 0) {
      if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
        obstacle_ = std::string("network namespaces are not allowed here: ") + std::strerror(errno);
        return;
      }
      std::ofstream("/proc/self/setgroups") << "deny";
      std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
      std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    if (obstacle_.empty() && !ip("link set lo up")) obstacle_ = "the loopback interface does not come up";
  }

  // Why there is none; empty when there is one.
  const std::string& obstacle() const { return obstacle_; }
  // Runs "ip <arguments>"; false when it fails.
  bool ip(const std::string& arguments) const { return std::system(("ip " + arguments).c_str()) == 0; }

 private:
  std::string obstacle_;
};
