#pragma once

#include <gst/gst.h>

#include <string>
#include <vector>

// Hears what a pipeline has to say, each message once, on whatever thread says it: streaming threads, and the one that
// changes the pipeline's state. It must not change that state itself, and must return soon.
class PipelineListener {
 public:
  virtual ~PipelineListener() = default;

  // Every sink has what it is to show next: the first preroll, and each after a flush or a pause.
  virtual void prerolled() = 0;
  virtual void ended() = 0;
  // An error; its source is inside the pipeline.
  virtual void failed(GstMessage* error) = 0;
  // Queues that wait for the network are filled to what they need, or are not. Often.
  virtual void buffered(bool isFilled) = 0;
  virtual void durationChanged() = 0;
  virtual void streamsFound(GstStreamCollection* collection) = 0;
  // What `source` delivers of its streams, from now on.
  virtual void streamsSelected(GstElement* source, const std::vector<GstStream*>& streams) = 0;
  // The pipeline's clock runs: what is due is presented.
  virtual void clockStarted() = 0;
  // The element that gave the pipeline its time has gone.
  virtual void clockLost() = 0;
  // A stream that no element here decodes; `codec` is for people.
  virtual void decoderMissing(const std::string& codec, bool isVideo) = 0;

  // Sends every message of the pipeline's bus to `listener`, which must outlive the pipeline, and none anywhere else.
  static void connect(GstElement* pipeline, PipelineListener* listener);

 private:
  static GstBusSyncReply dispatch(GstBus* bus, GstMessage* message, gpointer listener);
  void hearElement(GstMessage* message);
};
