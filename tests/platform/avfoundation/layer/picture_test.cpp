#include "platform/avfoundation/layer/PictureGeometry.h"
#include "platform/avfoundation/layer/PictureItem.h"
#include "tests/support/ScreenTest.h"

namespace {

using Pixels = std::vector<std::uint32_t>;

// A picture of `width` x `height` whose pixels `color` tells, with rows that are longer than what they show.
template <typename Color>
VideoFrame frameOf(int width, int height, Color color) {
  VideoFrame frame;
  frame.width = width;
  frame.height = height;
  frame.stride = (width + 3) * 4;
  auto pixels = std::make_shared<Pixels>(std::size_t(width + 3) * std::size_t(height), 0x00ff00ff);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) (*pixels)[std::size_t(y * (width + 3) + x)] = color(x, y) & 0xffffff;
  }
  frame.bits = reinterpret_cast<const std::uint8_t*>(pixels->data());
  frame.owner = pixels;
  return frame;
}

// The same as it comes from a decoder, to be drawn `rows` rows at a time.
VideoFrame asDecoded(VideoFrame frame, int rows) {
  class Rows final : public DecodedPicture {
   public:
    Rows(VideoFrame picture, int rows) : picture_(std::move(picture)), rows_(rows) {}
    int rowsAtOnce() const override { return rows_; }
    void draw(int first, std::uint8_t* target, int stride) const override {
      for (int row = first; row < std::min(first + rows_, picture_.height); ++row, target += stride) {
        std::copy_n(picture_.bits + row * picture_.stride, picture_.width * 4, target);
      }
    }

   private:
    const VideoFrame picture_;
    const int rows_;
  };
  frame.decoded = std::make_shared<Rows>(frame, rows);
  frame.bits = nullptr;
  frame.stride = 0;
  return frame;
}

VideoFrame plain(std::uint32_t color, int width = 64, int height = 36) {
  return frameOf(width, height, [=](int, int) { return color; });
}

// Red and green above, blue and white below.
VideoFrame quarters(int width, int height) {
  return frameOf(width, height, [=](int x, int y) -> std::uint32_t {
    const bool right = 2 * x >= width;
    return 2 * y < height ? (right ? 0x00ff00 : 0xff0000) : (right ? 0xffffff : 0x0000ff);
  });
}

class PictureTest : public ScreenTest {
 protected:
  PictureTest() {
    item->setParentItem(view().get());
    item->setSize({640, 360});
    item->setSlot(slot);
  }
  void show(VideoFrame frame) {
    slot->present(std::move(frame));
    loop.runUntilIdle();
  }
  // The letters of the colours in the middle of the four quarters of `rect`: r, g, b, w, k for black, ? for others.
  static std::string quartersOf(const QImage& image, const QRect& rect) {
    std::string letters;
    for (const auto& [dx, dy] : {std::pair(1, 1), std::pair(3, 1), std::pair(1, 3), std::pair(3, 3)}) {
      letters += letterAt(image, rect.x() + rect.width() * dx / 4, rect.y() + rect.height() * dy / 4);
    }
    return letters;
  }
  static char letterAt(const QImage& image, int x, int y) {
    static const std::map<std::string, char> letters{
        {"ff0000", 'r'}, {"00ff00", 'g'}, {"0000ff", 'b'}, {"ffffff", 'w'}, {"000000", 'k'}};
    const auto found = letters.find(colorAt(image, x, y));
    return found == letters.end() ? '?' : found->second;
  }

  std::shared_ptr<FrameSlot> slot = std::make_shared<FrameSlot>();
  std::unique_ptr<PictureItem> item = std::make_unique<PictureItem>();
};

