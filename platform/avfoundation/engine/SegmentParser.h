#pragma once

#include <gst/gst.h>

#include <functional>
#include <map>
#include <vector>

#include "platform/avfoundation/engine/GstHandles.h"

// Takes one segment apart, of whatever container it is: bytes go in, parsed pictures and sound come out, on the same
// thread and before push() returns. What goes wrong in it stays in it.
//
// One thread.
class SegmentParser {
 public:
  // A piece of the first stream of its type. Its times are the container's own;
  // GST_CLOCK_TIME_NONE where there is none.
  struct Piece {
    GstStreamType type;
    GstCaps* caps;
    GstMiniObjectRef<GstBuffer> buffer;
  };
  // Called from inside push() and end(); anything but OK ends the parsing.
  using Take = std::function<GstFlowReturn(Piece piece)>;

  explicit SegmentParser(Take take);
  ~SegmentParser();
  SegmentParser(const SegmentParser&) = delete;
  SegmentParser& operator=(const SegmentParser&) = delete;

  // What `take` answered, when it was not OK.
  GstFlowReturn push(GstMiniObjectRef<GstBuffer> bytes);
  // There is no more of it.
  GstFlowReturn end();
  // What streams of pictures and sound the segment has, as far as that is known.
  int types() const { return types_; }
  // Errors and missing decoders that are to be told to others.
  std::vector<GstMiniObjectRef<GstMessage>> messages();

 private:
  struct Stream {
    SegmentParser* parser;
    GstStreamType type;
  };
  static void padAdded(GstElement* element, GstPad* pad, gpointer self);
  static GstPadProbeReturn passes(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  GstPadProbeReturn take(GstPad* pad, GstPadProbeInfo* info);
  GstFlowReturn give(GstPad* pad, GstStreamType type, GstBuffer* buffer);

  const Take take_;
  GstElementRef parser_;
  GstBusRef bus_;
  GstPadRef out_;                          // what feeds it
  std::map<GstPad*, GstStreamType> pads_;  // the first of each type
  int types_ = 0;
  GstFlowReturn result_ = GST_FLOW_OK;
};
