#pragma once

#include <mutex>
#include <optional>
#include <vector>

#include "platform/avfoundation/bytes/SharedMemory.h"
#include "platform/avfoundation/process/Wire.h"

// The host, at the other end of the socket that this process was born with.
class HostSocket {
 public:
  static constexpr int number = 3;

  struct Received {
    wire::ToProcess message;
    std::vector<Descriptor> descriptors;
  };

  // False when this process was started by something that is no host.
  static bool isThere();
  // With a descriptor, unless that is negative. Any thread; waits while the host is busy. Nothing happens when it has
  // gone.
  void send(const wire::ToHost& message, int descriptor = -1);
  // Waits for the next message; nil when the host has gone. One thread.
  std::optional<Received> receive();

 private:
  std::mutex mutex_;
};
