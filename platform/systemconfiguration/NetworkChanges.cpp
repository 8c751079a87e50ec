#include "platform/systemconfiguration/NetworkChanges.h"

#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/dispatch/BlockedSignals.h"

namespace {

int openSocket() {
  const int socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
  if (socket < 0) return -1;
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  if (::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return socket;
  ::close(socket);
  return -1;
}

// Whether anything was there to read; messages lost for want of room count as well.
bool readAll(int socket) {
  char buffer[16384];
  bool any = false;
  for (;;) {
    if (::recv(socket, buffer, sizeof buffer, 0) < 0 && errno != ENOBUFS) {
      if (errno == EINTR) continue;
      return any;
    }
    any = true;
  }
}

}  // namespace

std::shared_ptr<NetworkChanges> NetworkChanges::shared() {
  static std::mutex mutex;
  static std::weak_ptr<NetworkChanges> present;
  std::lock_guard lock(mutex);
  if (auto existing = present.lock()) return existing;
  const int socket = openSocket();
  if (socket < 0) return nullptr;
  const int stop = ::eventfd(0, EFD_CLOEXEC);
  if (stop < 0) {
    ::close(socket);
    return nullptr;
  }
  std::shared_ptr<NetworkChanges> made(new NetworkChanges(socket, stop));
  present = made;
  return made;
}

NetworkChanges::NetworkChanges(int socket, int stop) : socket_(socket), stop_(stop) {
  const BlockedSignals blocked;
  thread_ = std::thread([this] { run(); });
}

NetworkChanges::~NetworkChanges() {
  ::eventfd_write(stop_, 1);
  thread_.join();
  ::close(stop_);
  ::close(socket_);
}

NetworkChanges::Token NetworkChanges::add(Listener listener) {
  std::lock_guard lock(mutex_);
  listeners_.emplace(++lastToken_, std::move(listener));
  return lastToken_;
}

void NetworkChanges::remove(Token token) {
  Listener removed;  // destroyed after the lock is released: what it owns may call back
  std::lock_guard lock(mutex_);
  const auto found = listeners_.find(token);
  if (found == listeners_.end()) return;
  removed = std::move(found->second);
  listeners_.erase(found);
}

void NetworkChanges::run() {
  pollfd descriptors[] = {{socket_, POLLIN, 0}, {stop_, POLLIN, 0}};
  for (;;) {
    if (::poll(descriptors, 2, -1) < 0 && errno != EINTR) return;
    if (descriptors[1].revents != 0) return;
    if (!readAll(socket_)) continue;
    std::lock_guard lock(mutex_);
    for (const auto& [token, listener] : listeners_) listener();
  }
}
