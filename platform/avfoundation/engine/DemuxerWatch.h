#pragma once

#include <gst/gst.h>

#include <mutex>
#include <vector>

#include "platform/avfoundation/engine/GstHandles.h"

// Notices a demuxer that has given up on a file without a word. parsebin keeps errors to itself that an element posts
// while it is being plugged, and a demuxer that reads on a thread of its own may well be quicker than that.
//
// admit() is called for each element that joins the pipeline. Any thread.
class DemuxerWatch {
 public:
  void admit(GstElement* element);
  // A demuxer has stopped reading. Asked while nothing has come out of any.
  bool hasGivenUp() const;

 private:
  mutable std::mutex mutex_;
  std::vector<GstPadRef> pads_;  // where demuxers read
};
