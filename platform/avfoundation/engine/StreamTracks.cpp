#include "platform/avfoundation/engine/StreamTracks.h"

#include <gst/pbutils/pbutils.h>
#include <gst/tag/tag.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

std::optional<MediaTrack::Kind> legibleKind(const GstCaps* caps) {
  // A rendition of a playlist that was not fetched yet has no caps; all of them become text.
  if (!caps || gst_caps_is_empty(caps) || gst_caps_is_any(caps)) return MediaTrack::Kind::subtitle;
  const std::string_view name = gst_structure_get_name(gst_caps_get_structure(caps, 0));
  if (name == "text/x-raw" || name == "application/x-ssa" || name == "application/x-ass") {
    return MediaTrack::Kind::subtitle;
  }
  if (name == "closedcaption/x-cea-608") return MediaTrack::Kind::closedCaption;
  return std::nullopt;
}

std::optional<MediaTrack::Kind> kindOf(GstStreamType type, const GstCaps* caps) {
  if (type & GST_STREAM_TYPE_VIDEO) return MediaTrack::Kind::video;
  if (type & GST_STREAM_TYPE_AUDIO) return MediaTrack::Kind::audio;
  if (type & GST_STREAM_TYPE_TEXT) return legibleKind(caps);
  return std::nullopt;
}

std::string textTag(const GstTagList* tags, const char* name) {
  gchar* text = nullptr;
  if (!tags || !gst_tag_list_get_string(tags, name, &text)) return "";
  const GTextRef owned(text);
  return text;
}

void describePicture(const GstCaps* caps, MediaTrack& track) {
  if (!caps || gst_caps_is_empty(caps) || gst_caps_is_any(caps)) return;
  const GstStructure* structure = gst_caps_get_structure(caps, 0);
  gst_structure_get_int(structure, "width", &track.width);
  gst_structure_get_int(structure, "height", &track.height);
  int frames = 0, seconds = 0;
  if (gst_structure_get_fraction(structure, "framerate", &frames, &seconds) && frames > 0 && seconds > 0) {
    track.nominalFrameRate = static_cast<double>(frames) / seconds;
  }
}

}  // namespace

std::string languageTagFromCode(const std::string& code) {
  const auto dash = code.find_first_of("-_");
  const std::string language = code.substr(0, dash);
  if (language.empty() || language == "und" || language == "mul" || language == "zxx" || language == "mis") return "";
  const char* brief = gst_tag_get_language_code_iso_639_1(language.c_str());
  return (brief ? brief : language) + (dash == std::string::npos ? "" : "-" + code.substr(dash + 1));
}

std::string codecDescription(const GstCaps* caps) {
  if (!caps || !gst_caps_is_fixed(caps)) return "";
  return GTextRef(gst_pb_utils_get_codec_description(caps)).get();
}

std::vector<MediaTrack> tracksFromCollection(GstStreamCollection* collection) {
  std::vector<MediaTrack> tracks;
  for (guint i = 0; i < gst_stream_collection_get_size(collection); ++i) {
    GstStream* stream = gst_stream_collection_get_stream(collection, i);
    const GstCapsRef caps(gst_stream_get_caps(stream));
    const GstTagListRef tags(gst_stream_get_tags(stream));
    const auto kind = kindOf(gst_stream_get_stream_type(stream), caps.get());
    if (!kind) continue;
    MediaTrack track;
    track.kind = *kind;
    track.identifier = gst_stream_get_stream_id(stream);
    track.languageTag = languageTagFromCode(textTag(tags.get(), GST_TAG_LANGUAGE_CODE));
    track.title = textTag(tags.get(), GST_TAG_TITLE);
    if (*kind == MediaTrack::Kind::video) describePicture(caps.get(), track);
    tracks.push_back(std::move(track));
  }
  const auto order = [](const MediaTrack& track) { return std::min(track.kind, MediaTrack::Kind::subtitle); };
  std::ranges::stable_sort(tracks, {}, order);
  return tracks;
}
