#pragma once

#include <cstdint>
#include <memory>

#include "platform/coremedia/CMTime.h"

// Pixels that are still as the decoder left them, in any format. Any thread, several pictures at a time.
class DecodedPicture {
 public:
  virtual ~DecodedPicture() = default;
  // How many rows draw() writes at a time.
  virtual int rowsAtOnce() const = 0;
  // Writes rowsAtOnce() rows, or as many as there are, as VideoFrame::bits would have them: from row `first`, a
  // multiple of rowsAtOnce(), on. They begin at `target`, `stride` bytes apart.
  virtual void draw(int first, std::uint8_t* target, int stride) const = 0;
};

// One decoded picture on its way to the screen. A plain value; any thread. Copies share the pixels, which stay valid as
// long as one copy is held. They are in one of two forms.
struct VideoFrame {
  // As the decoder left them, or null. Holds one of the decoder's buffers.
  std::shared_ptr<const DecodedPicture> decoded;
  // 32 bits each, bytes B G R X, rows `stride` bytes apart; or null.
  const std::uint8_t* bits = nullptr;
  int stride = 0;
  // Keeps the bits alive.
  std::shared_ptr<const void> owner;
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

  bool isValid() const { return width > 0 && height > 0 && (decoded || bits); }
};

// Where an engine puts its pictures.
class VideoFrameSink {
 public:
  virtual ~VideoFrameSink() = default;
  // The picture that is due now. Called on a streaming thread, or on the main thread after a seek; must return soon and
  // never wait for the main thread. An invalid frame means that there is no picture any more.
  virtual void present(VideoFrame frame) = 0;
};