TEST_F(PictureTest, fillsAsMuchAsItsShapeAllowsAndIsTurnedAsItSays) {
  struct Case {
    const char* name;
    int width, height, aspectAcross, aspectDown, rotation;
    bool mirrored;
    QRect rect;
    const char* quarters;
  };
  const QRect whole(0, 0, 640, 360);
  const Case cases[] = {
      {"16:9", 160, 90, 1, 1, 0, false, whole, "rgbw"},
      {"larger than the window", 1920, 1080, 1, 1, 0, false, whole, "rgbw"},
      {"wide", 400, 100, 1, 1, 0, false, QRect(0, 100, 640, 160), "rgbw"},
      {"4:3 of a disc", 720, 576, 16, 15, 0, false, QRect(80, 0, 480, 360), "rgbw"},
      {"nonsense for a pixel aspect", 160, 90, -4, 3, 0, false, whole, "rgbw"},
      {"turned right", 160, 100, 1, 1, 90, false, QRect(208, 0, 225, 360), "brwg"},
      {"upside down", 160, 90, 1, 1, 180, false, whole, "wbgr"},
      {"turned left", 160, 100, 1, 1, 270, false, QRect(208, 0, 225, 360), "gwrb"},
      {"mirrored", 160, 90, 1, 1, 0, true, whole, "grwb"},
      {"mirrored and turned", 160, 100, 1, 1, 90, true, QRect(208, 0, 225, 360), "wgbr"},
      {"turned with a pixel aspect", 720, 576, 16, 15, 270, false, QRect(185, 0, 270, 360), "gwrb"},
  };
  for (const Case& c : cases) {
    VideoFrame frame = quarters(c.width, c.height);
    frame.pixelAspectNumerator = c.aspectAcross;
    frame.pixelAspectDenominator = c.aspectDown;
    frame.rotation = c.rotation;
    frame.mirrored = c.mirrored;
    show(std::move(frame));
    const QImage image = snapshot();
    EXPECT_EQ(quartersOf(image, c.rect), c.quarters) << c.name;
    const QRect ink = inkOf(image, whole);
    EXPECT_TRUE(c.rect.adjusted(-1, -1, 1, 1).contains(ink) && ink.contains(c.rect.adjusted(1, 1, -1, -1))) << c.name;
  }
}

TEST_F(PictureTest, aPictureOfTheSameSizeIsShownPixelForPixel) {
  std::uint32_t seed = 1;
  const auto noise = [&](int, int) { return (seed = seed * 1664525 + 1013904223) >> 8; };
  const VideoFrame expected = frameOf(640, 360, noise);
  for (const VideoFrame& frame :
       {expected, asDecoded(expected, 16), asDecoded(expected, 7), asDecoded(expected, 360)}) {
    show(plain(0x00ff00));
    snapshot();
    show(frame);
    const QImage image = snapshot();
    int different = 0;
    for (int y = 0; y < 360; ++y) {
      const auto* row = reinterpret_cast<const std::uint32_t*>(expected.bits + y * expected.stride);
      for (int x = 0; x < 640; ++x) different += (image.pixel(x, y) & 0xffffff) != row[x];
    }
    EXPECT_EQ(different, 0);
  }
}

TEST_F(PictureTest, holdsNoMorePicturesThanItShowsAndOneThatWaits) {
  std::vector<std::weak_ptr<const void>> owners;
  const auto present = [&](std::uint32_t color) {
    VideoFrame frame = plain(color);
    owners.push_back(frame.owner);
    slot->present(std::move(frame));
  };
  const auto alive = [&] { return std::ranges::count(owners, false, [](auto& owner) { return owner.expired(); }); };
  for (int i = 0; i < 5; ++i) present(0xff0000);
  EXPECT_EQ(alive(), 1);
  for (int i = 0; i < 2; ++i) {
    present(0x00ff00);
    loop.runUntilIdle();
    snapshot();
  }
  EXPECT_EQ(alive(), 1);
  item->setSlot(nullptr);
  snapshot();
  EXPECT_EQ(alive(), 0) << "also of what is no longer shown";
}

TEST_F(PictureTest, whatLiesAboveStaysWholeWhenPartsAreDrawnAnew) {
  show(plain(0x0000ff));
  auto panel = addView(CGRectMake(300, 40, 300, 300), UIColor::redColor().colorWithAlphaComponent(0.5));
  auto mark = addView(CGRectMake(500, 300, 20, 20), UIColor::greenColor());
  const QImage before = snapshot();
  EXPECT_EQ(colorAt(before, 510, 310) + colorAt(before, 200, 200), "00ff000000ff");
  mark->setHidden(true);
  EXPECT_THAT(colorAt(snapshot(), 510, 310), isAbout("80007f"));
  mark->setHidden(false);
  show(plain(0x00ff00));
  EXPECT_THAT(colorAt(snapshot(), 400, 200), isAbout("807f00"));
  show(plain(0x0000ff));
  EXPECT_EQ(snapshot(), before);
}

TEST(PictureGeometry, edgesLieOnThePixelsOfADenseScreen) {
  const QRectF rect = pictureRect(plain(0, 1001, 563), QRectF(0, 0, 640, 360), 1.5);
  for (const double edge : {rect.left(), rect.top(), rect.right(), rect.bottom()}) {
    EXPECT_EQ(edge * 1.5, std::round(edge * 1.5));
  }
}

}  // namespace
