#include "platform/uikit/UIImage.h"

#include <QBuffer>
#include <QImageReader>
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

struct UIImage::Pixels {
  int width;
  int height;
  std::vector<std::uint32_t> values;
};

namespace {

// The picture formats that are read, by their first bytes.
const char* formatOf(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return "png";
  if (bytes.starts_with("\xff\xd8\xff")) return "jpeg";
  if (bytes.starts_with("BM")) return "bmp";
  if (bytes.starts_with("RIFF") && bytes.substr(std::min<std::size_t>(8, bytes.size())).starts_with("WEBP"))
    return "webp";
  return nullptr;
}

}  // namespace

std::optional<UIImage> UIImage::imageWithData(std::span<const std::byte> data) {
  const auto* bytes = reinterpret_cast<const char*>(data.data());
  const char* format = formatOf({bytes, data.size()});
  if (!format) return std::nullopt;
  QByteArray array = QByteArray::fromRawData(bytes, qsizetype(data.size()));
  QBuffer buffer(&array);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer, format);
  reader.setAutoDetectImageFormat(false);
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (size.width() > sideLimit || size.height() > sideLimit) {
    reader.setScaledSize(size.scaled(sideLimit, sideLimit, Qt::KeepAspectRatio).expandedTo({1, 1}));
  }
  const QImage image = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
  if (image.isNull() || image.width() > sideLimit || image.height() > sideLimit) return std::nullopt;
  std::vector<std::uint32_t> values(std::size_t(image.width()) * std::size_t(image.height()));
  for (int y = 0; y < image.height(); ++y) {
    std::memcpy(values.data() + std::size_t(y) * std::size_t(image.width()), image.constScanLine(y),
                std::size_t(image.width()) * 4);
  }
  return imageWithPixels(image.width(), image.height(), std::move(values));
}

std::optional<UIImage> UIImage::imageWithPixels(int width, int height, std::vector<std::uint32_t> pixels) {
  if (width < 1 || height < 1 || width > sideLimit || height > sideLimit) return std::nullopt;
  if (pixels.size() != std::size_t(width) * std::size_t(height)) return std::nullopt;
  return UIImage(std::make_shared<const Pixels>(Pixels{width, height, std::move(pixels)}));
}

int UIImage::width() const {
  return pixels_->width;
}

int UIImage::height() const {
  return pixels_->height;
}

const std::uint32_t* UIImage::pixels() const {
  return pixels_->values.data();
}

std::vector<std::uint8_t> UIImagePNGRepresentation(const UIImage& image) {
  const QImage picture(reinterpret_cast<const uchar*>(image.pixels()), image.width(), image.height(), image.width() * 4,
                       QImage::Format_ARGB32_Premultiplied);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  picture.save(&buffer, "PNG");
  return {bytes.begin(), bytes.end()};
}
