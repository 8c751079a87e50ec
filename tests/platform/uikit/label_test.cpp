#include "platform/uikit/UILabel.h"

#include <QPainter>

#include "tests/support/ScreenTest.h"

namespace {

class CountsDrawing : public UILabel {
 public:
  using UILabel::UILabel;
  int draws = 0;
  bool outlined = false;

  // Sets things on itself while it draws, as a label that draws an outline does.
  void drawTextInRect(QPainter& painter, const CGRect& rect) override {
    ++draws;
    if (!outlined) return UILabel::drawTextInRect(painter, rect);
    const auto plain = *text();
    NSTextAttributes attributes;
    attributes.strokeColor = attributes.foregroundColor = UIColor::blackColor();
    attributes.strokeWidth = -10;
    setAttributedText(NSAttributedString(plain, attributes));
    UILabel::drawTextInRect(painter, rect);
    setText(plain);
    UILabel::drawTextInRect(painter, rect);
  }
};

class LabelTest : public ScreenTest {
 protected:
  std::shared_ptr<CountsDrawing> add(const CGRect& frame, const std::string& text, double size = 24) {
    auto label = std::make_shared<CountsDrawing>(frame);
    label->setFont(UIFont::systemFontOfSize(size));
    label->setText(text);
    view()->addSubview(label);
    return label;
  }
  QRect ink() { return inkOf(snapshot(), QRect(0, 0, 640, 360)); }
};

TEST_F(LabelTest, isDrawnAgainOnlyWhenWhatItShowsChanges) {
  const auto label = add(CGRectMake(20, 20, 300, 40), "Some text");
  snapshot();
  label->setText("Some text");
  label->setTextColor(UIColor::whiteColor());
  label->setFont(UIFont::systemFontOfSize(24));
  label->setFrame(CGRectMake(50, 60, 300, 40));
  label->setAlpha(0.5);
  snapshot();
  EXPECT_EQ(label->draws, 1) << "nothing of that changes the text's picture";

  int draws = 1;
  const std::function<void()> changes[] = {[&] { label->setText("Another text"); },
                                           [&] { label->setTextColor(UIColor::redColor()); },
                                           [&] { label->setFont(UIFont::boldSystemFontOfSize(24)); },
                                           [&] { label->setTextAlignment(NSTextAlignmentRight); },
                                           [&] { label->setNumberOfLines(2); },
                                           [&] { label->setFrame(CGRectMake(50, 60, 200, 40)); },
                                           [&] {
                                             label->setText("several");
                                             label->setText("changes");
                                           }};
  for (const auto& change : changes) {
    change();
    snapshot();
    EXPECT_EQ(label->draws, ++draws);
  }
}

TEST_F(LabelTest, anOutlineThatALabelSetsOnItselfWhileItDrawsDrawsNothingAnew) {
  const auto label = add(CGRectMake(0, 0, 640, 100), "Outlined", 80);
  label->outlined = true;
  view()->setBackgroundColor(UIColor::blueColor());
  snapshot();
  const QImage picture = snapshot();
  EXPECT_EQ(label->draws, 1);
  std::map<QRgb, int> pixels;
  for (int y = 0; y < 100; ++y) {
    for (int x = 0; x < 640; ++x) ++pixels[picture.pixel(x, y)];
  }
  EXPECT_GT(pixels[qRgb(0, 0, 0)], 1000) << "the outline";
  EXPECT_GT(pixels[qRgb(255, 255, 255)], 1000) << "the letters inside it";

  NSAttributedString text("\u2588", {.foregroundColor = UIColor::redColor()});
  text.runs.push_back({"\u2588", {.foregroundColor = UIColor::greenColor(), .underline = true}});
  label->outlined = false;
  label->setAttributedText(text);
  const double width = label->intrinsicContentSize().width / 2;
  EXPECT_EQ(colorAt(snapshot(), int(width * 0.5), 50), "ff0000");
  EXPECT_EQ(colorAt(snapshot(), int(width * 1.5), 50), "00ff00");
}

TEST_F(LabelTest, alignsItsTextAsWrittenOrAsToldAndEndsItInAnEllipsis) {
  const auto label = add(CGRectMake(100, 100, 400, 40), "");
  EXPECT_EQ(ink(), QRect());
  label->setText("Text");
  const double width = label->intrinsicContentSize().width;
  for (const auto& [alignment, left] :
       {std::pair{NSTextAlignmentLeft, 100.0}, std::pair{NSTextAlignmentCenter, 300 - width / 2},
        std::pair{NSTextAlignmentRight, 500 - width}, std::pair{NSTextAlignmentNatural, 100.0}}) {
    label->setTextAlignment(alignment);
    EXPECT_NEAR(ink().left(), left, 4) << alignment;
    EXPECT_NEAR(ink().center().y(), 120, 4) << "centred from top to bottom";
  }
  label->setText("\u05e9\u05dc\u05d5\u05dd");  // written from right to left
  EXPECT_GT(ink().left(), 300);
  label->setTextAlignment(NSTextAlignmentLeft);
  EXPECT_LT(ink().right(), 300);

  label->setFrame(CGRectMake(20, 20, 200, 300));
  label->setText("One two three four five six seven eight nine ten eleven");
  const int oneLine = ink().height();
  EXPECT_LT(oneLine, 40) << "one line at first";
  EXPECT_LE(ink().right(), 221);
  EXPECT_GT(ink().right(), 190) << "as much of the line as fits";
  label->setNumberOfLines(2);
  const int twoLines = ink().height();
  EXPECT_GT(twoLines, oneLine + 15);
  label->setNumberOfLines(0);
  EXPECT_GT(ink().height(), twoLines + 15) << "all of it";
  label->setFrame(CGRectMake(20, 20, 200, 70));
  EXPECT_NEAR(ink().height(), twoLines, 8) << "no line is cut through";
}

TEST_F(LabelTest, knowsTheSizeOfItsText) {
  const auto label = add(CGRectZero, "Text", 40);
  const CGSize one = label->intrinsicContentSize();
  label->setText("Text\nText");
  EXPECT_EQ(label->intrinsicContentSize().height, one.height) << "one line is what it may have";
  label->setText(std::string(100, 'x'));
  EXPECT_GT(label->intrinsicContentSize().width, 640) << "however long it is";
  label->setText("Text\nText");
  label->setNumberOfLines(0);
  EXPECT_EQ(label->intrinsicContentSize(), (CGSize{one.width, 2 * one.height}));
  label->setText("Text\r\nText\r\n");
  EXPECT_EQ(label->intrinsicContentSize().width, one.width) << "carriage returns are nothing";
  label->setText("Text Text");
  label->setPreferredMaxLayoutWidth(one.width + 2);
  EXPECT_EQ(label->intrinsicContentSize().height, 2 * one.height);
  label->setText("");
  EXPECT_EQ(label->intrinsicContentSize(), (CGSize{0, 0}));
  label->setAttributedText(NSAttributedString("Text", {.font = UIFont::systemFontOfSize(80)}));
  label->setPreferredMaxLayoutWidth(0);
  EXPECT_NEAR(label->intrinsicContentSize().width, 2 * one.width, 3) << "a run's own font counts";
}

}  // namespace
