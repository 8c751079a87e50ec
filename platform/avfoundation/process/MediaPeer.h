#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/avfoundation/bytes/Descriptor.h"
#include "platform/avfoundation/process/Wire.h"

// A media process as its host knows it: somebody at the other end of a socket who may say anything, hang or go.
class MediaPeer {
 public:
  // What became of one that has gone.
  struct Death {
    bool hasSpoken = false;  // it had come as far as its first word
    std::string reason;      // for people: "killed by signal 11", "exited with status 1"
  };

  // Hears one process, in order, on one thread that serves all of them; must return soon.
  class Listener {
   public:
    virtual ~Listener() = default;
    // With the descriptor that came with it, if one did.
    virtual void peerDidSay(std::span<const std::byte> message, Descriptor descriptor) = 0;
    // The last call.
    virtual void peerDidDie(const Death& death) = 0;
  };

  virtual ~MediaPeer() = default;
  // Held weakly. What was said before is heard now. Once.
  virtual void listen(const std::weak_ptr<Listener>& listener) = 0;
  // Any thread; never waits. What can't be sent is dropped, and who does not read what it is told is ended.
  virtual void send(const wire::ToProcess& message, const std::vector<int>& descriptors = {}) = 0;
  // A number that changes while it does anything at all; to be looked at before its first word, when it loads its
  // libraries and has no heart yet. Any thread.
  virtual std::uint64_t signsOfLife() const = 0;
  // Any thread. It goes for certain and at once, whatever it is doing. peerDidDie() still comes.
  virtual void end() = 0;
};
