#include "platform/avfoundation/engine/SoundOutlet.h"

#include <glob.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "platform/avfoundation/engine/Remarks.h"

namespace {

// There may be something that plays sound: a sound server, a card, or a configuration that names one. Where there is
// nothing, trying every kind of device would load all of their libraries in vain.
bool mayHaveDevice() {
  for (const char* variable : {"PULSE_SERVER", "PIPEWIRE_REMOTE", "JACK_DEFAULT_SERVER", "AUDIODEV"}) {
    if (std::getenv(variable)) return true;
  }
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const char* home = std::getenv("HOME");
  const std::string run = runtime ? runtime : "/run/user/" + std::to_string(getuid());
  const std::string user = home ? home : "";
  for (const std::string& pattern :
       {run + "/pulse/native", run + "/pipewire-0", std::string("/run/pulse/native"), std::string("/dev/snd/pcm*p"),
        std::string("/dev/dsp*"), std::string("/etc/asound.conf"), user + "/.asoundrc"}) {
    glob_t found{};
    const bool exists = glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found) == 0;
    globfree(&found);
    if (exists) return true;
  }
  return false;
}

// Takes sound in the time that it lasts, so that what has no picture plays at its speed too.
GstElement* makeSilentDevice() {
  GstElement* device = gst_element_factory_make("fakesink", nullptr);
  if (device) g_object_set(device, "sync", TRUE, "qos", TRUE, "enable-last-sample", FALSE, nullptr);
  return device;
}

// Little sound waits in a device, so that muting is heard at once.
constexpr gint64 deviceBufferMicroseconds = 100'000;

void shortenDeviceBuffer(GstBin*, GstBin*, GstElement* element, gpointer) {
  GObjectClass* type = G_OBJECT_GET_CLASS(element);
  if (GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SINK) && g_object_class_find_property(type, "buffer-time")) {
    g_object_set(element, "buffer-time", deviceBufferMicroseconds, nullptr);
  }
}

GstElement* makeDevice(const MediaEngineSettings& settings) {
  if (!settings.soundDevice.empty()) {
    GError* failure = nullptr;
    GstElement* device = gst_parse_bin_from_description(settings.soundDevice.c_str(), TRUE, &failure);
    const GErrorRef error(failure);
    // The pipeline would fail with a device that can't be opened.
    if (device && gst_element_set_state(device, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE) return device;
    if (const GstElementRef useless = shareObject(device)) gst_element_set_state(useless.get(), GST_STATE_NULL);
    remarkOnce("The sound device \"" + settings.soundDevice +
               "\" can't be used, and there is no sound: " + (error ? error->message : "it can't be opened") + ".");
  } else if (settings.audio == MediaEngineSettings::Audio::automatic && mayHaveDevice()) {
    if (GstElement* device = gst_element_factory_make("autoaudiosink", nullptr)) return device;
  }
  return makeSilentDevice();
}

}  // namespace

GstElement* SoundOutlet::makeElement(const MediaEngineSettings& settings) {
  GstElement* volume = gst_element_factory_make("volume", nullptr);
  device_ = makeDevice(settings);
  if (!volume || !device_) {
    if (volume) gst_object_unref(volume);
    if (device_) gst_object_unref(device_);
    return nullptr;
  }
  bin_ = shareObject(gst_bin_new("sound"));
  g_signal_connect(bin_.get(), "deep-element-added", G_CALLBACK(shortenDeviceBuffer), nullptr);
  gst_bin_add_many(GST_BIN(bin_.get()), volume, device_, nullptr);
  gst_element_link(volume, device_);
  const GstPadRef inner(gst_element_get_static_pad(volume, "sink"));
  GstPad* door = gst_ghost_pad_new("sink", inner.get());
  gst_pad_set_chain_function_full(door, &SoundOutlet::chain, this, nullptr);
  gst_pad_set_chain_list_function_full(door, &SoundOutlet::chainList, this, nullptr);
  gst_element_add_pad(bin_.get(), door);
  pad_ = shareObject(door);
  std::lock_guard lock(mutex_);
  volume_ = volume;
  g_object_set(volume_, "mute", isMuted_, nullptr);
  return bin_.get();
}

GstFlowReturn SoundOutlet::chain(GstPad* pad, GstObject* parent, GstBuffer* buffer) {
  auto* self = static_cast<SoundOutlet*>(pad->chaindata);
  if (self->isLost_) {
    gst_buffer_unref(buffer);
    return GST_FLOW_OK;
  }
  return self->survive(gst_proxy_pad_chain_default(pad, parent, buffer));
}

GstFlowReturn SoundOutlet::chainList(GstPad* pad, GstObject* parent, GstBufferList* list) {
  auto* self = static_cast<SoundOutlet*>(pad->chainlistdata);
  if (self->isLost_) {
    gst_buffer_list_unref(list);
    return GST_FLOW_OK;
  }
  return self->survive(gst_proxy_pad_chain_list_default(pad, parent, list));
}

GstFlowReturn SoundOutlet::survive(GstFlowReturn result) {
  if (result >= GST_FLOW_OK) return result;
  if (result == GST_FLOW_EOS || (result == GST_FLOW_FLUSHING && !isLost_)) return result;
  if (!isLost_.exchange(true)) lost_();
  return GST_FLOW_OK;
}

void SoundOutlet::setMuted(bool muted) {
  std::lock_guard lock(mutex_);
  isMuted_ = muted;
  if (volume_) g_object_set(volume_, "mute", muted, nullptr);
}

bool SoundOutlet::contains(GstObject* source) const {
  return source && bin_ && gst_object_has_as_ancestor(source, GST_OBJECT_CAST(bin_.get()));
}

void SoundOutlet::replaceDevice() {
  GstElement* device = makeSilentDevice();
  if (!device || !bin_) return;
  // Joining a pipeline that plays must not make it wait for a preroll.
  g_object_set(device, "async", FALSE, nullptr);
  isLost_ = true;  // what waits in the old device comes back from it when it stops
  gst_element_set_locked_state(device_, TRUE);
  gst_element_set_state(device_, GST_STATE_NULL);
  gst_element_unlink(volume_, device_);
  gst_bin_remove(GST_BIN(bin_.get()), device_);
  device_ = device;
  gst_bin_add(GST_BIN(bin_.get()), device_);
  gst_element_link(volume_, device_);
  gst_element_sync_state_with_parent(device_);
  isLost_ = false;
}
