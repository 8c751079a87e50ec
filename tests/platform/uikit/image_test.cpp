#include "platform/uikit/UIImage.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QImage>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes encoded(const QImage& image, const char* format) {
  QByteArray array;
  QBuffer buffer(&array);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, format, 100);
  return {array.begin(), array.end()};
}

QImage picture(int width, int height) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(QColor(200, 100, 50));
  return image;
}

Bytes text(std::string_view content) {
  return {content.begin(), content.end()};
}

void putNumber(Bytes& bytes, std::size_t place, std::uint32_t number) {
  for (int i = 0; i < 4; ++i) bytes[place + i] = std::uint8_t(number >> (24 - 8 * i));
}

// As in PNG files.
std::uint32_t checksum(const Bytes& bytes) {
  std::uint32_t sum = 0xffffffff;
  for (const std::uint8_t byte : bytes) {
    sum ^= byte;
    for (int bit = 0; bit < 8; ++bit) sum = sum & 1 ? 0xedb88320 ^ sum >> 1 : sum >> 1;
  }
  return ~sum;
}

TEST(UIImage, decodesCommonPicturesWhateverTheyAreCalled) {
  for (const char* format : {"PNG", "JPEG", "BMP"}) {
    const auto image = UIImage::imageWithData(encoded(picture(40, 30), format));
    ASSERT_TRUE(image) << format;
    EXPECT_EQ(image->size(), (CGSize{40, 30}));
    const QColor first(image->pixels()[0]);
    EXPECT_NEAR(first.red(), 200, 3) << format;
    EXPECT_NEAR(first.blue(), 50, 3) << format;
  }
}

TEST(UIImage, thePngHasThePictureInIt) {
  const auto image = UIImage::imageWithPixels(2, 1, {0xff102030, 0x80400000});
  const Bytes png = UIImagePNGRepresentation(*image);
  const auto again = UIImage::imageWithData(png);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->pixels()[0], 0xff102030);
  EXPECT_EQ(again->pixels()[1], 0x80400000);
}

TEST(UIImage, whatIsNoSuchPictureIsNil) {
  const Bytes png = encoded(picture(64, 64), "PNG");
  const Bytes jpeg = encoded(picture(64, 64), "JPEG");
  Bytes corrupt = png;
  for (std::size_t i = 40; i < corrupt.size(); ++i) corrupt[i] ^= 0x5a;
  for (const Bytes& bytes : {Bytes{}, text("<html>not found</html>"), Bytes(png.begin(), png.begin() + 8),
                             Bytes(png.begin(), png.begin() + 30), corrupt, Bytes(jpeg.begin(), jpeg.begin() + 4),
                             text("<svg xmlns='http://www.w3.org/2000/svg'><image href='file:///etc/passwd'/></svg>"),
                             text("/* XPM */\nstatic char *x[] = {\"1 1 1 1\", \"a c #fff\", \"a\"};"),
                             text("P6\n1 1\n255\nabc"), text("BM"), text("RIFF")}) {
    EXPECT_FALSE(UIImage::imageWithData(bytes)) << bytes.size() << " bytes";
  }
  EXPECT_FALSE(UIImage::imageWithPixels(2, 2, {1, 2, 3}));
  EXPECT_FALSE(UIImage::imageWithPixels(0, 0, {}));
  EXPECT_FALSE(UIImage::imageWithPixels(-1, -1, {1}));
  EXPECT_FALSE(UIImage::imageWithPixels(4097, 1, std::vector<std::uint32_t>(4097)));
}

TEST(UIImage, hugePicturesAreMadeSmallerOrRefused) {
  const auto wide = UIImage::imageWithData(encoded(picture(6000, 30), "PNG"));
  ASSERT_TRUE(wide);
  EXPECT_EQ(wide->width(), UIImage::maximumSide);
  EXPECT_NEAR(wide->height(), 20, 1);

  // A small file that claims to be 60,000 x 60,000, checksum and all.
  Bytes bomb = encoded(picture(8, 8), "PNG");
  putNumber(bomb, 16, 60000);
  putNumber(bomb, 20, 60000);
  putNumber(bomb, 29, checksum({bomb.begin() + 12, bomb.begin() + 29}));
  EXPECT_FALSE(UIImage::imageWithData(bomb));
}

}  // namespace
