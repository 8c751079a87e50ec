#pragma once

#include <gst/gst.h>

#include <map>
#include <mutex>
#include <optional>

#include "platform/avfoundation/engine/GstHandles.h"

// How far the media is here already, in media time: notes what leaves the demuxer for the queue in front of the
// decoders.
//
// An adaptive demuxer keeps its segments to itself: there it is what it has handed out plus the level that it reports,
// since its answer to the buffering query has no ranges.
//
// admit() once, before the demuxer runs. Destroyed after the pipeline.
class BufferWatch {
 public:
  void admit(GstElement* demuxer, bool isAdaptive);
  // The media time in nanoseconds up to which every picture and sound is here. Nothing when none is, or not known. When
  // all streams have come to their end it is GST_CLOCK_TIME_NONE. Any thread.
  std::optional<GstClockTime> bufferedEnd() const;
  // The media time in nanoseconds up to which there was anything to play or to read since the last flush. Any thread.
  std::optional<GstClockTime> reachedEnd() const;
  // When the last of all pictures begins. Nothing before it has come, and for playlists, whose pictures may change.
  std::optional<GstClockTime> lastPicture() const;
  // Segments are fetched one by one, as a playlist says.
  bool isAdaptive() const;

 private:
  struct Stream {
    GstSegment segment;
    std::optional<GstClockTime> end;
    std::optional<GstClockTime> lastStart;  // of a buffer, as it is to be shown
    std::optional<GstClockTime> lastEnd;    // the same; what has no length lasts as long as the one before
    bool isComplete = false;
    bool isVideo = false;
    bool counts = true;  // pictures or sound: texts come when they come
  };

  void watch(GstPad* pad);
  static void padAdded(GstElement* element, GstPad* pad, gpointer self);
  static void padRemoved(GstElement* element, GstPad* pad, gpointer self);
  static GstPadProbeReturn probe(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void noteBuffer(GstPad* pad, GstBuffer* buffer);
  void noteEvent(GstPad* pad, GstEvent* event);

  mutable std::mutex mutex_;
  std::map<GstPad*, Stream> streams_;
  std::optional<GstClockTime> lastPicture_;
  GstElementRef adaptiveDemuxer_;
};
