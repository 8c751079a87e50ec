#include "platform/uikit/UIImage.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QImage>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes encoded(int width, int height, const char* format) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(QColor(200, 100, 50));
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, format, 100);
  return {buffer.data().begin(), buffer.data().end()};
}

Bytes text(std::string_view content) {
  return {content.begin(), content.end()};
}

TEST(UIImage, decodesCommonPicturesWhateverTheyAreCalled) {
  for (const char* format : {"PNG", "JPEG", "BMP"}) {
    const auto image = UIImage::imageWithData(encoded(40, 30, format));
    ASSERT_TRUE(image) << format;
    EXPECT_EQ(image->size(), (CGSize{40, 30}));
    EXPECT_NEAR(QColor(image->pixels()[0]).red(), 200, 3) << format;
  }
  const auto wide = UIImage::imageWithData(encoded(6000, 30, "PNG"));
  ASSERT_TRUE(wide);
  EXPECT_EQ(wide->width(), UIImage::maximumSide) << "a huge picture is made smaller";
  EXPECT_NEAR(wide->height(), 20, 1);

  const auto image = UIImage::imageWithPixels(2, 1, {0xff102030, 0x80400000});
  const auto again = UIImage::imageWithData(UIImagePNGRepresentation(*image));
  ASSERT_TRUE(again);
  EXPECT_EQ(again->pixels()[0], 0xff102030);
  EXPECT_EQ(again->pixels()[1], 0x80400000);
}

TEST(UIImage, whatIsNoSuchPictureIsNil) {
  const Bytes png = encoded(64, 64, "PNG");
  Bytes corrupt = png;
  for (std::size_t i = 40; i < corrupt.size(); ++i) corrupt[i] ^= 0x5a;
  for (const Bytes& bytes :
       {Bytes{}, text("<html>not found</html>"), Bytes(png.begin(), png.begin() + 30), corrupt, text("BM"),
        text("RIFF"), text("<svg xmlns='http://www.w3.org/2000/svg'><image href='file:///etc/passwd'/></svg>")}) {
    EXPECT_FALSE(UIImage::imageWithData(bytes)) << bytes.size() << " bytes";
  }
  EXPECT_FALSE(UIImage::imageWithPixels(2, 2, {1, 2, 3}));
  EXPECT_FALSE(UIImage::imageWithPixels(-1, -1, {1}));
}

}  // namespace
