#pragma once

#include <sys/types.h>

#include <cstddef>
#include <span>
#include <vector>

#include "platform/avfoundation/bytes/Descriptor.h"

// Datagrams of a local socket with open descriptors beside their bytes: at most `limit` each. Any thread. `flags` are
// the system's own.
namespace DescriptorMessage {

inline constexpr std::size_t limit = 4;

// As sendmsg(): -1 with errno; the descriptors stay the caller's. It is tried again when a signal comes between.
ssize_t send(int socket, std::span<const std::byte> bytes, std::span<const int> descriptors, int flags);

struct Received {
  ssize_t size = 0;    // as recvmsg(): 0 when the other end has gone, -1 with errno
  bool isCut = false;  // there was more of it than room
  std::vector<Descriptor> descriptors = {};
};
Received receive(int socket, std::span<std::byte> buffer, int flags);

}  // namespace DescriptorMessage
