#include <QPainter>

#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ViewTest : public ScreenTest {
 protected:
  using View = std::shared_ptr<UIView>;
  View red = std::make_shared<UIView>(CGRectMake(10, 10, 100, 100));
  View green = std::make_shared<UIView>(CGRectMake(60, 60, 100, 100));
  View blue = std::make_shared<UIView>(CGRectMake(30, 30, 100, 100));

  ViewTest() {
    red->setBackgroundColor(UIColor::redColor());
    green->setBackgroundColor(UIColor::greenColor());
    blue->setBackgroundColor(UIColor::blueColor());
  }
  std::string at(int x, int y) { return colorAt(snapshot(), x, y); }
};

TEST_F(ViewTest, subviewsCoverEachOtherInTheirOrder) {
  view()->addSubview(red);
  view()->addSubview(green);
  view()->insertSubview(blue, 1);
  EXPECT_THAT(view()->subviews(), ElementsAre(red, blue, green));
  EXPECT_EQ(at(100, 100), "00ff00");
  EXPECT_EQ(at(40, 40), "0000ff");
  EXPECT_EQ(at(20, 20), "ff0000");
  EXPECT_EQ(at(300, 300), "000000");

  view()->bringSubviewToFront(red);
  EXPECT_THAT(view()->subviews(), ElementsAre(blue, green, red));
  EXPECT_EQ(at(100, 100), "ff0000");
  view()->sendSubviewToBack(green);
  EXPECT_THAT(view()->subviews(), ElementsAre(green, blue, red));
  EXPECT_EQ(at(120, 120), "0000ff");
  view()->addSubview(blue);
  EXPECT_THAT(view()->subviews(), ElementsAre(green, red, blue)) << "adding again brings to the front";
  view()->insertSubview(blue, 0);
  EXPECT_THAT(view()->subviews(), ElementsAre(blue, green, red));
  EXPECT_EQ(at(100, 100), "ff0000");
  EXPECT_EQ(at(120, 120), "00ff00");
}

TEST_F(ViewTest, layersLieAmongSubviewsInTheOrderOfAdding) {
  view()->addSubview(red);
  auto layer = std::make_shared<CALayer>();
  view()->layer()->addSublayer(layer);
  view()->addSubview(green);
  EXPECT_EQ(layer->superlayer(), view()->layer());
  EXPECT_THAT(view()->layer()->sublayers(), ElementsAre(layer));
  layer->setFrame(CGRectMake(1, 2, 3, 4));
  layer->setFillsSuperlayer(true);
  EXPECT_EQ(layer->frame(), view()->bounds());
  resize(800, 450);
  EXPECT_EQ(layer->frame(), CGRectMake(0, 0, 800, 450));
  layer->addSublayer(layer);
  view()->layer()->addSublayer(nullptr);
  layer->addSublayer(view()->layer());
  EXPECT_THAT(layer->sublayers(), IsEmpty());
  layer->removeFromSuperlayer();
  layer->removeFromSuperlayer();
  EXPECT_EQ(layer->superlayer(), nullptr);

  auto holder = std::make_shared<UIView>();
  holder->layer()->addSublayer(layer);
  const auto orphan = holder->layer();
  holder.reset();
  EXPECT_EQ(orphan->frame(), CGRectZero) << "a view's layer outlives it as nothing";
  orphan->addSublayer(std::make_shared<CALayer>());
  EXPECT_EQ(orphan->sublayers().size(), 1u);
}

TEST_F(ViewTest, aViewHasOneSuperviewWhichHoldsIt) {
  view()->addSubview(red);
  red->addSubview(blue);
  const std::weak_ptr<UIView> watched = blue;
  green->addSubview(blue);
  EXPECT_THAT(red->subviews(), IsEmpty());
  EXPECT_EQ(blue->superview(), green);
  blue.reset();
  EXPECT_FALSE(watched.expired());
  green->addSubview(nullptr);
  watched.lock()->addSubview(green);
  green->addSubview(green);
  EXPECT_EQ(green->superview(), nullptr) << "no view ends up inside itself";
  green.reset();
  EXPECT_TRUE(watched.expired());

  EXPECT_TRUE(red->isDescendantOfView(view()));
  EXPECT_TRUE(red->isDescendantOfView(red));
  red->removeFromSuperview();
  red->removeFromSuperview();
  EXPECT_EQ(red->superview(), nullptr);
  EXPECT_THAT(view()->subviews(), IsEmpty());
}

