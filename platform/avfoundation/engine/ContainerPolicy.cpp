#include "platform/avfoundation/engine/ContainerPolicy.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

// The family of containers that the picker accepts (mp4, m4v, quicktime, 3gpp) is one to the type finder.
constexpr std::array<std::string_view, 3> advertisementTypes{"video/quicktime", "application/x-3gp", "audio/x-m4a"};
constexpr std::string_view segmentListType = "application/x-hls";
constexpr std::array<std::string_view, 3> playlistTypes{segmentListType, "application/dash+xml",
                                                        "application/vnd.ms-sstr+xml"};
constexpr std::string_view advertisementDemuxer = "qtdemux";

// The answers of parsebin's "autoplug-select", which no header declares.
constexpr int tryFactory = 0;
constexpr int skipFactory = 2;

int selectFactory(GstElement*, GstPad*, GstCaps*, GstElementFactory* factory, gpointer) {
  const bool opensContainers = gst_element_factory_list_is_type(factory, GST_ELEMENT_FACTORY_TYPE_DEMUXER);
  return opensContainers && GST_OBJECT_NAME(factory) != advertisementDemuxer ? skipFactory : tryFactory;
}

}  // namespace

bool isPlaylistType(const std::string& typeName) {
  return std::ranges::count(playlistTypes, typeName) > 0;
}

bool mayOpenContainer(const MediaSource& source, const std::string& typeName) {
  if (source.purpose == MediaPurpose::advertisement) return std::ranges::count(advertisementTypes, typeName) > 0;
  if (typeName == segmentListType) return false;  // those are read elsewhere
  if (isPlaylistType(typeName)) return !source.url.isFileURL();
  // Pages and texts would be looked at for ever; an archive or a program has nothing to play; an image is over at once.
  return !typeName.starts_with("text/") && !typeName.starts_with("image/") && typeName != "application/xml" &&
         typeName != "application/pdf";
}

void restrictContainers(GstElement* parsebin, MediaPurpose purpose) {
  if (purpose != MediaPurpose::advertisement) return;
  g_signal_connect(parsebin, "autoplug-select", G_CALLBACK(selectFactory), nullptr);
}
