#pragma once

#include <gst/gst.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/avfoundation/engine/GraphDoor.h"
#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/avfoundation/engine/StreamDecoder.h"

// One of a pipeline's outputs, pictures or sound: a place in the queue of parsed streams, a decoder, what comes
// between, and the sink. The stream may change (another programme, another codec); the output stays.
//
// link(), unlink() and expect() with the door's lock held; all else is the streaming threads'. Made before the pipeline
// runs, destroyed when it has stopped.
class StreamOutput {
 public:
  struct Hooks {
    // The sink has joined the pipeline, or never will.
    std::function<void()> settled;
    // Nothing decodes the stream: its sink has left.
    std::function<void(GstCaps* caps)> undecodable;
  };
  // `between` names the factories of what stands between decoder and sink, in this order.
  StreamOutput(GraphDoor& door, GstElement* pipeline, GstStreamType type, GstElement* sink,
               std::vector<const char*> between, Hooks hooks);
  ~StreamOutput();
  StreamOutput(const StreamOutput&) = delete;
  StreamOutput& operator=(const StreamOutput&) = delete;

  GstStreamType type() const { return type_; }

  // The stream to be played; empty for none.
  void expect(std::string stream);
  const std::string& expected() const { return expected_; }
  // Nothing is to be waited for.
  bool isSettled() const { return expected_.empty() || isAssembled_ || isGone_; }
  bool isGone() const { return isGone_; }

  // Takes what comes from `source`, through `queue`.
  void link(GstPad* source, GstElement* queue);
  // When it comes from there: no more does.
  void unlink(GstPad* source);
  // Where the stream comes from; null for nowhere.
  GstPadRef source() const;

 private:
  static GstPadProbeReturn enters(GstPad* pad, GstPadProbeInfo* info, gpointer);
  static GstPadProbeReturn passes(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void assemble(GstPad* pad);
  void leave(GstCaps* caps);
  // The others go on without it, and end without it.
  void endUnlessExpected();

  GraphDoor& door_;
  GstElement* const pipeline_;  // outlives it
  const GstStreamType type_;
  const GstElementRef sink_;
  const std::vector<const char*> between_;
  const Hooks hooks_;
  StreamDecoder decoder_;
  // With the door's lock held.
  std::string expected_;
  GstPadRef in_;   // the queue's
  GstPadRef out_;  // the queue's
  bool isAssembled_ = false;
  bool isGone_ = false;
};

// Everything that comes through `pad` ends there.
void dropAll(GstPad* pad);
