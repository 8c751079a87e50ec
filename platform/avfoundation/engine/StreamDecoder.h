#pragma once

#include <gst/gst.h>

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/avfoundation/engine/GraphDoor.h"
#include "platform/avfoundation/engine/GstHandles.h"

// Decodes one stream with the best of the machine's decoders that takes it, whatever it turns into: another codec
// brings another decoder, and raw data pass as they are.
//
// A decoder is on trial until something has come out of it. One that fails before is replaced by the next best, which
// gets everything once more; its errors are nobody else's matter.
//
// Made before the pipeline runs and destroyed when it has stopped.
class StreamDecoder {
 public:
  // `undecodable` is called on a streaming thread when no decoder takes `caps`.
  StreamDecoder(GraphDoor& door, GstStreamType type, std::function<void(GstCaps* caps)> undecodable);
  ~StreamDecoder();
  StreamDecoder(const StreamDecoder&) = delete;
  StreamDecoder& operator=(const StreamDecoder&) = delete;

  // Has the pads "sink" and "src". The decoder's own.
  GstElement* element() const { return bin_.get(); }

 private:
  using Buffer = GstMiniObjectRef<GstBuffer>;
  struct Bin;

  // Takes an error of a decoder on trial, to be posted again should there be no other one. Any thread.
  bool keep(GstMessage* message);
  bool takeEvent(GstPad* pad, GstEvent* event);
  GstFlowReturn takeBuffer(GstPad* pad, GstBuffer* buffer);
  GstFlowReturn pushAgain(GstPad* pad);
  bool isOnTrial() const { return !hasOutput_; }
  // Puts the next candidate in the decoder's place; false when there is none.
  bool plugNext(const GstCaps* caps);
  GstElementRef makeCandidate(const GstCaps* caps);
  bool plug(GstElement* decoder);
  void unplug();
  void end();
  // False when there is none.
  bool postKeptError();

  static void handle(GstBin* bin, GstMessage* message);
  static GstFlowReturn chain(GstPad* pad, GstObject* parent, GstBuffer* buffer);
  static GstFlowReturn chainList(GstPad* pad, GstObject* parent, GstBufferList* list);
  static gboolean event(GstPad* pad, GstObject* parent, GstEvent* event);
  static gboolean query(GstPad* pad, GstObject* parent, GstQuery* query);
  static GstPadProbeReturn noteOutput(GstPad* pad, GstPadProbeInfo* info, gpointer self);

  GraphDoor& door_;
  const GstStreamType type_;
  const std::function<void(GstCaps*)> undecodable_;
  GstElementRef bin_;
  GstPad* in_ = nullptr;  // the bin's
  GstPad* out_ = nullptr;

  // Of the streaming thread that brings the stream.
  GstCapsRef caps_;
  std::deque<GstObjectRef<GstElementFactory>> candidates_;  // for caps_, not yet tried; the best first
  std::vector<Buffer> untilOutput_;                         // what the decoder on trial has got
  std::size_t untilOutputBytes_ = 0;

  std::atomic<bool> hasOutput_{false};
  std::mutex mutex_;  // guards what follows
  GstElementRef decoder_;
  GstMiniObjectRef<GstMessage> keptError_;
};
