#include "platform/uikit/UILabel.h"

#include <QPainter>

#include "tests/support/ScreenTest.h"

namespace {

struct CountsDrawing : UILabel {
  using UILabel::UILabel;
  int draws = 0;
  // Sets something on itself while it draws, as a label that draws an outline does.
  void drawTextInRect(QPainter& painter, const CGRect& rect) override {
    ++draws;
    const auto color = textColor();
    setTextColor(UIColor::blackColor());
    setTextColor(color);
    UILabel::drawTextInRect(painter, rect);
  }
};

class LabelTest : public ScreenTest {
 protected:
  LabelTest() { view()->addSubview(label); }
  QRect ink() { return inkOf(snapshot(), QRect(0, 0, 640, 360)); }

  std::shared_ptr<CountsDrawing> label = std::make_shared<CountsDrawing>(CGRectMake(100, 100, 400, 40));
};

TEST_F(LabelTest, isDrawnAgainOnlyWhenWhatItShowsChanges) {
  label->setText("Some text");
  snapshot();
  label->setText("Some text");
  label->setTextColor(UIColor::whiteColor());
  label->setFrame(CGRectMake(50, 60, 400, 40));
  label->setAlpha(0.5);
  snapshot();
  int draws = 1;
  EXPECT_EQ(label->draws, draws) << "nothing of that changes the text's picture";
  const std::function<void()> changes[] = {[&] { label->setText("Another text"), label->setText("several changes"); },
                                           [&] { label->setTextColor(UIColor::redColor()); },
                                           [&] { label->setFont(UIFont::systemFontOfSize(24, UIFont::weightBold)); },
                                           [&] { label->setTextAlignment(NSTextAlignmentRight); },
                                           [&] { label->setNumberOfLines(2); },
                                           [&] { label->setFrame(CGRectMake(50, 60, 200, 40)); }};
  for (const auto& change : changes) {
    change();
    snapshot();
    EXPECT_EQ(label->draws, ++draws);
  }
}

TEST_F(LabelTest, drawsEachRunInItsOwnFontAndColour) {
  NSAttributedString text("\u2588", {.font = UIFont::systemFontOfSize(80), .foregroundColor = UIColor::redColor()});
  text.runs.push_back({"\u2588", {text.runs[0].attributes.font, UIColor::greenColor(), {}, 0, true}});
  label->setFrame(CGRectMake(0, 0, 640, 100));
  label->setAttributedText(text);
  const double width = label->intrinsicContentSize().width / 2;
  EXPECT_EQ(colorAt(snapshot(), int(width * 0.5), 50) + colorAt(snapshot(), int(width * 1.5), 50), "ff000000ff00");
}

TEST_F(LabelTest, alignsItsTextAsWrittenOrAsToldAndEndsItInAnEllipsis) {
  EXPECT_EQ(ink(), QRect());
  label->setText("Text");
  const CGSize one = label->intrinsicContentSize();
  for (const auto& [alignment, left] :
       {std::pair{NSTextAlignmentLeft, 100.0}, std::pair{NSTextAlignmentCenter, 300 - one.width / 2},
        std::pair{NSTextAlignmentRight, 500 - one.width}, std::pair{NSTextAlignmentNatural, 100.0}}) {
    label->setTextAlignment(alignment);
    EXPECT_NEAR(ink().left(), left, 4) << alignment;
    EXPECT_NEAR(ink().center().y(), 120, 4) << "centred from top to bottom";
  }
  label->setText("\u05e9\u05dc\u05d5\u05dd");
  EXPECT_GT(ink().left(), 300) << "written from right to left";

  label->setFrame(CGRectMake(20, 20, 200, 300));
  label->setText("One two three four five six seven eight nine ten eleven twelve thirteen fourteen");
  std::vector<int> heights;
  for (const int lines : {1, 2, 0}) {
    label->setNumberOfLines(lines);
    heights.push_back(ink().height());
    EXPECT_LE(ink().right(), 221);
  }
  EXPECT_LT(heights[0], 40);
  EXPECT_GT(heights[1], heights[0] + 15);
  EXPECT_GT(heights[2], heights[1] + 15) << "all of it";
  label->setNumberOfLines(1);
  for (const char* piece : {"word ", "\u0627\u0644\u0639\u0631\u0628\u064a\u0629 ", "."}) {
    std::string text;
    while (text.size() < 2000) text += piece;
    label->setText(text);
    const QImage start = snapshot();
    for (int doubled = 0; doubled < 10; ++doubled) text += text;
    label->setText(text);
    EXPECT_EQ(snapshot(), start) << piece;
    EXPECT_GT(ink().width(), 180) << "a line is filled, however narrow its letters";
  }

  label->setNumberOfLines(0);
  label->setText("Text\r\nText\r\n");
  EXPECT_EQ(label->intrinsicContentSize().width, one.width) << "carriage returns are nothing";
  label->setText("Text Text");
  label->setPreferredMaxLayoutWidth(one.width + 2);
  EXPECT_EQ(label->intrinsicContentSize().height, 2 * one.height);
}

}  // namespace
