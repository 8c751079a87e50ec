#include "platform/avfoundation/engine/CaptionFeed.h"

#include <gst/video/video-anc.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/CaptionText.h"
#include "platform/avfoundation/engine/ClosedCaptions.h"
#include "platform/avfoundation/engine/GstHandles.h"

namespace {

// The text of a buffer of such a stream; nothing when the stream is of a kind without text.
std::optional<MediaCaption> captionOf(std::string_view bytes, const GstStructure* type) {
  const std::string_view name = gst_structure_get_name(type);
  if (name == "application/x-ssa" || name == "application/x-ass") return MediaCaption{captionFromScript(bytes)};
  if (name != "text/x-raw") return std::nullopt;
  const char* format = gst_structure_get_string(type, "format");
  if (format && std::string_view(format) == "utf8") return MediaCaption{tidyCaption(bytes)};
  return MediaCaption{captionFromMarkup(bytes), true};
}

// A cue is seconds of text. What is longer is not read.
constexpr gsize cueBytesLimit = 64 * 1024;
constexpr GstClockTime timeLimit = GstClockTime{1} << 61;  // two of them can be added
constexpr std::size_t tripletBytes = 3;
// How much later than one shown after it a picture may come, where that is not told.
constexpr std::int64_t reorderingLimit = 500'000'000;
// What nobody has taken yet.
constexpr std::size_t foundLimit = CaptionTimeline::cuesLimit;

using Pairs = std::vector<ClosedCaptions::Pair>;

// A track's own bytes: pairs of the first field, or triplets that name the field.
Pairs pairsOf(std::span<const guint8> bytes, const GstStructure* type) {
  const char* format = gst_structure_get_string(type, "format");
  const bool namesField = format && std::string_view(format) == "s334-1a";
  Pairs pairs;
  const std::size_t size = namesField ? tripletBytes : tripletBytes - 1;
  for (; bytes.size() >= size; bytes = bytes.subspan(size)) {
    const int field = namesField && (bytes[0] & 0x80) == 0 ? 1 : 0;
    pairs.push_back({field, bytes[size - 2], bytes[size - 1]});
  }
  return pairs;
}

// What a picture carries: triplets of a mark and a pair, of which the first two kinds are line 21's.
Pairs pairsIn(GstBuffer* picture) {
  Pairs pairs;
  const GstVideoCaptionMeta* captions = gst_buffer_get_video_caption_meta(picture);
  if (!captions || captions->caption_type != GST_VIDEO_CAPTION_TYPE_CEA708_RAW) return pairs;
  for (std::span bytes(captions->data, captions->size); bytes.size() >= tripletBytes;
       bytes = bytes.subspan(tripletBytes)) {
    const bool isValid = (bytes[0] & 0x04) != 0;
    const int kind = bytes[0] & 0x03;
    if (isValid && kind < 2) pairs.push_back({kind, bytes[1], bytes[2]});
  }
  return pairs;
}

std::optional<std::int64_t> streamTime(GstPad* pad, GstClockTime time) {
  const GstEventRef event(gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0));
  if (!event || !GST_CLOCK_TIME_IS_VALID(time)) return std::nullopt;
  const GstSegment* segment = nullptr;
  gst_event_parse_segment(event.get(), &segment);
  guint64 start = 0;
  if (segment->format != GST_FORMAT_TIME) return std::nullopt;
  const int sign = gst_segment_to_stream_time_full(segment, GST_FORMAT_TIME, time, &start);
  return sign == 0 || start > timeLimit ? std::nullopt : std::optional(sign * static_cast<std::int64_t>(start));
}

std::string trackInPictures(const std::string& stream) {
  return stream + "/captions";
}

}  // namespace

// What is known of one stream; its streaming thread's.
class CaptionFeed::Pad {
 public:
  Pad(CaptionFeed& feed, GstPad* pad) : feed_(feed), pad_(pad) {}

