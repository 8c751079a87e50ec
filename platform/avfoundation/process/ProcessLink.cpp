#include "platform/avfoundation/process/ProcessLink.h"

#include <utility>

#include "platform/dispatch/Weakly.h"

namespace {
// A process says some ten things a second besides its pictures; a host that is busy hears them later.
constexpr int waitingLimit = 4096;
}  // namespace

std::shared_ptr<ProcessLink> ProcessLink::connect(std::shared_ptr<MediaPeer> peer, MainHop hop, Events events) {
  auto link = std::make_shared<ProcessLink>(std::move(peer), std::move(hop), std::move(events));
  link->peer_->listen(link);
  return link;
}

ProcessLink::ProcessLink(std::shared_ptr<MediaPeer> peer, MainHop hop, Events events)
    : peer_(std::move(peer)),
      hop_(std::move(hop)),
      events_(std::move(events)),
      pictures_([weak = std::weak_ptr(peer_)](std::uint64_t picture) {
        if (const auto alive = weak.lock()) alive->send(wire::GiveBack{picture});
      }) {}

void ProcessLink::cut() {
  isCut_ = true;
  pictures_.setSink(0, nullptr);
  peer_->end();
}

void ProcessLink::peerDidSay(std::span<const std::byte> bytes, Descriptor descriptor) {
  if (isCut_) return;
  auto message = wire::decode<wire::ToHost>(bytes);
  if (!message || !hear(std::move(*message), std::move(descriptor))) peer_->end();
}

bool ProcessLink::hear(wire::ToHost message, Descriptor descriptor) {
  if (const auto* picture = std::get_if<wire::Picture>(&message))
    return pictures_.take(*picture, std::move(descriptor));
  if (const auto* wanted = std::get_if<wire::AreaWanted>(&message)) {
    const auto room = pictures_.makeRoom(wanted->slotSize);
    if (!room) return false;
    peer_->send(room->area, {room->memory->descriptor()});
    return true;
  }
  if (const auto* hello = std::get_if<wire::Hello>(&message); hello && hello->version != wire::version) return false;
  if (waiting_ >= waitingLimit) return false;
  post([message = std::move(message)](const Events& events) { events.said(message); });
  return true;
}

void ProcessLink::peerDidDie(const MediaPeer::Death& death) {
  post([death](const Events& events) { events.died(death); });
}

void ProcessLink::post(std::function<void(const Events&)> telling) {
  ++waiting_;
  hop_.post([self = shared_from_this(), telling = std::move(telling)] {
    --self->waiting_;
    if (!self->isCut_) telling(self->events_);
  });
}