TEST_F(ViewTest, hidingFadingAndClippingReachWhatIsInside) {
  view()->addSubview(red);
  red->addSubview(blue);
  EXPECT_EQ(at(125, 125), "0000ff");
  red->setClipsToBounds(true);
  EXPECT_EQ(at(125, 125), "000000");
  EXPECT_EQ(at(100, 100), "0000ff");
  red->setAlpha(0.5);
  EXPECT_THAT(at(20, 20), isAbout("7f0000"));
  red->setAlpha(7);
  EXPECT_EQ(red->alpha(), 1);
  red->setHidden(true);
  EXPECT_EQ(at(100, 100), "000000");
  EXPECT_FALSE(blue->isHidden()) << "its own flag";
  red->setHidden(false);
  EXPECT_EQ(at(100, 100), "0000ff");
  red->setBackgroundColor(UIColor::clearColor());
  EXPECT_EQ(at(20, 20), "000000");
  EXPECT_EQ(blue->convertRectToView(blue->bounds(), view()), CGRectMake(40, 40, 100, 100));
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
  view()->addSubview(red);
  EXPECT_THAT(at(220, 220), isAbout("7f7f00"));
  EXPECT_EQ(drawn->draws, 1) << "moving and fading draw nothing anew";

  drawn->setNeedsDisplay();
  drawn->setNeedsDisplay();
  snapshot();
  EXPECT_EQ(drawn->draws, 2);
  drawn->setHidden(true);
  drawn->setNeedsDisplay();
  snapshot();
  EXPECT_EQ(drawn->draws, 2) << "nothing is drawn for nobody";
  drawn->setHidden(false);
  snapshot();
  EXPECT_EQ(drawn->draws, 3);
  drawn->setFrame(CGRectMake(200, 200, 40, 50));
  EXPECT_EQ(at(230, 220), "000000");
  EXPECT_EQ(drawn->draws, 4) << "a new size is a new drawing";
  drawn->removeFromSuperview();
  view()->addSubview(drawn);
  EXPECT_THAT(at(210, 220), isAbout("7f7f00")) << "back in the tree it shows what it had";
  drawn->setFrame(CGRectMake(0, 0, 0, 50));
  snapshot();
  drawn->setFrame(CGRectMake(0, 0, 100000, 2));
  snapshot();
}

TEST_F(ViewTest, aHostsItemIsLentAPlaceAndGivenBack) {
  QQuickItem item;
  item.setSize({5, 5});
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

TEST_F(ViewTest, alphaIsAnimatedByTheRunLoopsTime) {
  view()->addSubview(red);
  std::vector<bool> finished;
  const auto note = [&](bool value) { finished.push_back(value); };
  UIView::animateWithDuration(
      std::chrono::seconds(1), [&] { red->setAlpha(0); }, note);
  EXPECT_EQ(red->alpha(), 0);
  EXPECT_EQ(red->opacity(), 1);
  run(std::chrono::milliseconds(500));
  EXPECT_NEAR(red->opacity(), 0.5, 0.1);
  EXPECT_THAT(finished, IsEmpty());
  run(std::chrono::milliseconds(600));
  EXPECT_EQ(red->opacity(), 0);
  EXPECT_THAT(finished, ElementsAre(true));

  UIView::animateWithDuration(
      std::chrono::seconds(1), [&] { red->setAlpha(1); }, note);
  run(std::chrono::milliseconds(500));
  red->setAlpha(0.25);
  run(std::chrono::seconds(1));
  EXPECT_EQ(red->opacity(), 0.25);
  EXPECT_THAT(finished, ElementsAre(true, false)) << "overtaken";

  UIView::animateWithDuration(
      std::chrono::seconds(1), [&] { red->setAlpha(1); }, note);
  red->removeFromSuperview();
  red.reset();
  run(std::chrono::seconds(2));
  EXPECT_THAT(finished, ElementsAre(true, false, false)) << "the view has gone";
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

}  // namespace