  GstPadProbeReturn take(GstPadProbeInfo* info) {
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) {
      if (!isKnown_) know();
      return (this->*read_)(GST_PAD_PROBE_INFO_BUFFER(info));
    }
    const auto event = GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info));
    if (event == GST_EVENT_FLUSH_STOP) captions_.restart();
    if (event == GST_EVENT_EOS) captions_.finish();
    if (event == GST_EVENT_CAPS) isKnown_ = false;
    return GST_PAD_PROBE_OK;
  }

 private:
  using Read = GstPadProbeReturn (Pad::*)(GstBuffer*);

  void know() {
    isKnown_ = true;
    const GTextRef name(gst_pad_get_stream_id(pad_));
    const GstObjectRef<GstStream> stream(gst_pad_get_stream(pad_));
    const int type = stream ? gst_stream_get_stream_type(stream.get()) : GST_STREAM_TYPE_UNKNOWN;
    caps_.reset(gst_pad_get_current_caps(pad_));
    const bool hasType = caps_ && !gst_caps_is_empty(caps_.get()) && !gst_caps_is_any(caps_.get());
    stream_ = name ? name.get() : "";
    if (!name || !hasType || type & GST_STREAM_TYPE_AUDIO) {
      read_ = &Pad::leave;
    } else if (type & GST_STREAM_TYPE_VIDEO) {
      read_ = &Pad::readPicture;
    } else {
      read_ = gst_structure_has_name(this->type(), "closedcaption/x-cea-608") ? &Pad::readPairs : &Pad::readText;
    }
  }
  const GstStructure* type() const { return gst_caps_get_structure(caps_.get(), 0); }

  GstPadProbeReturn leave(GstBuffer*) { return GST_PAD_PROBE_REMOVE; }

  GstPadProbeReturn readPicture(GstBuffer* picture) {
    const auto start = streamTime(pad_, GST_BUFFER_PTS(picture));
    if (!start) return GST_PAD_PROBE_OK;
    captions_.take(*start, pairsIn(picture),
                   streamTime(pad_, GST_BUFFER_DTS(picture)).value_or(*start - reorderingLimit));
    return GST_PAD_PROBE_OK;
  }

  GstPadProbeReturn readPairs(GstBuffer* buffer) {
    const auto start = streamTime(pad_, GST_BUFFER_PTS(buffer));
    withBytes(buffer, [&](std::span<const guint8> bytes) {
      if (start) captions_.take(*start, pairsOf(bytes, type()), INT64_MAX);
    });
    return GST_PAD_PROBE_OK;
  }

  GstPadProbeReturn readText(GstBuffer* buffer) {
    const auto start = streamTime(pad_, GST_BUFFER_PTS(buffer));
    withBytes(buffer, [&](std::span<const guint8> bytes) {
      auto caption = captionOf({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, type());
      if (!start || !caption) return;
      CaptionCue cue;
      cue.start = *start;
      cue.endsWithNext = !GST_BUFFER_DURATION_IS_VALID(buffer);
      if (!cue.endsWithNext)
        cue.end = *start + static_cast<std::int64_t>(std::min(GST_BUFFER_DURATION(buffer), timeLimit));
      cue.caption = std::move(*caption);
      feed_.add(stream_, std::move(cue));
    });
    return GST_PAD_PROBE_OK;
  }

  template <class Function>
  static void withBytes(GstBuffer* buffer, const Function& function) {
    GstMapInfo bytes;
    if (gst_buffer_get_size(buffer) > cueBytesLimit || !gst_buffer_map(buffer, &bytes, GST_MAP_READ)) return;
    function(std::span<const guint8>(bytes.data, bytes.size));
    gst_buffer_unmap(buffer, &bytes);
  }

  void found(CaptionCue cue) {
    const bool isOfPictures = read_ == &Pad::readPicture;
    if (isOfPictures && !std::exchange(isToldOf_, true)) feed_.addTrackInPictures(stream_);
    feed_.add(isOfPictures ? trackInPictures(stream_) : stream_, std::move(cue));
  }

  CaptionFeed& feed_;
  GstPad* const pad_;  // outlives this
  bool isKnown_ = false;
  bool isToldOf_ = false;
  std::string stream_;
  GstCapsRef caps_;
  Read read_ = &Pad::leave;
  ClosedCaptions captions_{[this](CaptionCue cue) { found(std::move(cue)); }};
};

void CaptionFeed::admit(GstElement* demuxer) {
  g_signal_connect(demuxer, "pad-added", G_CALLBACK(padAdded), this);
}

void CaptionFeed::padAdded(GstElement*, GstPad* pad, gpointer self) {
  if (!GST_PAD_IS_SRC(pad)) return;
  const auto probe = [](GstPad*, GstPadProbeInfo* info, gpointer data) { return static_cast<Pad*>(data)->take(info); };
  constexpr int types =
      GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH;
  gst_pad_add_probe(pad, static_cast<GstPadProbeType>(types), probe, new Pad(*static_cast<CaptionFeed*>(self), pad),
                    [](gpointer data) { delete static_cast<Pad*>(data); });
}

void CaptionFeed::add(const std::string& track, CaptionCue cue) {
  {
    std::lock_guard lock(mutex_);
    foundBytes_ += cue.caption.text.size();
    const bool isTooMuch = found_.size() >= foundLimit || foundBytes_ > CaptionTimeline::textsLimit;
    if (isTooMuch) return;
    found_.emplace_back(track, std::move(cue));
    if (found_.size() > 1) return;
  }
  hooks_.found();
}

CaptionFeed::Found CaptionFeed::take() {
  std::lock_guard lock(mutex_);
  foundBytes_ = 0;
  return std::exchange(found_, {});
}

void CaptionFeed::addTrackInPictures(const std::string& stream) {
  {
    std::lock_guard lock(mutex_);
    if (std::ranges::count(picturesWithTracks_, stream) > 0) return;
    picturesWithTracks_.push_back(stream);
  }
  hooks_.tracksChanged();
}

std::optional<MediaTrack> CaptionFeed::trackInPicturesOf(const std::string& stream) const {
  std::lock_guard lock(mutex_);
  if (std::ranges::count(picturesWithTracks_, stream) == 0) return std::nullopt;
  MediaTrack track;
  track.kind = MediaTrack::Kind::closedCaption;
  track.identifier = trackInPictures(stream);
  return track;
}
