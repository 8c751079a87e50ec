#include "platform/avfoundation/bytes/DescriptorMessage.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace DescriptorMessage {

ssize_t send(int socket, std::span<const std::byte> bytes, std::span<const int> descriptors, int flags) {
  iovec part{const_cast<std::byte*>(bytes.data()), bytes.size()};  // nothing is changed by sending
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  alignas(cmsghdr) std::array<char, CMSG_SPACE(limit * sizeof(int))> control{};
  if (!descriptors.empty() && descriptors.size() <= limit) {
    head.msg_control = control.data();
    head.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
    cmsghdr* rights = CMSG_FIRSTHDR(&head);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(descriptors.size_bytes());
    std::memcpy(CMSG_DATA(rights), descriptors.data(), descriptors.size_bytes());
  }
  ssize_t sent = 0;
  do {
    sent = sendmsg(socket, &head, flags);
  } while (sent < 0 && errno == EINTR);
  return sent;
}

Received receive(int socket, std::span<std::byte> buffer, int flags) {
  iovec part{buffer.data(), buffer.size()};
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  alignas(cmsghdr) std::array<char, CMSG_SPACE(limit * sizeof(int))> control;
  head.msg_control = control.data();
  head.msg_controllen = control.size();
  Received received;
  do {
    received.size = recvmsg(socket, &head, flags | MSG_CMSG_CLOEXEC);
  } while (received.size < 0 && errno == EINTR);
  if (received.size < 0) return received;
  received.isCut = (head.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0;
  for (cmsghdr* rights = CMSG_FIRSTHDR(&head); rights; rights = CMSG_NXTHDR(&head, rights)) {
    if (rights->cmsg_level != SOL_SOCKET || rights->cmsg_type != SCM_RIGHTS) continue;
    const std::size_t count = (rights->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
      int number = -1;
      std::memcpy(&number, CMSG_DATA(rights) + i * sizeof number, sizeof number);
      received.descriptors.emplace_back(number);
    }
  }
  return received;
}

}  // namespace DescriptorMessage
