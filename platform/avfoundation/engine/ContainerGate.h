#pragma once

#include <gst/gst.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>

#include "platform/avfoundation/engine/MediaEngine.h"

// Keeps bytes away from demuxers that they must not or cannot reach: what no film is, and, for an advertisement, every
// container that the ad's media file picker would refuse, whatever the file's name or its server say.
//
// admit() is called for each element that joins the pipeline. `refused` is called once, on a streaming thread, with the
// media type found. Outlives the pipeline.
class ContainerGate {
 public:
  ContainerGate(MediaPurpose purpose, std::function<void(std::string typeName)> refused);
  void admit(GstElement* element);
  // Lets no container be opened any more, and waits for one that is being opened. Before the pipeline is stopped: its
  // elements would wait for each other. Not on a streaming thread.
  void close();

  // What the gate decides, by media type.
  static bool isAllowed(MediaPurpose purpose, const std::string& typeName);

 private:
  static void opened(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  static void typeFound(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  static int selectFactory(GstElement* parsebin, GstPad* pad, GstCaps* caps, GstElementFactory* factory, gpointer self);

  const MediaPurpose purpose_;
  const std::function<void(std::string)> refused_;
  std::atomic<bool> hasRefused_{false};
  std::mutex mutex_;
  std::condition_variable changed_;
  int opening_ = 0;  // with isClosed_ under mutex_
  bool isClosed_ = false;
};
