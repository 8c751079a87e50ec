#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Export.h"
#include "platform/avfoundation/bytes/MediaBytes.h"
#include "platform/avfoundation/engine/MediaCaption.h"
#include "platform/avfoundation/engine/VideoFrame.h"
#include "platform/coremedia/CMTime.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// How much an engine holds ready, and what it opens.
enum class MediaPurpose {
  programme,      // buffers up to 40 s or 64 MiB ahead; any container that the machine decodes; files, http and https
  advertisement,  // starts as soon as it can; only containers that an ad may have; http and https
  anyAdvertisement,  // the same, in any container that the machine decodes
};

constexpr bool isAdvertisement(MediaPurpose purpose) {
  return purpose != MediaPurpose::programme;
}

// What an engine plays.
struct MediaSource {
  NSURL url;
  MediaPurpose purpose = MediaPurpose::programme;
  // Where its bytes come from; nil for a file, which the engine opens itself. What a web server has needs them; only
  // the segments of a playlist does the media library fetch. Of one engine alone: its end interrupts them for good.
  std::shared_ptr<MediaBytes> bytes = nullptr;
  // They are a row of segments with what belongs to them (SegmentRecord.h), not a resource as it is.
  bool areSegments = false;
  // Of a file: its descriptor, open for reading and kept so by the caller, where the engine may not open it itself. The
  // URL is its name all the same.
  std::optional<int> descriptor = std::nullopt;
  // Subtitles and captions that the media carries are left alone: not one byte of theirs is read as text.
  bool isWithoutTexts = false;
  // It goes on where another engine of the item's has gone: its silence is that of a programme that has begun.
  bool hasBegun = false;

  // A file, all of which is at hand.
  bool isLocal() const { return url.isFileURL() && !bytes; }
};

// One stream of the media.
struct MediaTrack {
  enum class Kind { video, audio, subtitle, closedCaption };
  Kind kind = Kind::video;
  std::string identifier;       // unique and stable within the media
  std::string languageTag;      // extended language tag (BCP 47); empty when unknown
  std::string title;            // for people; may be empty
  double nominalFrameRate = 0;  // frames a second of a video track; 0 when unknown
  int width = 0;                // of a video track, in pixels as stored
  int height = 0;
};

// The machine that decodes and plays one source: the seam between the platform's semantics (AVPlayer and its fellows,
// above) and a media library (below). One engine, one source, one life: it is made, loaded, played and destroyed.
//
// Main thread, destruction included. Nothing here waits for the network or a decoder. Destruction is prompt, and final:
// what the engine still had to say is never said.
class YMR_API MediaEngine {
 public:
  // What an engine reports, always by a turn of the main queue of its own, in the order in which it happened, never
  // from inside a call to the engine. After `failed` nothing more comes. Members may be empty.
  struct Events {
    // The picture (or sound) at the start is decoded and waits; tracks, duration and position are known. Once.
    std::function<void()> ready;
    // It can't be played, or no further. Data that is needed and does not come within the silence limit is one reason
    // (AVErrorNoDataReceived).
    std::function<void(NSError)> failed;
    std::function<void()> durationChanged;
    std::function<void()> tracksChanged;
    // The time is another one without a seek: what can't go elsewhere had to be begun again.
    std::function<void()> jumped;
    // Any of bufferedRanges(), isBufferEmpty(), isLikelyToKeepUp() changed.
    std::function<void()> bufferingChanged;
    // The last picture and sound have been presented; the pipeline holds the last picture. Again after a seek back and
    // another run to the end.
    std::function<void()> ended;
    // The text of the selected legible track that is due now; nil when there is none.
    std::function<void(std::optional<MediaCaption>)> captionChanged;
  };

  // True when the seek was carried out; false when a later seek or the end of the engine took its place, or when the
  // media can't go elsewhere: then it plays on where it is. By a turn of the main queue, exactly once, unless the
  // engine is destroyed first.
  using SeekCompletion = std::function<void(bool finished)>;

  virtual ~MediaEngine();

  virtual void setEvents(Events events) = 0;
  // Opens the source and decodes up to the picture at `start`: no other one is ever shown before it. Clamped like a
  // seek; media that can't go elsewhere begin where they do. Once; `ready` or `failed` follows.
  virtual void load(const CMTime& start) = 0;

  // Playing speed: 0 holds, 1 plays. Takes effect once ready. At the end it holds whatever the rate.
  virtual void setRate(double rate) = 0;
  // Goes to exactly `time` (clamped to the media; on a live stream to what can be reached) and shows the picture there.
  // Seeks given during another one are remembered, and the last one wins; before `ready` they take the start's place.
  virtual void seek(const CMTime& time, SeekCompletion completion) = 0;
  // The media time of what is on screen. Moves smoothly while playing; during a seek it is the target, and until ready
  // the start.
  virtual CMTime position() const = 0;
  // Invalid until known, indefinite for a live stream.
  virtual CMTime duration() const = 0;
  virtual bool isLive() const = 0;

  // What can be played without waiting, in media time, ascending; the range that holds the position comes first.
  virtual std::vector<CMTimeRange> bufferedRanges() const = 0;
  // Playback needs data that is not there.
  virtual bool isBufferEmpty() const = 0;
  // Playback would go on without waiting. False until ready.
  virtual bool isLikelyToKeepUp() const = 0;

  // Empty until ready; video first, then audio, then legible tracks in the container's order.
  virtual std::vector<MediaTrack> tracks() const = 0;
  // Chooses the legible track by identifier; nil turns captions off (which is how an engine starts).
  virtual void selectLegibleTrack(const std::optional<std::string>& identifier) = 0;

  virtual void setMuted(bool muted) = 0;
  // Where pictures go; nil for nowhere. The present picture is handed over again, so that a new sink is not black: at
  // once, or when the seek that is under way has come there.
  virtual void setFrameSink(std::shared_ptr<VideoFrameSink> sink) = 0;

  // A new engine of the kind that the process uses.
  static std::unique_ptr<MediaEngine> make(const MediaSource& source);
  // What make() makes; nil puts the product's own engine back. For tests.
  using Factory = std::function<std::unique_ptr<MediaEngine>(const MediaSource&)>;
  static void setFactory(Factory factory);
  static bool hasFactory();
};

// Bounds that a host may change before the first engine is made. Seconds.
struct YMR_API MediaEngineSettings {
  double firstFrameSilenceLimit = 10;  // also all of an ad
  double programmeSilenceLimit = 60;   // of a programme that has begun
  double adOvertimeLimit = 30;         // how much longer than it is an ad may take to play, pauses apart
  double lengthOfUnknownAd = 120;      // what an ad that does not tell its length is taken for
  enum class Audio { automatic, none } audio = Audio::automatic;  // none: sound is decoded and thrown away in real time
  // own: each item is parsed and decoded in a process of its own, ymr-media, whose crashes are stalls and whose hands
  // are tied. host: in the host's, for debugging and for machines with little memory.
  enum class Process { own, host } process = Process::own;
  // When not empty, where sound goes instead: a sink in GStreamer's launch syntax, for devices that need options. What
  // can't be made is silence. One that writes files or reaches the network needs the engine in the host.
  std::string soundDevice;

  static MediaEngineSettings& shared();
};
