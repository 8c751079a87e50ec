#pragma once

#include <gst/app/gstappsink.h>

#include <memory>
#include <mutex>
#include <string>

#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/avfoundation/engine/PictureConverter.h"
#include "platform/avfoundation/engine/VideoFrame.h"

// The pipeline's last element for pictures: turns each that is due into a VideoFrame and hands it to the sink.
//
// Pictures come in system memory as the decoder made them, in memory that it shares with whoever shows them, and stay
// as they are until they are drawn. Nothing else of the engine looks at pixels.
//
// makeElement() once, before the pipeline runs; destroyed when it has stopped; all else from any thread.
class FrameOutlet {
 public:
  FrameOutlet() = default;
  FrameOutlet(const FrameOutlet&) = delete;
  FrameOutlet& operator=(const FrameOutlet&) = delete;

  // The graph's sink of pictures; the outlet's. Null when a plugin is missing.
  GstElement* makeElement();
  // After the call the sink before is not called any more. Hands the present picture over.
  void setSink(std::shared_ptr<VideoFrameSink> sink);
  // Drops picture and sink for good.
  void close();
  // A picture has arrived since the last flush.
  bool hasFreshPicture() const;
  // Frames a second of the pictures that arrived last; 0 when unknown.
  double frameRate() const;
  // The pad that all pictures pass. The outlet's; null before makeElement().
  GstPad* pad() const { return pad_.get(); }

 private:
  struct Orientation {
    int rotation = 0;
    bool mirrored = false;
  };

  GstFlowReturn take(GstSampleRef sample, bool isPreroll);
  void noteEvent(GstEvent* event);
  void noteTimes(GstBuffer* picture);
  // The gap, or in its place one that lasts as long as the picture that came last; the caller's.
  GstEvent* afterLastPicture(GstEvent* gap) const;

  static GstFlowReturn newPreroll(GstAppSink* sink, gpointer self);
  static GstFlowReturn newSample(GstAppSink* sink, gpointer self);
  static GstPadProbeReturn probeEvent(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn probeQuery(GstPad* pad, GstPadProbeInfo* info, gpointer);

  GstElementRef element_;
  GstPadRef pad_;
  PictureConverter converter_;  // streaming thread

  mutable std::mutex mutex_;
  std::shared_ptr<VideoFrameSink> sink_;
  VideoFrame current_;
  std::string stream_;  // whose pictures come; the same one may be announced again
  Orientation streamOrientation_;
  double frameRate_ = 0;
  bool isFresh_ = false;  // something came since the last flush
  // When the picture that came last begins, in the stream's own time, and how long it lasts.
  GstClockTime newest_ = GST_CLOCK_TIME_NONE;
  GstClockTime newestLasts_ = 0;
  bool closed_ = false;
};
