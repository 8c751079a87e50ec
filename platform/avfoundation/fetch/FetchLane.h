#pragma once

#include <chrono>
#include <optional>

#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/avfoundation/fetch/ResourceAnswer.h"
#include "platform/avfoundation/fetch/ResourceOpening.h"
#include "platform/dispatch/RunLoop.h"

// What the lanes of one resource share.
struct Resource {
  NSURL url;
  std::optional<ResourceFacts> facts;  // nil until the first answer
  ResourceOpening opening;             // when `facts` have no name for it
  bool takesRange = true;              // false: it must not even be asked for
  std::optional<NSError> failure;      // for good: it could not be opened, or is not the same any more
};

// Fills one lane of a store, over one connection at a time: asks for the bytes from the lane's end on, and again when
// they stop coming, with pauses that grow while nothing comes. After the first answer it never gives up by itself. A
// live stream that has to be asked again goes on with what it sends by then.
//
// The thread that drives the streams. It does nothing but in turn(), and take bytes in between.
class FetchLane final : HTTPStreamClient {
 public:
  using Time = RunLoop::Duration;

  // How far to fill.
  struct Goal {
    std::uint64_t until = 0;  // bytes are wanted up to this place
    std::size_t chunks = 0;   // of the store's memory, as many may be held
    std::uint64_t step = 0;   // a pause ends when there is room for so much
    bool isUrgent = false;    // or at once: the reader waits for what comes next
  };

  FetchLane(Resource& resource, ByteStore& store, std::size_t number, HTTPStreams& streams);

  // Whether it has a place at all.
  bool isPlaced() const { return isPlaced_; }
  // Goes on at another place, without delay.
  void move(std::uint64_t place);
  // Gives up its place and what it holds.
  void drop();
  // Lets go of a connection that pauses; it is made again when there is room.
  void rest();
  // Asks for nothing more.
  void halt();
  // Does what is due. Returns when the next turn is needed at the latest, if nothing else happens.
  std::optional<Time> turn(Time now, const Goal& goal);
  // Why nothing comes: for a reader that waits. nil while it may well come.
  std::optional<NSError> failure() const;
  // It waits for room.
  bool isPaused() const { return isPaused_; }

 private:
  bool streamDidAnswer(const HTTPAnswer& answer) override;
  Taken streamDidReceive(std::span<const std::byte> bytes) override;
  void streamDidEnd(std::optional<NSError> error) override;

  bool hasRoom(std::uint64_t bytes) const;
  bool mayGoOn() const;
  bool isDone() const;
  bool hasAll() const;
  void stop();
  void measure(Time now);
  void ask(Time now);
  // A request has ended: what follows from it.
  void settle(Time now);
  void settle(const ResourceAnswer::Body& body, const std::optional<NSError>& error, Time now);
  void settle(const ResourceAnswer::End& nothing, const std::optional<NSError>&, Time);
  void settle(const ResourceAnswer::Later& later, const std::optional<NSError>&, Time now);
  void settle(const ResourceAnswer::Refusal& refusal, const std::optional<NSError>&, Time now);
  void settle(const ResourceAnswer::Changed&, const std::optional<NSError>&, Time);
  void settle(const ResourceAnswer::Unranged&, const std::optional<NSError>&, Time);
  void askLater(Time now, std::optional<std::chrono::seconds> after = {});
  // The same, but sooner when the reader waits.
  void askSoon(Time now);
  // Whether a body from the start is of a live stream, whose beginning is another one by now.
  bool isLiveAgain(std::span<const std::byte> bytes) const;
  void refuse(const NSError& error, Time now);
  std::uint64_t end() const { return store_.end(number_); }

  Resource& resource_;
  ByteStore& store_;
  const std::size_t number_;
  HTTPStreams& streams_;
  bool isPlaced_ = false;
  Goal goal_;

  // The request under way.
  std::unique_ptr<HTTPStream> stream_;
  std::optional<ResourceAnswer::Meaning> meaning_;  // nil until it is answered
  std::uint64_t cursor_ = 0;                        // the place of the body's next byte
  bool hasEnded_ = false;
  std::optional<NSError> error_;
  bool isPaused_ = false;
  bool hasHeard_ = false;  // since the last turn
  Time heardAt_{0};

  // What came since then, while it does not pause.
  std::optional<Time> burstSince_;
  std::size_t burstBytes_ = 0;

  // What became of those before, while nothing came.
  Time askAt_{0};
  Time urgentAt_{0};  // the same for a reader that waits
  Time pause_;
  Time urgentPause_{0};  // of failures that come one upon another, whatever came in between
  std::optional<Time> troubledUntil_;
  int attempts_ = 0;      // of the first answer
  int refusals_ = 0;      // in a row
  int wholeAnswers_ = 0;  // in a row, to a request for a part
  std::optional<NSError> refusal_;
};
