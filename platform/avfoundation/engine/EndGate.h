#pragma once

#include <gst/gst.h>

#include <condition_variable>
#include <mutex>
#include <set>

// Keeps the end of a stream back until the decoders have taken every stream of the media in.
//
// decodebin3 takes its inputs in one by one, each on the thread that delivers it, and goes over all of them each time.
// In a short clip one stream can be at its end before the next one is taken in: decodebin3 then throws it away as a
// thing of the past, never ends, and touches freed memory when it stops.
//
// Destroyed after the pipeline; release() comes before the pipeline is stopped.
class EndGate {
 public:
  // Once for a playbin, before it runs.
  void watchDecoders(GstElement* playbin);
  // For each element that joins the pipeline.
  void admit(GstElement* element, GstElement* parent);
  // Holds nothing back any more. Any thread.
  void release();

 private:
  static void decoderPadAdded(GstElement* queue, GstPad* pad, gpointer self);
  static void sourcePadAdded(GstElement* queue, GstPad* pad, gpointer self);
  static void sourcePadRemoved(GstElement* queue, GstPad* pad, gpointer self);
  static GstPadProbeReturn noteArrival(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn holdEnd(GstPad* pad, GstPadProbeInfo* info, gpointer self);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::set<GstPad*> sources_;  // where parsed streams come from
  std::set<GstPad*> taken_;    // where the decoders have taken one in
  bool isReleased_ = false;
};
