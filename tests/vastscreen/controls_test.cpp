#include "vastscreen/SKVASTControls.h"

#include <QTest>

#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIProgressView.h"
#include "platform/uikit/UIToolbar.h"
#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

using Diary = std::vector<std::string>;

// A screen that notes what its controls want, and the presses that they leave.
struct Screen : UIViewController, SKVASTControlsTarget {
  explicit Screen(Diary& notes) : diary(notes) {}
  void pause() override { note("pause"), plays = false; }
  void resume() override { note("resume"), plays = true; }
  bool isPlaying() const override { return plays; }
  void info() override { note("info"); }
  void close() override { note("close"), controls = nullptr; }
  std::shared_ptr<UIView> view() override { return UIViewController::view(); }
  bool pressesBegan(const UIPress& press) override { return note("press " + std::to_string(press.type)); }
  bool note(const std::string& what) { return diary.push_back(what), true; }
  Diary& diary;
  bool plays = true;
  std::shared_ptr<SKVASTControls> controls;
};

class ControlsTest : public ScreenTest {
 protected:
  ControlsTest() {
    controller = screen;
    window.setRootViewController(screen);
    screen->controls = SKVASTControls::initWithVASTPlayer(screen);
  }
  SKVASTControls& controls() { return *screen->controls; }
  Diary after(std::initializer_list<UIPressType> presses) {
    for (const auto press : presses) window.sendPress(press);
    return std::exchange(diary, {});
  }

  Diary diary;
  std::shared_ptr<Screen> screen = std::make_shared<Screen>(diary);
};

TEST_F(ControlsTest, showForTwoSecondsAfterTheLastPressInTheBar) {
  controls().showControls();
  loop.advance(1900ms);
  window.sendPress(UIPressTypeRightArrow);
  loop.advance(1900ms);
  QTest::keyPress(&window, Qt::Key_Return);  // held down
  loop.advance(5s);
  QTest::keyRelease(&window, Qt::Key_Return);
  loop.advance(1900ms);
  EXPECT_TRUE(controls().isShowing());
  loop.advance(100ms);
  EXPECT_FALSE(controls().isShowing());
}

TEST_F(ControlsTest, haveTheRemoteWhileTheyShowAndMayGoFromInsideTheirButton) {
  const auto right = UIPressTypeRightArrow, select = UIPressTypeSelect;
  EXPECT_THAT(after({select}), ElementsAre("press 4")) << "hidden at first";
  controls().showControls();
  EXPECT_THAT(after({select, select, right, select}), ElementsAre("pause", "resume", "info"));
  EXPECT_THAT(after({UIPressTypePlayPause, UIPressTypeMenu}), ElementsAre("press 6", "press 5")) << "the screen's own";
  controls().hideControls();
  EXPECT_THAT(after({right}), ElementsAre("press 3"));
  controls().showControls();
  EXPECT_THAT(after({select}), ElementsAre("pause")) << "they begin anew at the first button";
  EXPECT_THAT(after({right, right, right, select, select}), ElementsAre("close", "press 4"));
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(ControlsTest, stayAwayFromTheEdgesAtEverySizeAndLieAboveEverything) {
  addView(CGRectMake(0, 0, 1920, 1080), UIColor::redColor());  // what came later lies below the bar all the same
  controls().showControls();
  for (const auto& [width, height] : {std::pair{1280, 720}, {1920, 1080}}) {
    resize(width, height);
    EXPECT_NE(colorAt(snapshot(), width / 2, int(0.93 * height)), "ff0000");
    const auto& bar = *controls().toolbar();
    const double unit = height / 1080.0;
    EXPECT_EQ(bar.frame(), CGRectMake(0.05 * width, 0.95 * height - 120 * unit, 0.9 * width, 120 * unit));
  }
}

TEST_F(ControlsTest, tellTheTimeInMinutesAndSeconds) {
  const auto said = [this](double played, double total) {
    controls().updateProgressBar(0, played, total);
    return *controls().playbackTime()->text() + " " +
           std::to_string(controls().progressView()->progress()).substr(0, 3);
  };
  EXPECT_EQ(said(65.9, 131.8), "01:05 / 02:11 0.5");
  EXPECT_EQ(said(NAN, NAN), "00:00 / 00:00 0.0");
  EXPECT_EQ(said(-3, 0), "00:00 / 00:00 0.0");
  EXPECT_EQ(said(INFINITY, 7200), "16666666:40 / 120:00 1.0");
}

}  // namespace
