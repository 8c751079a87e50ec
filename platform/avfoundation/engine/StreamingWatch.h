#pragma once

#include <gst/gst.h>

#include <array>
#include <atomic>
#include <cstdint>

// Tells a pipeline whose streaming threads stand still inside a demuxer or a decoder, which no error tells, from one
// that is slow, waits for bytes, or holds what is not due yet.
//
// admit() each element, its children too, when it joins, before it runs. Destroyed after the pipeline.
class StreamingWatch {
 public:
  void admit(GstElement* element);
  // False when somewhere nothing has moved since the last call that ought to have. Any thread, one at a time.
  bool hasMoved();

 private:
  // A place that threads go through.
  struct Stage {
    std::atomic<int> inside{0};
    std::atomic<std::uint64_t> passes{0};  // ways in and out
  };
  class Visit;
  struct Wrapped;
  enum Kind { pictures, sound, kinds };

  void wrapChain(GstPad* pad, Stage& stage);
  void wrapSource(GstElement* source);
  static GstFlowReturn chain(GstPad* pad, GstObject* parent, GstBuffer* buffer);
  static GstFlowReturn chainList(GstPad* pad, GstObject* parent, GstBufferList* list);
  static GstFlowReturn getRange(GstPad* pad, GstObject* parent, guint64 place, guint size, GstBuffer** buffer);
  static void queuePadAdded(GstElement* queue, GstPad* pad, gpointer self);
  static GstPadProbeReturn queueEvent(GstPad* pad, GstPadProbeInfo* info, gpointer self);

  Stage reading_;   // in the source, by who pulls
  Stage parsing_;   // behind the source, by a source that pushes
  Stage queueing_;  // on the way into the queue of parsed streams, which may be full
  std::array<Stage, kinds> decoding_;
  std::array<Stage, kinds> presenting_;  // in a sink, which holds what is not due
  std::atomic<bool> isPulled_{false};    // somebody has got bytes and is to come for more
  // By hasMoved().
  std::uint64_t parsed_ = 0, paged_ = 0;
  std::array<std::uint64_t, kinds> decoded_{};
};
