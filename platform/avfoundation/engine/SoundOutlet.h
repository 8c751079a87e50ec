#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <utility>

#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/avfoundation/engine/MediaEngine.h"

// The pipeline's last element for sound: a device, behind a mute switch and a pad whose errors end there: a
// device that fails does not stop the rest of the pipeline.
//
// makeElement() once, before the pipeline runs; destroyed when it has stopped.
class SoundOutlet {
 public:
  // `lost` is called once a device, on a streaming thread, when it takes no more sound.
  explicit SoundOutlet(std::function<void()> lost) : lost_(std::move(lost)) {}
  SoundOutlet(const SoundOutlet&) = delete;
  SoundOutlet& operator=(const SoundOutlet&) = delete;

  // For the pipeline; the outlet's. Null when a plugin is missing.
  GstElement* makeElement(const MediaEngineSettings& settings);
  // The pad that all sound passes. The outlet's; null before makeElement().
  GstPad* pad() const { return pad_.get(); }
  // Any thread. Holds from the next sample on that goes to the device.
  void setMuted(bool muted);
  // True for a message of the device's, whose errors end the sound and not the programme. Any thread.
  bool contains(GstObject* source) const;
  // Puts a device in the place of the present one that takes sound in real time and plays none. Not on a streaming
  // thread; the pipeline may be in any state.
  void replaceDevice();

 private:
  GstFlowReturn survive(GstFlowReturn result);

  static GstFlowReturn chain(GstPad* pad, GstObject* parent, GstBuffer* buffer);
  static GstFlowReturn chainList(GstPad* pad, GstObject* parent, GstBufferList* list);

  const std::function<void()> lost_;
  std::atomic<bool> isLost_{false};
  GstElementRef bin_;
  GstPadRef pad_;
  std::mutex mutex_;
  bool isMuted_ = false;          // with volume_ under mutex_
  GstElement* volume_ = nullptr;  // the bin's
  GstElement* device_ = nullptr;  // the bin's
};
