#include <QPainter>
#include <stdexcept>

#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ViewTest : public ScreenTest {
 protected:
  static std::shared_ptr<UIView> square(double place, const UIColor& color) {
    auto made = std::make_shared<UIView>(CGRectMake(place, place, 100, 100));
    made->setBackgroundColor(color);
    return made;
  }
  std::string at(int x, int y) { return colorAt(snapshot(), x, y); }
  // Colours where red and blue, where red, green and blue, and where only green and blue lie.
  std::string overlaps() {
    const QImage picture = snapshot();
    return colorAt(picture, 40, 40) + " " + colorAt(picture, 100, 100) + " " + colorAt(picture, 120, 120);
  }

  std::shared_ptr<UIView> red = square(10, UIColor::redColor()), green = square(60, UIColor::greenColor()),
                          blue = square(30, UIColor::blueColor());
};

TEST_F(ViewTest, subviewsCoverEachOtherInTheirOrder) {
  const std::tuple<const char*, std::function<void()>, const char*> rows[] = {
      {"green on red", [&] { view()->addSubview(red), view()->addSubview(green); }, "ff0000 00ff00 00ff00"},
      {"blue between", [&] { view()->insertSubview(blue, 1); }, "0000ff 00ff00 00ff00"},
      {"red to the front", [&] { view()->bringSubviewToFront(red); }, "ff0000 ff0000 00ff00"},
      {"green to the back", [&] { view()->sendSubviewToBack(green); }, "ff0000 ff0000 0000ff"},
      {"blue added again", [&] { view()->addSubview(blue); }, "0000ff 0000ff 0000ff"},
      {"blue to a place", [&] { view()->insertSubview(blue, 0); }, "ff0000 ff0000 00ff00"},
  };
  for (const auto& [what, happens, colors] : rows) {
    happens();
    EXPECT_EQ(overlaps(), colors) << what;
  }
  EXPECT_THAT(view()->subviews(), ElementsAre(blue, green, red));
}

TEST_F(ViewTest, aViewHasOneSuperviewWhichHoldsIt) {
  view()->addSubview(red);
  red->addSubview(blue);
  const std::weak_ptr<UIView> watched = blue;
  green->addSubview(std::exchange(blue, nullptr));
  EXPECT_THAT(red->subviews(), IsEmpty());
  ASSERT_FALSE(watched.expired());
  EXPECT_EQ(watched.lock()->superview(), green);
  watched.lock()->addSubview(green);
  green->addSubview(green);
  EXPECT_EQ(green->superview(), nullptr) << "no view ends up inside itself";
  green.reset();
  EXPECT_TRUE(watched.expired());
  const auto layer = std::make_shared<CALayer>(), orphan = red->layer();
  view()->layer()->addSublayer(layer);
  orphan->addSublayer(layer);
  layer->addSublayer(orphan);
  EXPECT_THAT(view()->layer()->sublayers(), IsEmpty()) << "nor a layer two superlayers";
  red->removeFromSuperview();
  red->removeFromSuperview();
  EXPECT_THAT(view()->subviews(), IsEmpty());
  red.reset();
  EXPECT_EQ(orphan->frame(), CGRectZero) << "a view's layer outlives it as nothing";
}

TEST_F(ViewTest, hidingFadingAndClippingReachWhatIsInside) {
  view()->addSubview(red);
  red->addSubview(blue);
  EXPECT_EQ(at(125, 125), "0000ff");
  red->setClipsToBounds(true);
  EXPECT_EQ(at(125, 125), "000000");
  red->setAlpha(0.5);
  EXPECT_THAT(at(20, 20), isAbout("7f0000"));
  red->setAlpha(7);
  red->setHidden(true);
  EXPECT_EQ(at(100, 100), "000000");
  EXPECT_FALSE(blue->isHidden()) << "its own flag";
  red->setHidden(false);
  red->setBackgroundColor(UIColor::clearColor());
  EXPECT_EQ(at(100, 100), "0000ff");
  EXPECT_EQ(at(20, 20), "000000");
}

class CountsDrawing : public UIView {
 public:
  CountsDrawing() { setDrawsContent(true); }
  int draws = 0;

