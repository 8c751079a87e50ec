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

// Milliseconds from the request to the message that the picture at `start` seconds is decoded and waits. Ends the
// program when `url` can't be played.
inline double barePreroll(const std::string& url, double start = 0) {
  const auto began = std::chrono::steady_clock::now();
  GstElement* pipeline = gst_element_factory_make("playbin3", nullptr);
  g_object_set(pipeline, "uri", url.c_str(), "video-sink", gst_element_factory_make("fakesink", nullptr), "audio-sink",
               gst_element_factory_make("fakesink", nullptr), nullptr);
  gst_element_set_state(pipeline, GST_STATE_PAUSED);
  GstBus* bus = gst_element_get_bus(pipeline);
  constexpr auto kinds = GstMessageType(GST_MESSAGE_ASYNC_DONE | GST_MESSAGE_ERROR);
  GstMessage* message = gst_bus_timed_pop_filtered(bus, 30 * GST_SECOND, kinds);
  if (start > 0 && message && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ASYNC_DONE) {
    gst_clear_message(&message);
    constexpr auto exactly = GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
    gst_element_seek_simple(pipeline, GST_FORMAT_TIME, exactly, static_cast<gint64>(start * GST_SECOND));
    message = gst_bus_timed_pop_filtered(bus, 30 * GST_SECOND, kinds);
  }
  const double elapsed = millisecondsSince(began);
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
