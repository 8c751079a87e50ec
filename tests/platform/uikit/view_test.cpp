#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct ViewTest : ScreenTest {
  std::shared_ptr<UIView> red = std::make_shared<UIView>(), green = std::make_shared<UIView>(),
                          blue = std::make_shared<UIView>();
};

TEST_F(ViewTest, subviewsCoverEachOtherInTheirOrder) {
  const auto first = addView(CGRectMake(0, 0, 100, 100), UIColor::redColor());
  const auto last = addView(CGRectMake(0, 0, 100, 100), UIColor::greenColor());
  const auto seen = [this] { return colorAt(snapshot(), 50, 50); };
  EXPECT_EQ(seen(), "00ff00");
  view()->sendSubviewToBack(last);
  EXPECT_EQ(seen(), "ff0000");
  view()->addSubview(last);
  EXPECT_EQ(seen(), "00ff00");
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
  for (int time = 0; time < 2; ++time) red->removeFromSuperview();
  red.reset();
  EXPECT_EQ(orphan->frame(), CGRectZero) << "a view's layer outlives it as nothing";
}

TEST_F(ViewTest, aHostsItemIsLentAPlaceAndGivenBack) {
  auto item = std::make_unique<QQuickItem>();
  auto wrapped = UIView::wrap(item.get());
  EXPECT_EQ(UIView::wrap(item.get()), wrapped);
  EXPECT_EQ(UIView::wrap(red.get()), red);
  EXPECT_EQ(UIView::wrap(nullptr), nullptr);
  EXPECT_EQ(UIView::wrap(QQuickWindow().contentItem()), nullptr);
  view()->addSubview(wrapped);
  wrapped->setFrame(CGRectMake(10, 10, 300, 200));
  EXPECT_EQ(item->size(), QSizeF(300, 200));
  EXPECT_EQ(item->window(), &window);
  wrapped->removeFromSuperview();
  wrapped.reset();
  EXPECT_EQ(item->parentItem(), nullptr);
  wrapped = UIView::wrap(item.get());
  item.reset();
  wrapped->setFrame(CGRectMake(0, 0, 1, 1));
}

TEST_F(ViewTest, alphaIsAnimatedByTheRunLoopsTimeUntilItIsOvertaken) {
  view()->addSubview(red);
  std::vector<bool> finished;
  const auto fadeTo = [&](double alpha, RunLoop::Duration wait) {
    UIView::animateWithDuration(
        1s, [&] { red->setAlpha(alpha); }, [&](bool value) { finished.push_back(value); });
    EXPECT_EQ(red->alpha(), alpha);
    run(wait);
    return red->opacity();
  };
  EXPECT_NEAR(fadeTo(0, 500ms), 0.5, 0.1);
  EXPECT_THAT(finished, IsEmpty());
  run(600ms);
  fadeTo(1, 500ms);
  red->setAlpha(0.25);
  run(1s);
  EXPECT_EQ(red->opacity(), 0.25);
  fadeTo(1, 0s);
  red->removeFromSuperview();
  red.reset();
  run(2s);
  EXPECT_THAT(finished, ElementsAre(true, false, false)) << "done, overtaken, without its view";
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

}  // namespace