 protected:
  void drawRect(QPainter& painter, const CGRect& rect) override {
    ++draws;
    painter.fillRect(QRectF(0, 0, rect.size.width / 2, rect.size.height), Qt::yellow);
  }
};

TEST_F(ViewTest, contentIsDrawnOnceAndKept) {
  auto drawn = std::make_shared<CountsDrawing>();
  drawn->setFrame(CGRectMake(0, 0, 100, 50));
  view()->addSubview(drawn);
  EXPECT_EQ(at(20, 20), "ffff00");
  EXPECT_EQ(at(70, 20), "000000");
  drawn->setFrame(CGRectMake(200, 200, 100, 50));
  drawn->setAlpha(0.5);
  EXPECT_THAT(at(220, 220), isAbout("7f7f00"));
  EXPECT_EQ(drawn->draws, 1) << "moving and fading draw nothing anew";
  drawn->setHidden(true);
  drawn->setNeedsDisplay();
  snapshot();
  EXPECT_EQ(drawn->draws, 1) << "nothing is drawn for nobody";
  drawn->setHidden(false);
  snapshot();
  EXPECT_EQ(drawn->draws, 2);
  drawn->setFrame(CGRectMake(200, 200, 40, 50));
  EXPECT_EQ(at(230, 220), "000000");
  EXPECT_EQ(drawn->draws, 3) << "a new size is a new drawing";
  drawn->removeFromSuperview();
  view()->addSubview(drawn);
  EXPECT_THAT(at(210, 220), isAbout("7f7f00")) << "back in the tree it shows what it had";
  drawn->setFrame({{}, {100000, 2}});
  snapshot();
}

TEST_F(ViewTest, aHostsItemIsLentAPlaceAndGivenBack) {
  QQuickItem item;
  auto wrapped = UIView::wrap(&item);
  EXPECT_EQ(UIView::wrap(&item), wrapped);
  EXPECT_EQ(UIView::wrap(red.get()), red);
  EXPECT_EQ(UIView::wrap(nullptr), nullptr);
  view()->addSubview(wrapped);
  wrapped->setFrame(CGRectMake(10, 10, 300, 200));
  EXPECT_EQ(item.size(), QSizeF(300, 200));
  EXPECT_EQ(item.window(), &window);
  wrapped->removeFromSuperview();
  wrapped.reset();
  EXPECT_EQ(item.parentItem(), nullptr);

  auto goesFirst = std::make_unique<QQuickItem>();
  wrapped = UIView::wrap(goesFirst.get());
  goesFirst.reset();
  wrapped->setFrame(CGRectMake(0, 0, 1, 1));
}

TEST_F(ViewTest, alphaIsAnimatedByTheRunLoopsTimeUntilItIsOvertaken) {
  view()->addSubview(red);
  std::vector<bool> finished;
  const auto fadeTo = [&](double alpha) {
    UIView::animateWithDuration(
        std::chrono::seconds(1), [&] { red->setAlpha(alpha); }, [&](bool value) { finished.push_back(value); });
    EXPECT_EQ(red->alpha(), alpha);
  };
  fadeTo(0);
  run(std::chrono::milliseconds(500));
  EXPECT_NEAR(red->opacity(), 0.5, 0.1);
  EXPECT_THAT(finished, IsEmpty());
  run(std::chrono::milliseconds(600));
  EXPECT_EQ(red->opacity(), 0);
  fadeTo(1);
  run(std::chrono::milliseconds(500));
  red->setAlpha(0.25);
  run(std::chrono::seconds(1));
  EXPECT_EQ(red->opacity(), 0.25);
  fadeTo(1);
  red->removeFromSuperview();
  red.reset();
  run(std::chrono::seconds(2));
  EXPECT_THAT(finished, ElementsAre(true, false, false)) << "done, overtaken, without its view";

  EXPECT_THROW(UIView::animateWithDuration(std::chrono::seconds(1),
                                           [&] {
                                             blue->setAlpha(0.5);
                                             throw std::runtime_error("a host's");
                                           }),
               std::runtime_error);
  green->setAlpha(0);
  EXPECT_EQ(green->opacity(), 0) << "what comes afterwards is no part of it";
  run(std::chrono::seconds(2));
  EXPECT_EQ(blue->opacity(), 0.5);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

}  // namespace
