#pragma once

#include <cstdint>
#include <memory>

#include "platform/coremedia/CMTime.h"

// One decoded picture on its way to the screen. A plain value; any thread. Copies share the pixels, which stay valid as
// long as one copy is held.
struct VideoFrame {
  // Keeps the pixels alive (a mapped buffer, a texture).
  std::shared_ptr<const void> owner;
  // Pixels as stored: 32 bits each, bytes B G R X, rows `stride` bytes apart. Null when the picture is a texture.
  const std::uint8_t* bits = nullptr;
  int stride = 0;
  // An RGBA texture of the scene graph's share group, or 0.
  unsigned glTexture = 0;
  // The picture's size in pixels as stored, before pixel aspect and rotation.
  int width = 0;
  int height = 0;
  // Width of a pixel over its height.
  int pixelAspectNumerator = 1;
  int pixelAspectDenominator = 1;
  // How the stored picture is to be turned, clockwise: 0, 90, 180 or 270; after mirroring left to right when
  // `mirrored`.
  int rotation = 0;
  bool mirrored = false;
  // Media time of the picture; invalid when the container has none.
  CMTime time;

  bool isValid() const { return width > 0 && height > 0 && (bits || glTexture); }
};

// Where an engine puts its pictures.
class VideoFrameSink {
 public:
  virtual ~VideoFrameSink() = default;
  // The picture that is due now. Called on a streaming thread, or on the main thread after a seek; must return soon and
  // never wait for the main thread. An invalid frame means that there is no picture any more.
  virtual void present(VideoFrame frame) = 0;
};
