#pragma once

#include <gst/gst.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// What benchmarks of playback share: the named peer, a bare playbin3, and arithmetic.

inline double millisecondsBetween(std::chrono::steady_clock::time_point from,
                                  std::chrono::steady_clock::time_point to) {
  return std::chrono::duration<double, std::milli>(to - from).count();
}

inline double millisecondsSince(std::chrono::steady_clock::time_point start) {
  return millisecondsBetween(start, std::chrono::steady_clock::now());
}

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.at(values.size() / 2);
}

// Milliseconds from the request to the message that a picture is decoded and waits. Ends the program when `url` can't
// be played.
inline double barePreroll(const std::string& url) {
  const auto start = std::chrono::steady_clock::now();
  GstElement* pipeline = gst_element_factory_make("playbin3", nullptr);
  g_object_set(pipeline, "uri", url.c_str(), "video-sink", gst_element_factory_make("fakesink", nullptr), "audio-sink",
               gst_element_factory_make("fakesink", nullptr), nullptr);
  gst_element_set_state(pipeline, GST_STATE_PAUSED);
  GstBus* bus = gst_element_get_bus(pipeline);
  GstMessage* message =
      gst_bus_timed_pop_filtered(bus, 30 * GST_SECOND, GstMessageType(GST_MESSAGE_ASYNC_DONE | GST_MESSAGE_ERROR));
  const double elapsed = millisecondsSince(start);
  const bool prerolled = message && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ASYNC_DONE;
  gst_clear_message(&message);
  gst_object_unref(bus);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(pipeline);
  if (!prerolled) {
    std::fprintf(stderr, "a bare playbin3 can't play %s\n", url.c_str());
    std::exit(1);
  }
  return elapsed;
}
