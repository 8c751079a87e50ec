#pragma once

#include <gst/gst.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/avfoundation/bytes/MediaBytes.h"
#include "platform/avfoundation/engine/SegmentTexts.h"
#include "platform/avfoundation/engine/SegmentTrack.h"

// Reads the row of records of a SegmentSource, from one wish to the next, on a thread of its own, and hands each record
// to its track; texts on the side, as they come.
//
// start(), stop() and wishes by one thread; the rest on any.
class SegmentReader {
 public:
  struct Hooks {
    // The facts have come, the first or others.
    std::function<void()> factsChanged;
    // Nothing more can be read.
    std::function<void()> failed;
    std::function<void(std::size_t track, std::int64_t start, std::int64_t end, const std::string& text)> textFound;
  };
  // Times that can be gone to, now.
  struct Window {
    bool isLive = false;
    std::int64_t start = 0, end = 0;
  };

  SegmentReader(std::shared_ptr<MediaBytes> bytes, SegmentClock& clock, std::vector<SegmentTrack*> tracks, Hooks hooks);
  ~SegmentReader();

  // Reads on from `time`; the first time from where the row begins by itself.
  void start(std::optional<std::int64_t> time);
  void stop();
  // These texts come along from `time` on.
  void wishText(unsigned track, std::int64_t time);

  // nil before there are facts.
  std::optional<Window> window() const;
  SegmentFacts facts() const;
  // How much media is here that was not handed on yet, in nanoseconds, as far as it can be told.
  std::uint64_t timeAhead() const;

 private:
  using Outcome = MediaBytes::Outcome;
  void run();
  Outcome readRecord();
  Outcome readFully(std::uint64_t place, std::span<std::byte> target);
  bool handOn(SegmentTrack::Item item);
  void readTexts();
  void noteFacts(const SegmentRecord& record, std::span<const std::byte> content);
  void noteBytes(const SegmentRecord& record);

  const std::shared_ptr<MediaBytes> bytes_;
  const std::vector<SegmentTrack*> tracks_;
  const Hooks hooks_;
  SegmentTexts texts_;
  std::thread thread_;
  std::atomic<bool> isStopping_{false};
  std::atomic<std::uint64_t> place_{0};
  std::atomic<double> timePerByte_{0};
  std::uint64_t segmentBytes_ = 0;  // of the main track's segment that is being read
  bool isOver_ = false;             // there is nothing more in the row

  mutable std::mutex mutex_;  // guards what follows
  SegmentWish wish_;
  std::uint64_t textPlace_ = 0;  // 0 when none are wanted
  std::optional<SegmentRecord> window_;
  SegmentFacts facts_;
};
