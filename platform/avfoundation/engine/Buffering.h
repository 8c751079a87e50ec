#pragma once

#include <gst/gst.h>

#include "platform/avfoundation/engine/MediaEngine.h"

// How much of the media is held ready between the source and the decoders.

// Parsed data: bounds for each stream, and when playback waits for more.
struct QueueLimits {
  guint bytes;
  GstClockTime time;     // at least so much, however the streams are interleaved
  bool tellsItsLevel;    // playback waits when it runs dry
  double highWatermark;  // shares of `time`: playback may start, and must stop
  double lowWatermark;
};

constexpr guint mebibyte = 1024 * 1024;

constexpr GstClockTime aheadTime(MediaPurpose purpose) {
  return (purpose == MediaPurpose::programme ? 40 : 20) * GST_SECOND;
}

constexpr guint queueBytes(MediaPurpose purpose) {
  return (purpose == MediaPurpose::programme ? 64 : 16) * mebibyte;
}
// The rest is the store's.
constexpr guint queueBytesBesideStore(MediaPurpose purpose) {
  return queueBytes(purpose) / 4;
}

// The bytes are at hand; the streams need only room to be apart from each other.
constexpr QueueLimits limitsOfFile(MediaPurpose purpose) {
  return {queueBytes(purpose), GST_SECOND / 4, false, 1, 0};
}

// What is parsed is a little of what is held: the rest waits as bytes. Playback goes on until next to nothing is left,
// and begins again with what bridges a hiccup: more would be a wait of its own.
constexpr QueueLimits limitsOfBytes(MediaPurpose purpose) {
  constexpr GstClockTime parsed = 2 * GST_SECOND;
  const double highWatermark = purpose == MediaPurpose::programme ? 0.3 : 0.2;
  return {queueBytesBesideStore(purpose), parsed, true, highWatermark, 0.05};
}

// Bytes are held ready for aheadTime() at the media's average rate, but never fewer.
constexpr double leastAheadBytes = 2 * mebibyte;
