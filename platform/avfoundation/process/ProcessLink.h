#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "platform/avfoundation/engine/MainHop.h"
#include "platform/avfoundation/process/MediaPeer.h"
#include "platform/avfoundation/process/PictureReceiver.h"

// One media process of an engine: makes sense of what it says, answers what is asked for pictures at once, and posts
// the rest to the main queue. A process that says what nobody says, or more than anybody hears, is ended.
class ProcessLink final : public MediaPeer::Listener, public std::enable_shared_from_this<ProcessLink> {
 public:
  // Both on the main queue, each on a turn of its own; not after `hop` is closed or the link is cut.
  struct Events {
    std::function<void(wire::ToHost)> said;
    std::function<void(MediaPeer::Death)> died;
  };
  static std::shared_ptr<ProcessLink> connect(std::shared_ptr<MediaPeer> peer, MainHop hop, Events events);
  ProcessLink(std::shared_ptr<MediaPeer> peer, MainHop hop, Events events);

  // Any thread.
  MediaPeer& peer() { return *peer_; }
  PictureReceiver& pictures() { return pictures_; }
  // Main thread. Ends the process, and nothing of it is told any more. Pictures that are held stay.
  void cut();

  void peerDidSay(std::span<const std::byte> message, Descriptor descriptor) override;
  void peerDidDie(const MediaPeer::Death& death) override;

 private:
  bool hear(wire::ToHost message, Descriptor descriptor);
  void post(std::function<void(const Events&)> telling);

  const std::shared_ptr<MediaPeer> peer_;
  MainHop hop_;
  const Events events_;
  PictureReceiver pictures_;
  std::atomic<bool> isCut_{false};
  std::atomic<int> waiting_{0};  // posted and not yet told
};
