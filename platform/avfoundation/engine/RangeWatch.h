#pragma once

#include <gst/gst.h>

#include <atomic>

// Makes an HTTP source answer truly where it would guess: whether it can go to another place, and how long the media
// is.
//
// souphttpsrc takes every server that tells a length for one that knows ranges, and is at its end when the first range
// is refused. Asked for a length that the server does not tell it says yes and gives none, which keeps a demuxer that
// knows the duration from being asked.
//
// Any thread. Outlives the pipeline.
class RangeWatch {
 public:
  // The source of the media, before it runs. Other sources than souphttpsrc are left alone.
  void admit(GstElement* source);
  // The server's answer, in the structure that souphttpsrc posts.
  void noteAnswer(const GstStructure* httpHeaders);

 private:
  static GstPadProbeReturn mayGoElsewhere(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn knowsLength(GstPad* pad, GstPadProbeInfo* info, gpointer);

  std::atomic<bool> takesRanges_{true};
};
