#pragma once

#include <string>

// One stream of an asset. A plain value.
//
// Kept from the platform: media type, language and frame rate. Left out: formats, segments, loading by key.
struct AVAssetTrack {
  std::string mediaType;            // AVMediaTypeVideo, …
  std::string extendedLanguageTag;  // BCP 47; empty when unknown
  double nominalFrameRate = 0;      // frames a second of a video track; 0 when unknown
};
