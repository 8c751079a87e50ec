#pragma once

#include <gst/gst.h>

#include <array>
#include <functional>
#include <string>

#include "platform/avfoundation/engine/Buffering.h"
#include "platform/avfoundation/engine/GraphDoor.h"
#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/avfoundation/engine/StreamOutput.h"

// A pipeline from a source to two sinks: the source, a type finder, a parser of containers or an adaptive demuxer, one
// queue of parsed streams, and for pictures and sound each a StreamOutput. It grows as it is read, by streaming
// threads; texts end where they leave the parser.
//
// Hooks are called on streaming threads, with the graph's lock held; they must not wait. open() once, and close()
// before the pipeline is stopped; destroyed when it has stopped.
class MediaGraph {
 public:
  struct Hooks {
    // Whether media of a type may be opened; whoever says no tells why.
    std::function<bool(const std::string& type)> mayOpen;
    // A parser of containers or an adaptive demuxer, before it runs.
    std::function<void(GstElement* demuxer, bool isAdaptive)> demuxerMade;
    // Nothing decodes a stream that is to be played.
    std::function<void(GstStreamType type, GstCaps* caps)> undecodable;
  };

  // Sinks that float become the graph's.
  MediaGraph(const QueueLimits& limits, GstElement* pictures, GstElement* sound, Hooks hooks);
  ~MediaGraph();
  MediaGraph(const MediaGraph&) = delete;
  MediaGraph& operator=(const MediaGraph&) = delete;
  GstElement* pipeline() const { return pipeline_.get(); }

  // Puts the source (which floats) at its beginning. Whoever listens to the pipeline is connected by now.
  void open(GstElement* source);
  // The same with a source that has parsed streams already.
  void openStreams(GstElement* source);
  // Nothing joins from here on. Not on a streaming thread.
  void close() { door_.close(); }
  // The same if the media are not being opened yet; else false.
  bool closeUnlessOpened();

  // What streams there are. Any thread.
  void expect(GstStreamCollection* streams);
  // Sends a seek to where the streams come from; false when it is refused. Not on a streaming thread.
  bool seek(GstEvent* event);

 private:
  static void typeFound(GstElement* find, guint probability, GstCaps* caps, gpointer self);
  static void padAdded(GstElement* demuxer, GstPad* pad, gpointer self);
  static void padRemoved(GstElement* demuxer, GstPad* pad, gpointer self);
  StreamOutput::Hooks outputHooks(std::size_t index);
  static GstPadProbeReturn streamStarts(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void openMedia(GstElement* find, GstCaps* caps);
  void take(GstPad* pad, GstStream* stream);
  StreamOutput* outputFor(GstStream* stream);
  // Lets the pipeline be ready once every output is there.
  void settle();

  const QueueLimits limits_;
  const Hooks hooks_;
  const GstElementRef pipeline_;
  GraphDoor door_;
  // With the door's lock held.
  GstElement* waiting_ = nullptr;  // a sink that keeps the pipeline from being ready before all others are there
  GstElement* queue_ = nullptr;
  GstElementRef demuxer_;
  bool isAdaptive_ = false;
  bool areStreamsKnown_ = false;
  std::array<StreamOutput, 2> outputs_;
};
