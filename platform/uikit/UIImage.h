#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/uikit/values/CGGeometry.h"

// A still picture. A plain value whose copies share the pixels; any thread. Never empty: nil is std::nullopt.
class YMR_API UIImage {
 public:
  // The widest and highest picture that is kept; a larger one is made smaller while it is read.
  static constexpr int sideLimit = 4096;

  // Decodes PNG, JPEG, WebP or BMP; nothing else is tried, whatever the machine's plugins could read. The bytes may be
  // hostile: memory is bounded, nothing is loaded from elsewhere. nil when they are no such picture.
  static std::optional<UIImage> imageWithData(std::span<const std::byte> data);
  static std::optional<UIImage> imageWithData(std::span<const std::uint8_t> data) {
    return imageWithData(std::as_bytes(data));
  }
  // `pixels`: width x height of 0xAARRGGBB, colours multiplied by the opacity. nil when the sizes do not fit.
  static std::optional<UIImage> imageWithPixels(int width, int height, std::vector<std::uint32_t> pixels);

  int width() const;  // pixels
  int height() const;
  CGSize size() const { return {double(width()), double(height())}; }
  // width() x height() of 0xAARRGGBB, premultiplied.
  const std::uint32_t* pixels() const;

 private:
  struct Pixels;
  explicit UIImage(std::shared_ptr<const Pixels> pixels) : pixels_(std::move(pixels)) {}
  std::shared_ptr<const Pixels> pixels_;
};

// The picture as the bytes of a PNG file.
YMR_API std::vector<std::uint8_t> UIImagePNGRepresentation(const UIImage& image);
