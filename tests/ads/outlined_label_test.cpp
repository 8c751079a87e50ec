#include "ads/YMROutlinedLabel.h"

#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>

#include "tests/support/ScreenTest.h"

namespace {

// Notes how wide the shapes are that are drawn on it.
struct NotesShapes : QPaintDevice, QPaintEngine {
  NotesShapes() : QPaintEngine(AllFeatures) {}
  QPaintEngine* paintEngine() const override { return const_cast<NotesShapes*>(this); }
  int metric(PaintDeviceMetric metric) const override {
    return metric == PdmDevicePixelRatio ? 1 : metric == PdmDevicePixelRatioScaled ? 0x10000 : 1000;
  }
  Type type() const override { return User; }
  bool begin(QPaintDevice*) override { return true; }
  bool end() override { return true; }
  void updateState(const QPaintEngineState&) override {}
  void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
  void drawTextItem(const QPointF&, const QTextItem&) override {}
  void drawPath(const QPainterPath& path) override { widths.push_back(path.boundingRect().width()); }

  std::vector<double> widths;
};

// A label of a block that fills its character's box, on black.
class OutlinedLabelTest : public ScreenTest {
 protected:
  OutlinedLabelTest() { show(label); }

  void show(const std::shared_ptr<UILabel>& shown) {
    shown->setFont(UIFont::systemFontOfSize(100));
    shown->setText("\u2588");
    view()->addSubview(shown);
  }
  QRect ink() { return inkOf(snapshot(), QRect(0, 0, 640, 360)); }
  // From the middle of the left edge: outside, on the outline, within it, inside the letter.
  std::vector<std::string> edge() {
    const QImage picture = snapshot();
    const QRect all = inkOf(picture, QRect(0, 0, 640, 360));
    std::vector<std::string> colors;
    for (const int x : {-3, 2, 7, 20}) colors.push_back(colorAt(picture, all.left() + x, all.center().y()));
    return colors;
  }

