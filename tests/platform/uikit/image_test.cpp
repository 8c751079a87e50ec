#include "platform/uikit/UIImage.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QImage>

namespace {

std::string encoded(int width, int height, const char* format) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(QColor(200, 100, 50));
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, format, 100);
  return buffer.data().toStdString();
}

std::optional<UIImage> decoded(const std::string& bytes) {
  return UIImage::imageWithData(std::as_bytes(std::span(bytes)));
}

TEST(UIImage, decodesPicturesByTheirFirstBytesMakesHugeOnesSmallerAndTakesNothingElse) {
  for (const char* format : {"PNG", "JPEG", "BMP"}) EXPECT_TRUE(decoded(encoded(40, 30, format))) << format;
  const auto wide = decoded(encoded(6000, 30, "PNG"));
  ASSERT_TRUE(wide);
  EXPECT_EQ(wide->width(), UIImage::sideLimit);
  EXPECT_NEAR(wide->height(), 20, 1);
  const auto png = UIImagePNGRepresentation(*UIImage::imageWithPixels(2, 1, {0xff102030, 0x80400000}));
  const auto again = decoded({png.begin(), png.end()});
  ASSERT_TRUE(again);
  EXPECT_EQ(std::vector(again->pixels(), again->pixels() + 2), (std::vector<std::uint32_t>{0xff102030, 0x80400000}));

  std::string corrupt = encoded(64, 64, "PNG");
  for (std::size_t i = 40; i < corrupt.size(); ++i) corrupt[i] = static_cast<char>(corrupt[i] ^ 0x5a);
  for (const std::string& bytes :
       {std::string(), std::string("<html>not found</html>"), encoded(64, 64, "PNG").substr(0, 30), corrupt,
        std::string("BM"), std::string("RIFF"),
        std::string("<svg xmlns='http://www.w3.org/2000/svg'><image href='file:///etc/passwd'/></svg>")}) {
    EXPECT_FALSE(decoded(bytes)) << bytes.size() << " bytes";
  }
  EXPECT_FALSE(UIImage::imageWithPixels(2, 2, {1, 2, 3}));
  EXPECT_FALSE(UIImage::imageWithPixels(-1, -1, {1}));
}

}  // namespace
