#include "platform/avfoundation/engine/ContainerGate.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <utility>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

// The family of containers that the picker accepts (mp4, m4v, quicktime, 3gpp) is one to the type finder.
constexpr std::array<std::string_view, 3> advertisementTypes{"video/quicktime", "application/x-3gp", "audio/x-m4a"};
constexpr std::array<std::string_view, 3> playlistTypes{"application/x-hls", "application/dash+xml",
                                                        "application/vnd.ms-sstr+xml"};
constexpr std::string_view advertisementDemuxer = "qtdemux";

// The answers of parsebin's "autoplug-select", which no header declares.
constexpr int tryFactory = 0;
constexpr int skipFactory = 2;

// Opening a container takes milliseconds.
constexpr auto openingLimit = std::chrono::seconds(2);

}  // namespace

ContainerGate::ContainerGate(const MediaSource& source, std::function<void(std::string)> refused)
    : purpose_(source.purpose), isFile_(source.url.isFileURL()), refused_(std::move(refused)) {}

bool ContainerGate::isPlaylist(const std::string& typeName) {
  return std::ranges::count(playlistTypes, typeName) > 0;
}

bool ContainerGate::isAllowed(const std::string& typeName) const {
  if (purpose_ == MediaPurpose::advertisement) return std::ranges::count(advertisementTypes, typeName) > 0;
  if (isPlaylist(typeName)) return !isFile_;
  // Pages and texts would be looked at for ever; an archive or a program has nothing to play; an image is over at once.
  return !typeName.starts_with("text/") && !typeName.starts_with("image/") && typeName != "application/xml" &&
         typeName != "application/pdf";
}

void ContainerGate::admit(GstElement* element) {
  // Both kinds are asked before their owners connect to them: an element joins its bin first.
  const std::string name = factoryName(element);
  if (name == "typefind") {
    g_signal_connect(element, "have-type", G_CALLBACK(typeFound), this);
    g_signal_connect_after(element, "have-type", G_CALLBACK(opened), this);
  }
  if (name == "parsebin" && purpose_ == MediaPurpose::advertisement) {
    g_signal_connect(element, "autoplug-select", G_CALLBACK(selectFactory), this);
  }
}

void ContainerGate::typeFound(GstElement* typefind, guint, GstCaps* caps, gpointer data) {
  auto* self = static_cast<ContainerGate*>(data);
  const std::string typeName = gst_structure_get_name(gst_caps_get_structure(caps, 0));
  const bool allowed = self->isAllowed(typeName);
  {
    std::lock_guard lock(self->mutex_);
    if (allowed && !self->isClosed_) {
      ++self->opening_;
      self->hasOpened_ = true;
      return;
    }
  }
  g_signal_stop_emission_by_name(typefind, "have-type");
  if (!allowed && !self->hasRefused_.exchange(true)) self->refused_(typeName);
}

void ContainerGate::opened(GstElement*, guint, GstCaps*, gpointer data) {
  auto* self = static_cast<ContainerGate*>(data);
  {
    std::lock_guard lock(self->mutex_);
    --self->opening_;
  }
  self->changed_.notify_all();
}

bool ContainerGate::closeUnlessOpened() {
  std::lock_guard lock(mutex_);
  if (!hasOpened_) isClosed_ = true;
  return isClosed_;
}

void ContainerGate::close() {
  std::unique_lock lock(mutex_);
  isClosed_ = true;
  changed_.wait_for(lock, openingLimit, [this] { return opening_ == 0; });
}

int ContainerGate::selectFactory(GstElement*, GstPad*, GstCaps*, GstElementFactory* factory, gpointer) {
  const bool opensContainers = gst_element_factory_list_is_type(factory, GST_ELEMENT_FACTORY_TYPE_DEMUXER);
  return opensContainers && GST_OBJECT_NAME(factory) != advertisementDemuxer ? skipFactory : tryFactory;
}