  std::shared_ptr<YMROutlinedLabel> label = std::make_shared<YMROutlinedLabel>(CGRectMake(100, 80, 400, 200));
};

TEST_F(OutlinedLabelTest, drawsHalfTheOutlineOutsideTheLettersAndNoneOfItInside) {
  const auto plain = std::make_shared<UILabel>(label->frame());
  plain->setTextAlignment(NSTextAlignmentCenter);
  show(plain);
  label->setHidden(true);
  const QRect letter = ink();
  plain->removeFromSuperview();
  label->setHidden(false);

  label->setStrokeWidth(10);
  label->setStrokeColor(UIColor::redColor());
  label->setTextColor(UIColor::greenColor());
  EXPECT_EQ(ink(), letter.adjusted(-5, -5, 5, 5)) << "10 hundredths of 100 points, half of it outside";
  EXPECT_THAT(edge(), testing::ElementsAre("000000", "ff0000", "00ff00", "00ff00"));
  EXPECT_EQ(label->backgroundAttributes(),
            (NSTextAttributes{.font = label->font(),
                              .foregroundColor = UIColor::redColor(),
                              .strokeColor = UIColor::redColor(),
                              .strokeWidth = -10,
                              .paragraphStyle = NSParagraphStyle{NSTextAlignmentCenter}}));
  EXPECT_EQ(label->foregroundAttributes(), (NSTextAttributes{.font = label->font(),
                                                             .foregroundColor = UIColor::greenColor(),
                                                             .paragraphStyle = label->paragraphStyle()}));
  EXPECT_EQ(label->textColor(), UIColor::whiteColor()) << "the label's own colour stays";
}

// A line of outlined letters as one shape takes a rasteriser time that grows with the square of its length.
TEST_F(OutlinedLabelTest, drawsALongTextLetterByLetterAndNoMoreOfItThanThereIsRoomFor) {
  std::string text = "&W";
  while (text.size() < 1'000'000) text += text;
  label->setText(text);
  label->setFont(UIFont::systemFontOfSize(20));
  NotesShapes shapes;
  QPainter painter(&shapes);
  label->drawTextInRect(painter, CGRectMake(0, 0, 400, 200));
  EXPECT_THAT(shapes.widths, testing::SizeIs(testing::AllOf(testing::Gt(100), testing::Lt(300))));
  EXPECT_THAT(shapes.widths, testing::Each(testing::Lt(30)));
}

TEST_F(OutlinedLabelTest, keepsTheLookOfItsFirstTextUntilThatIsCleared) {
  label->setText(std::nullopt);
  EXPECT_EQ(ink(), QRect());
  label->setText("");
  EXPECT_EQ(ink(), QRect());
  EXPECT_FALSE(label->paragraphStyle() || label->backgroundAttributes() || label->foregroundAttributes())
      << "no text has been drawn";

  label->setStrokeWidth(10);
  label->setStrokeColor(UIColor::redColor());
  label->setText("\u2588");
  const QRect before = ink();
  const CGSize size = label->intrinsicContentSize();
  label->setStrokeWidth(40);
  label->setStrokeColor(UIColor::blueColor());
  label->setForegroundColor(UIColor::greenColor());
  label->setFont(UIFont::systemFontOfSize(50));
  label->setText("\u2588\u2588");
  label->setText("\u2588");
  EXPECT_EQ(ink(), before);
  EXPECT_EQ(label->intrinsicContentSize(), size) << "it asks for the room that it needs";
  EXPECT_THAT(edge(), testing::ElementsAre("000000", "ff0000", "ffffff", "ffffff"));

  label->setBackgroundAttributes(std::nullopt);
  label->setForegroundAttributes(std::nullopt);
  EXPECT_THAT(edge(), testing::ElementsAre("000000", "0000ff", "0000ff", "00ff00")) << "40 hundredths of 50 points";
}

TEST_F(OutlinedLabelTest, keepsTheItalicsTheBoldAndTheColoursOfRunsInEveryDrawing) {
  const UIFont body{"Noto Sans", 17};
  NSAttributedString markup;
  markup.runs = {{"\u2588", {.font = body, .foregroundColor = UIColor::whiteColor()}},
                 {"\u2588", {.font = body, .foregroundColor = UIColor::redColor()}},
                 {"mm", {.font = UIFont{"Noto Sans", 17, UIFont::weightBold, true}}}};
  label->setForegroundColor(UIColor::colorWithRed(1, 1, 0, 1));
  label->setStrokeColor(UIColor::blueColor());
  label->setStrokeWidth(10);
  label->setText(markup.string());
  const QRect plain = ink();
  const auto seen = [this](int fromLeft) {
    const QImage picture = snapshot();
    const QRect all = inkOf(picture, QRect(0, 0, 640, 360));
    return colorAt(picture, all.left() + 5 + fromLeft, all.top() + 30);
  };
  label->setAttributedText(markup);
  UILabel real;
  NSAttributedString large = markup;
  for (auto& run : large.runs) run.attributes.font->pointSize = 100;
  real.setAttributedText(large);
  const double width = real.intrinsicContentSize().width;
  for (const char* when : {"first", "again", "handed back"}) {
    EXPECT_EQ(seen(30), "ffff00") << when << ": the body's is the label's";
    EXPECT_EQ(seen(100), "ff0000") << when;
    EXPECT_EQ(label->intrinsicContentSize().width, width) << when;
    EXPECT_NEAR(ink().width(), width + 10, 5) << when;
    EXPECT_EQ(label->attributedText(), NSAttributedString(markup.string(), *label->backgroundAttributes())) << when;
    label->setAttributedText(label->attributedText());
    label->setNeedsDisplay();
  }
  label->setText(markup.string());
  EXPECT_EQ(ink(), plain);
  EXPECT_NE(label->intrinsicContentSize().width, width);
  EXPECT_EQ(seen(100), "ffff00") << "a new text has no runs";

  label->setText("l");
  const int letter = ink().width();
  label->setAttributedText(NSAttributedString("l", {.underline = true}));
  EXPECT_GT(ink().width(), letter + 5) << "underlined as wide as it takes";
}

}  // namespace
