#include "apps/ymr-media/HostSocket.h"

#include <sys/socket.h>

#include "platform/avfoundation/bytes/DescriptorMessage.h"

bool HostSocket::isThere() {
  int type = 0;
  socklen_t size = sizeof type;
  return getsockopt(number, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

void HostSocket::send(const wire::ToHost& message, int descriptor) {
  const auto bytes = wire::encode(message);
  std::lock_guard lock(mutex_);
  DescriptorMessage::send(number, bytes, {&descriptor, descriptor < 0 ? 0u : 1u}, MSG_NOSIGNAL);
}

std::optional<HostSocket::Received> HostSocket::receive() {
  std::vector<std::byte> buffer(wire::messageLimit);
  for (;;) {
    auto received = DescriptorMessage::receive(number, buffer, 0);
    if (received.size <= 0 || received.isCut) return std::nullopt;  // cut: no room for descriptors
    auto message = wire::decode<wire::ToProcess>({buffer.data(), static_cast<std::size_t>(received.size)});
    if (message) return Received{std::move(*message), std::move(received.descriptors)};
  }
}
