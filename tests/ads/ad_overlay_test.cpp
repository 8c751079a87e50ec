// What lies over the programme during an ad break, as the viewer sees and uses it.
#include <QPainter>

#include "ads/YMRAdContainerView.h"
#include "ads/YMRAdSchedule.h"
#include "tests/platform/avkit/PlayerScreenTest.h"
#include "ui/Autolayout.h"

namespace {

// A frame of an ad: stripes finer than letters, which text must be read on.
class Stripes : public UIView {
 public:
  Stripes() { setDrawsContent(true); }
  void setColors(QColor ground, QColor stripe) {
    ground_ = ground;
    stripe_ = stripe;
    setNeedsDisplay();
  }

 protected:
  void drawRect(QPainter& painter, const CGRect& rect) override {
    painter.fillRect(QRectF(0, 0, rect.size.width, rect.size.height), ground_);
    for (int x = 0; x < rect.size.width; x += 9) painter.fillRect(QRectF(x, 0, 4, rect.size.height), stripe_);
  }

 private:
  QColor ground_ = Qt::black;
  QColor stripe_ = Qt::black;
};

class AdOverlayTest : public PlayerScreenTest {
 protected:
  AdOverlayTest() {
    play(100);
    load("Your programme continues after the break");
    overlay->confWithAdSchedule(schedule);
    addSubViewWithAutolayout(overlay->adPlayerView(), frame);
    addSubViewWithAutolayout(screen->view(), overlay);
  }

  void load(const std::string& text) {
    overlay->timeRemainLabel()->setText(text);
    overlay->loadingIndicator()->startAnimating();
  }
  void tick(const std::string& text) {
    overlay->timeRemainLabel()->setText(text);
    overlay->loadingIndicator()->stopAnimating();
  }
  QRect ink(const QImage& picture) { return inkOf(picture, picture.rect()); }

  std::shared_ptr<YMRAdSchedule> schedule = std::make_shared<YMRAdSchedule>();
  std::shared_ptr<YMRAdContainerView> overlay = YMRAdContainerView::make();
  std::shared_ptr<Stripes> frame = std::make_shared<Stripes>();
};

TEST_F(AdOverlayTest, showsTheWheelOverTheTextAndThenTheCountdownAtTheEdge) {
  for (const double scale : {1.0, 3.0}) {
    SCOPED_TRACE(scale);
    const QSize size = QSize(1280, 720) * scale;
    resize(size.width(), size.height());
    frame->setColors(Qt::black, Qt::black);
    load("Your programme continues after the break");
    const QImage loading = snapshot();
    EXPECT_NEAR(inkOf(loading, QRect(QPoint(), size / 1.7)).top(), size.height() / 2 - 42 * scale, 3 * scale);
    EXPECT_NEAR(ink(loading).center().x(), size.width() / 2, 2);
    EXPECT_GT(ink(loading).bottom(), size.height() * 0.62);

    tick("Ad 1 of 3\nYour programme in 14 s");
    const QRect text = ink(snapshot());
    EXPECT_EQ(overlay->adPlayerView()->bounds(), view()->bounds()) << "an ad fills the screen";
    EXPECT_NEAR(text.width(), 242 * scale, 4 * scale) << "as large a part of any screen";
    EXPECT_NEAR(text.height(), 50 * scale, 4 * scale);
    EXPECT_NEAR(text.right(), size.width() * 0.95 - 16 * scale, 3 * scale);
    EXPECT_GT(text.top(), size.height() * 0.05);

    for (const auto& [ground, stripe] : {std::pair("#f4f1e8", "#ffffff"), std::pair("#101418", "#405060")}) {
      frame->setColors(ground, stripe);
      const QImage picture = snapshot();
      int letters = 0, brightest = 0;
      for (int x = text.left(); x <= text.right(); ++x) {
        for (int y = text.top(); y <= text.bottom(); ++y) letters += qGray(picture.pixel(x, y)) > 235;
        brightest = std::max(brightest, qGray(picture.pixel(x, text.top() - 4)));
      }
      EXPECT_GT(letters, 600 * scale * scale) << ground;
      EXPECT_LT(brightest, 120) << "the ground that they stand on: " << ground;
    }
  }
}

TEST_F(AdOverlayTest, leavesTheLastPictureAloneUntilTheAdIsThereOrKeepsTheViewerWaiting) {
  overlay->removeFromSuperview();
  const QImage programme = snapshot();
  overlay->awaitPicture();
  addSubViewWithAutolayout(screen->view(), overlay);
  run(400ms);
  EXPECT_EQ(snapshot(), programme);
  overlay->pictureDidArrive();
  EXPECT_EQ(ink(snapshot()), QRect()) << "neither wheel nor text over the ad's beginning";
  run(400ms);
  EXPECT_NE(ink(snapshot()), QRect()) << "unless it does not go on";

  overlay->awaitPicture();
  EXPECT_EQ(snapshot(), programme);
  run(1s);
  EXPECT_NE(ink(snapshot()), QRect()) << "an ad that loads slowly";
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "000000");
  overlay->awaitPicture();
  overlay->endWaiting();
  EXPECT_EQ(overlay->alpha(), 1);
}

}  // namespace
