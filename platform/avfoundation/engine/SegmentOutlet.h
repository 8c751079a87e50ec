#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <mutex>
#include <optional>

#include "platform/avfoundation/engine/GstHandles.h"

// One stream that leaves a SegmentSource: its pad, and where on it the programme's time line runs.
//
// Of one thread at a time, but for what says otherwise.
class SegmentOutlet {
 public:
  // The pad becomes the element's.
  SegmentOutlet(GstElement* element, GstStream* stream, GstPad* pad);

  GstStream* stream() const { return stream_.get(); }
  GstPad* pad() const { return pad_.get(); }

  // The row begins anew, at a time; nothing of before goes on. While nothing is pushed.
  void restart(std::int64_t time);
  // What comes next is of `time`, and is shown right behind what came before, `skipped` in all left out since the row
  // began.
  void skipTo(std::int64_t time, std::int64_t skipped);
  // Whether what begins at `time` was here already, in part.
  bool overlaps(std::int64_t time) const;
  void setOverlapping(bool isOverlapping) { isOverlapping_ = isOverlapping; }
  // A new run begins: decoders start afresh.
  void setBroken() { isBroken_ = true; }

  // Pushes a buffer with times on the programme's line.
  GstFlowReturn push(GstCaps* caps, GstMiniObjectRef<GstBuffer> buffer);
  void end();

 private:
  void start();

  const GstObjectRef<GstStream> stream_;
  const GstPadRef pad_;
  GstCapsRef caps_;
  GstSegment segment_;
  bool isSegmentDue_ = true;  // where the line runs is still to be told
  bool isBroken_ = true;
  bool isOverlapping_ = false;
  bool hasEnded_ = false;
  std::int64_t origin_ = 0;  // where the row began
  std::optional<GstClockTime> reached_;
};
