#pragma once

#include <gst/gst.h>

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/avfoundation/engine/CaptionTimeline.h"

// Takes the cues of every legible track out of the parsed streams, before they reach the decoders. So texts never take
// part in prerolling, and choosing a track changes nothing in a pipeline that plays.
//
// admit() once, before the demuxer runs. `found` is called on streaming threads, ahead of the time
// at which a cue is due. Destroyed after the pipeline.
class CaptionFeed {
 public:
  using Found = std::function<void(const std::string& track, CaptionCue cue)>;
  explicit CaptionFeed(Found found) : found_(std::move(found)) {}
  void admit(GstElement* demuxer);

 private:
  static void padAdded(GstElement* element, GstPad* pad, gpointer self);
  static GstPadProbeReturn probe(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void take(GstPad* pad, GstBuffer* buffer) const;

  const Found found_;
};
