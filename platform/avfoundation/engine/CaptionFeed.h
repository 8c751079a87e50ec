#pragma once

#include <gst/gst.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/avfoundation/engine/CaptionTimeline.h"
#include "platform/avfoundation/engine/MediaEngine.h"

// Takes the cues of every legible track out of the parsed streams, before they reach the decoders, and out of the
// pictures that carry closed captions. So texts never take part in prerolling, and choosing a track changes nothing in
// a pipeline that plays.
//
// admit() once, before the demuxer runs. Hooks are called on streaming threads, ahead of the time at which a cue is
// due. Destroyed after the pipeline.
class CaptionFeed {
 public:
  struct Hooks {
    // take() has something, after it had nothing.
    std::function<void()> found;
    // There is another track in pictures.
    std::function<void()> tracksChanged;
  };
  using Found = std::vector<std::pair<std::string, CaptionCue>>;  // of the tracks with these identifiers

  explicit CaptionFeed(Hooks hooks) : hooks_(std::move(hooks)) {}
  void admit(GstElement* demuxer);
  // What was found since the last call, in order. Any thread, as is the next one.
  Found take();
  // The closed captions in the pictures of a stream, once they have shown a text; nil without.
  std::optional<MediaTrack> trackInPicturesOf(const std::string& stream) const;

 private:
  class Pad;
  static void padAdded(GstElement* element, GstPad* pad, gpointer self);
  void add(const std::string& track, CaptionCue cue);
  void addTrackInPictures(const std::string& stream);

  const Hooks hooks_;
  mutable std::mutex mutex_;
  Found found_;
  std::size_t foundBytes_ = 0;
  std::vector<std::string> picturesWithTracks_;  // streams
};
