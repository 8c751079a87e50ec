#pragma once

#include <gst/gst.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>

#include "platform/avfoundation/engine/MediaEngine.h"

// Keeps bytes away from demuxers that they must not or cannot reach: what no film is; playlists in files, since
// segments are fetched over HTTP only; and, for an advertisement, every container that the ad's media file picker would
// refuse, whatever the file's name or its server say.
//
// admit() is called for each element that joins the pipeline. `refused` is called once, on a streaming thread, with the
// media type found. Outlives the pipeline.
class ContainerGate {
 public:
  ContainerGate(const MediaSource& source, std::function<void(std::string typeName)> refused);
  void admit(GstElement* element);
  // Lets none be opened any more if none ever was; otherwise false.
  bool closeUnlessOpened();
  // Lets no container be opened any more, and waits for one that is being opened. Before the pipeline is stopped: its
  // elements would wait for each other. Not on a streaming thread.
  void close();

  // A list of segments to fetch.
  static bool isPlaylist(const std::string& typeName);

 private:
  static void opened(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  static void typeFound(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  static int selectFactory(GstElement* parsebin, GstPad* pad, GstCaps* caps, GstElementFactory* factory, gpointer self);

  bool isAllowed(const std::string& typeName) const;

  const MediaPurpose purpose_;
  const bool isFile_;
  const std::function<void(std::string)> refused_;
  std::atomic<bool> hasRefused_{false};
  std::mutex mutex_;
  std::condition_variable changed_;
  int opening_ = 0;  // with what follows under mutex_
  bool hasOpened_ = false;
  bool isClosed_ = false;
};
