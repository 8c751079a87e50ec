#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/Export.h"
#include "platform/avfoundation/bytes/SharedMemory.h"
#include "platform/avfoundation/process/MediaPeer.h"

// A process of the program ymr-media, from its start to its certain end. It lives until end(), whoever lets go of this.
//
// It has a session of its own, so that a terminal and its signals are the host's alone, none of the host's descriptors
// but standard error and its socket, and no blocked signal. The host needs no handler for SIGCHLD: the process is
// waited for by a descriptor.
class MediaProcess final : public MediaPeer, public std::enable_shared_from_this<MediaProcess> {
 public:
  // Starts the program; null when it can't be, with the reason in `failure`.
  static std::shared_ptr<MediaProcess> start(const std::string& program, std::string& failure);
  // Talks to somebody at the other end of a socket who is no child of this process. For tests.
  static std::shared_ptr<MediaProcess> adopt(Descriptor socket);
  ~MediaProcess() override;

  void listen(const std::weak_ptr<Listener>& listener) override;
  void send(const wire::ToProcess& message, const std::vector<int>& descriptors) override;
  std::uint64_t signsOfLife() const override;
  void end() override;

  // Nil for one that was adopted.
  std::optional<int> identifier() const { return pid_; }
  bool isAlive() const { return !isDead_; }
  // Somebody has stopped it, or traces it.
  bool isStopped() const;

 private:
  MediaProcess(Descriptor socket, Descriptor process, std::optional<int> pid);
  void watch();
  // On the thread of ProcessWatch: what can be read now; false when nothing more comes.
  bool receive();
  bool reap();
  void die(std::string reason);
  std::vector<std::string> status() const;

  const Descriptor socket_;
  const Descriptor process_;
  const std::optional<int> pid_;
  std::atomic<bool> isDead_{false};
  std::atomic<bool> hasSpoken_{false};
  std::string reason_;  // on the watch's thread
  bool isClosed_ = false, isReaped_ = false;

  std::mutex mutex_;
  std::weak_ptr<Listener> listener_;
  std::vector<std::vector<std::byte>> unheard_;  // before listen()
  std::optional<Death> death_;                   // the same
};
