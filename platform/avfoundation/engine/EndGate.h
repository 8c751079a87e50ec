#pragma once

#include <gst/gst.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>

// Keeps the end of a stream back until the decoders have taken in every stream of pictures and sound, and each text
// that has begun.
//
// decodebin3 goes over all of its inputs whenever the first buffer of one arrives, on the thread that brings it, and
// throws away those that are at their end. In a short clip, one stream can have ended before another brings its first
// buffer, or while it does: decodebin3 then never ends, and touches freed memory when it stops. A text may bring none,
// so its end comes after all the others.
//
// Destroyed after the pipeline; release() comes before the pipeline is stopped.
class EndGate {
 public:
  // Once for a playbin, before it runs.
  void watchDecoders(GstElement* playbin);
  // For each element that joins the pipeline.
  void admit(GstElement* element, GstElement* parent);
  // Holds nothing back any more; ends no longer reach the decoders. Any thread.
  void release();

 private:
  static void decoderPadAdded(GstElement* queue, GstPad* pad, gpointer self);
  static void sourcePadAdded(GstElement* queue, GstPad* pad, gpointer self);
  static void sourcePadRemoved(GstElement* queue, GstPad* pad, gpointer self);
  static GstPadProbeReturn noteDeparture(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn noteArrival(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn eventPasses(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  GstPadProbeReturn textEnds(GstPad* pad);
  GstPadProbeReturn mediaEnds(GstPad* pad);
  bool areAllTaken() const;
  bool haveMediaEnded() const;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<GstPad*, bool> sources_;  // where parsed streams come from; true for one at its end
  std::set<GstPad*> begun_;          // those of sources_ whose first buffer has left
  std::set<GstPad*> heldTexts_;      // texts whose end has been kept back
  std::set<std::string> taken_;      // streams whose first buffer has reached the decoders
  bool isReleased_ = false;
};
