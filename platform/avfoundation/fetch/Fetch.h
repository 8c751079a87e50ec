#pragma once

#include <array>
#include <memory>

#include "platform/avfoundation/fetch/FetchLane.h"
#include "platform/avfoundation/fetch/FetchThread.h"

// Keeps a store filled with a resource around where its reader is: decides which lane serves which place, and how much
// each may hold. Everything that the reader says of itself may be wrong.
//
// The thread that drives the streams.
class Fetch final : public FetchWork {
 public:
  Fetch(const NSURL& url, std::shared_ptr<ByteStore> store, HTTPStreams& streams);

  std::optional<Time> turn(Time now) override;
  int wakeDescriptor() const override { return store_->wakeDescriptor(); }
  void takeWake() override { store_->takeWake(); }

 private:
  struct Lane {
    FetchLane fetch;
    Time movedAt{0};
    std::uint64_t movedTo = 0;
    Time leftAt{0};                // when the reader was last seen in it
    std::uint64_t usesBefore = 0;  // when it was moved
    std::uint64_t fullAhead = 0;   // when it became full, so much was ready; 0 when it isn't
  };

  // The lane that has, or will soon have, the byte at `place`; nil when one must be moved there.
  std::optional<std::size_t> laneFor(std::uint64_t place) const;
  // The lane to be moved when one must be: the one used longest ago, but not where a reader before this one was.
  std::size_t laneToMove(Time now) const;
  // Keeps what another reader leaves for the one that takes over, until that has come there.
  void keepForNextReader(Time now);
  // Whether the reader has been in a lane since it was moved, and where it is, or will be.
  bool wasRead(std::size_t lane) const { return demand_.lane[lane].uses != lanes_[lane].usesBefore; }
  std::uint64_t placeIn(std::size_t lane) const;
  // What the reader waits for; nil when it waits for nothing that could come.
  std::optional<std::uint64_t> wanted() const;
  std::optional<Time> follow(Time now);
  FetchLane::Goal goal(std::size_t lane);
  void makeRoom(std::size_t lane, bool isUrgent);
  void showWhetherFull(std::size_t lane, const FetchLane::Goal& goal);

  Resource resource_;
  const std::shared_ptr<ByteStore> store_;
  std::array<Lane, ByteStore::lanes> lanes_;
  ByteStore::Demand demand_;  // as it was at the beginning of the turn
  std::size_t current_ = 0;   // the lane that is read from
  std::uint32_t readers_;
  std::size_t kept_ = 0;  // the lane that waits for the next reader, up to this time or its use
  Time keptUntil_{0};
  std::uint64_t keptUses_ = 0;
  Time alternatedAt_{-1};  // when the reader last came back to a lane that it had left; negative for never
  bool isAlternating_ = false;
};
