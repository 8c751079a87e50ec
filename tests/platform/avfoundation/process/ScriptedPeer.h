#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "platform/avfoundation/process/MediaPeer.h"
#include "platform/avfoundation/process/SharedPosition.h"

// A media process that says what the test says.
class ScriptedPeer final : public MediaPeer {
 public:
  void listen(const std::weak_ptr<Listener>& listener) override { listener_ = listener; }
  void send(const wire::ToProcess& message, const std::vector<int>& descriptors) override {
    sent.push_back(message);
    const auto* load = std::get_if<wire::Load>(&message);
    if (!load) return;
    position = SharedPosition::map(Descriptor(dup(descriptors.at(0))));
    if (begins) position->write({.time = CMTimeConvertScale(load->start, 1'000'000'000).value});
  }
  std::uint64_t signsOfLife() const override { return signs; }
  void end() override {
    isEnded = true;
    die("killed by signal 9");
  }

  void say(const wire::ToHost& message) { say(wire::encode(message)); }
  void say(const std::vector<std::byte>& bytes) {
    if (const auto listener = listener_.lock()) listener->peerDidSay(bytes, {});
  }
  void die(const std::string& reason, bool hasSpoken = true) {
    const auto listener = std::exchange(listener_, {}).lock();
    if (listener) listener->peerDidDie({hasSpoken, reason});
  }
  // As a process does that has come as far as its first picture, of a minute or of a live stream.
  void becomeReady(bool isLive = false) {
    say(wire::Hello{});
    wire::Facts facts;
    facts.isLive = isLive;
    facts.duration = isLive ? kCMTimeIndefinite : CMTimeMake(60, 1);
    say(facts);
    say(wire::Buffering{false, true, {}});
    say(wire::Ready{});
  }
  template <class Message>
  std::vector<Message> all() const {
    std::vector<Message> found;
    for (const auto& message : sent) {
      if (const auto* wanted = std::get_if<Message>(&message)) found.push_back(*wanted);
    }
    return found;
  }

  std::vector<wire::ToProcess> sent;
  std::unique_ptr<SharedPosition> position;
  bool begins = true;  // with the media, as soon as it is told to
  bool isEnded = false;
  std::uint64_t signs = 0;

 private:
  std::weak_ptr<Listener> listener_;
};
