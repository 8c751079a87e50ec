#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/avfoundation/engine/SegmentClock.h"
#include "platform/avfoundation/engine/SegmentOutlet.h"
#include "platform/avfoundation/engine/SegmentParser.h"

// One track of media in segments on its way from records to outlets, on a thread of its own: what is to be waited for
// in one track holds up no other one. A segment that holds nothing to play is passed over.
//
// start() and stop() in turns, by one thread; put() by one thread in between.
class SegmentTrack {
 public:
  struct Item {
    SegmentRecord record;
    GstMiniObjectRef<GstBuffer> content;
  };
  struct Hooks {
    // Where a stream of a type goes, perhaps after a while; null when it is not wanted, nil when nothing is any more.
    // `types` are all that the segment has.
    std::function<std::optional<SegmentOutlet*>(GstStreamType type, int types)> outlet;
    // All that the track has so far.
    std::function<std::vector<SegmentOutlet*>()> outlets;
    std::function<void(GstMessage*)> message;
    // Several segments in a row, from the first on, or the last of all, hold nothing to play.
    std::function<void()> undecodable;
  };
  SegmentTrack(SegmentClock& clock, std::size_t bytesLimit, Hooks hooks);
  ~SegmentTrack();

  // Where the outlets' line begins has been told to them.
  void start();
  // What waits in an outlet has been told to go.
  void stop();
  // Takes an item; false when there is no room now, and it stays as it is.
  bool put(Item& item);
  std::size_t queuedBytes() const;
  // Up to where something was pushed; 0 before.
  std::int64_t reached() const { return reached_; }

 private:
  void run();
  std::optional<Item> take();
  GstFlowReturn handle(Item item);
  void begin(const SegmentRecord& record);
  GstFlowReturn feed(GstMiniObjectRef<GstBuffer> bytes);
  GstFlowReturn finish(bool isCut);
  void skip(std::int64_t start, std::int64_t duration);
  void end();
  GstFlowReturn takePiece(SegmentParser::Piece piece);
  GstFlowReturn givePiece(GstStreamType type, GstCaps* caps, GstMiniObjectRef<GstBuffer> buffer);
  GstFlowReturn giveHeld();
  void setClock(GstStreamType type, GstClockTime time);

  SegmentClock& clock_;
  const std::size_t bytesLimit_;
  const Hooks hooks_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Item> items_;
  std::size_t bytes_ = 0;
  std::atomic<bool> isStopping_{false};
  std::thread thread_;
  std::atomic<std::int64_t> reached_{0};

  // The thread's.
  struct Held {
    GstStreamType type;
    GstCapsRef caps;
    GstMiniObjectRef<GstBuffer> buffer;
  };
  std::unique_ptr<SegmentParser> parser_;
  SegmentRecord record_;
  std::optional<std::uint64_t> discontinuity_;  // of the segment before
  std::vector<std::byte> begin_;                // of the segment
  std::vector<Held> held_;                      // until it is known what its times mean
  bool isClocked_ = false;
  std::int64_t toRaw_ = 0;  // from the container's times to those that tracks have in common
  int given_ = 0;           // out of this segment
  std::size_t fed_ = 0;     // into it
  int empty_ = 0;           // segments in a row
  bool hasGiven_ = false;
  std::int64_t skipped_ = 0;
};
