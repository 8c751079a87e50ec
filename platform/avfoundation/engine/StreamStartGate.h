#pragma once

#include <gst/gst.h>

#include <atomic>
#include <condition_variable>
#include <mutex>

// Lets the first stream of a source start last.
//
// playbin3 1.22 hands each stream to its decoder part from a thread of its own. When the first one is through before
// the others have begun, the decoder part settles for what it has seen and never becomes ready. So the first stream
// waits, for a bounded time, until all the others have announced themselves. An adaptive demuxer's come one after the
// other by the same thread, and none waits.
//
// Any thread. Outlives the pipeline.
class StreamStartGate {
 public:
  // From the pipeline's element-added signal. The source's element is watched, others are ignored.
  void admit(GstElement* element);

 private:
  // Returns when all of so many streams but the first have started, or after `announcementsLimit`.
  void hold(unsigned streams);
  void noteStarted();
  static void padAdded(GstElement* source, GstPad* pad, gpointer self);
  static GstPadProbeReturn firstStarts(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn otherStarts(GstPad* pad, GstPadProbeInfo* info, gpointer self);

  std::mutex mutex_;
  std::condition_variable changed_;
  unsigned started_ = 0;  // but for the first
  bool hasFirst_ = false;
  std::atomic<bool> comeInTurn_{false};
};
