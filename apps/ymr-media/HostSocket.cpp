#include "apps/ymr-media/HostSocket.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace {
constexpr std::size_t descriptorsLimit = 4;
}

bool HostSocket::isThere() {
  int type = 0;
  socklen_t size = sizeof type;
  return getsockopt(number, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

void HostSocket::send(const wire::ToHost& message, int descriptor) {
  auto bytes = wire::encode(message);
  iovec part{bytes.data(), bytes.size()};
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptor)> control{};
  if (descriptor >= 0) {
    head.msg_control = control.data();
    head.msg_controllen = control.size();
    cmsghdr* rights = CMSG_FIRSTHDR(&head);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(rights), &descriptor, sizeof descriptor);
  }
  std::lock_guard lock(mutex_);
  while (sendmsg(number, &head, MSG_NOSIGNAL) < 0 && errno == EINTR) {
  }
}

std::optional<HostSocket::Received> HostSocket::receive() {
  std::vector<std::byte> buffer(wire::messageLimit);
  for (;;) {
    iovec part{buffer.data(), buffer.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(descriptorsLimit * sizeof(int))> control{};
    msghdr head{};
    head.msg_iov = &part;
    head.msg_iovlen = 1;
    head.msg_control = control.data();
    head.msg_controllen = control.size();
    const ssize_t size = recvmsg(number, &head, MSG_CMSG_CLOEXEC);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0 || (head.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0) return std::nullopt;  // no room for descriptors
    Received received;
    for (cmsghdr* rights = CMSG_FIRSTHDR(&head); rights; rights = CMSG_NXTHDR(&head, rights)) {
      if (rights->cmsg_level != SOL_SOCKET || rights->cmsg_type != SCM_RIGHTS) continue;
      const std::size_t count = (rights->cmsg_len - CMSG_LEN(0)) / sizeof(int);
      for (std::size_t i = 0; i < count; ++i) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(rights) + i * sizeof(int), sizeof descriptor);
        received.descriptors.emplace_back(descriptor);
      }
    }
    auto message = wire::decode<wire::ToProcess>({buffer.data(), static_cast<std::size_t>(size)});
    if (!message) continue;
    received.message = std::move(*message);
    return received;
  }
}
