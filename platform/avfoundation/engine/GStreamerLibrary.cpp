#include "platform/avfoundation/engine/GStreamerLibrary.h"

#include <mutex>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

std::optional<std::string> load() {
  GError* failure = nullptr;
  if (!gst_init_check(nullptr, nullptr, &failure)) {
    const GErrorRef error(failure);
    return "GStreamer (" + std::string(error ? error->message : "no reason given") + ")";
  }
  for (const char* needed :
       {"parsebin", "multiqueue", "deinterlace", "audioconvert", "audioresample", "appsink", "volume", "fakesink"}) {
    const GstObjectRef<GstElementFactory> factory(gst_element_factory_find(needed));
    if (!factory) return "GStreamer's element " + std::string(needed);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> loadGStreamer() {
  static std::once_flag once;
  static std::optional<std::string> missing;
  std::call_once(once, [] { missing = load(); });
  return missing;
}
