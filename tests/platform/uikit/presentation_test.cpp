#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::UnorderedElementsAre;

namespace {

using Diary = std::vector<std::string>;

struct NotesAppearing : UIViewController {
  NotesAppearing(const std::string& name, Diary& diary, const UIColor& color)
      : note([name, &diary](const char* what) { diary.push_back(name + what); }) {
    view()->setBackgroundColor(color);
  }
  void viewWillAppear(bool) override {
    note(" will appear");
    if (onWillAppear) onWillAppear();
  }
  void viewDidAppear(bool) override { note(" did appear"); }
  void viewWillDisappear(bool) override { note(" will disappear"); }
  void viewDidDisappear(bool) override { note(" did disappear"); }
  bool pressesBegan(const UIPress&) override { return note(" pressed"), false; }

  const std::function<void(const char*)> note;
  std::function<void()> onWillAppear;
};

struct PresentationTest : ScreenTest {
  using Controller = std::shared_ptr<NotesAppearing>;

  ~PresentationTest() override { window.setRootViewController(nullptr); }  // which is noted too

  UIViewController::Completion noted(const std::string& text) {
    return [this, text] { diary.push_back(text); };
  }
  // What was noted since the last time, after `duration`.
  Diary notes(RunLoop::Duration duration = {}) {
    if (duration.count()) run(duration);
    return std::exchange(diary, {});
  }
  Diary after(UIPressType press) {
    notes();
    window.sendPress(press);
    return notes();
  }
  std::string centre() { return colorAt(snapshot(), 320, 180); }

  Diary diary;
  Controller red = std::make_shared<NotesAppearing>("red", diary, UIColor::redColor());
  Controller green = std::make_shared<NotesAppearing>("green", diary, UIColor::greenColor());
};

TEST_F(PresentationTest, fadesInOverTheWholeWindowFollowsItsSizeAndFadesOut) {
  view()->setBackgroundColor(UIColor::blueColor());
  controller->presentViewController(red, true, noted("presented"));
  EXPECT_EQ(controller->presentedViewController(), red);
  EXPECT_EQ(red->presentingViewController(), controller);
  EXPECT_EQ(centre(), "0000ff");
  EXPECT_THAT(notes(125ms), ElementsAre("red will appear"));
  EXPECT_GT(std::min(snapshot().pixelColor(320, 180).red(), snapshot().pixelColor(320, 180).blue()), 50);
  EXPECT_THAT(notes(200ms), ElementsAre("red did appear", "presented"));
  EXPECT_EQ(centre(), "ff0000");
  resize(1280, 720);
  EXPECT_EQ(red->view()->frame(), CGRectMake(0, 0, 1280, 720));

  red->dismissViewControllerAnimated(true, noted("dismissed"));
  EXPECT_EQ(controller->presentedViewController(), nullptr);
  EXPECT_THAT(notes(), ElementsAre("red will disappear"));
  EXPECT_THAT(notes(300ms), ElementsAre("red did disappear", "dismissed"));
  EXPECT_EQ(centre(), "0000ff");
  EXPECT_EQ(red->view()->window(), nullptr);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(PresentationTest, withoutAnimationItIsThereAtOnceSaysSoLaterAndTakesEverythingAboveAlong) {
  controller->presentViewController(red, false, noted("presented"));
  EXPECT_EQ(centre(), "ff0000");
  for (const auto& [host, guest] : {std::pair<Controller, Controller>(green, red), {red, red}, {red, nullptr}}) {
    host->presentViewController(guest, true, noted("never"));
  }
  controller->presentViewController(green, true, noted("never"));
  EXPECT_THAT(notes(), ElementsAre("red will appear"));
  EXPECT_THAT(notes(1ms), ElementsAre("red did appear", "presented"));
  red->presentViewController(green, false);
  notes(1ms);
  EXPECT_EQ(centre(), "00ff00");
  controller->dismissViewControllerAnimated(false, noted("dismissed"));
  EXPECT_EQ(centre(), "000000");
  EXPECT_THAT(notes(1ms), UnorderedElementsAre("green will disappear", "red will disappear", "green did disappear",
                                               "red did disappear", "dismissed"));
  for (const auto& gone : {red, green}) gone->dismissViewControllerAnimated(true, noted("never"));
  EXPECT_THAT(notes(1s), ElementsAre());
}

TEST_F(PresentationTest, mayBeDismissedBeforeItHasAppearedAndTheNextPresentedWhileItFadesOut) {
  controller->presentViewController(red, true, noted("presented"));
  run(100ms);
  controller->dismissViewControllerAnimated(true, noted("dismissed"));
  EXPECT_THAT(notes(1s),
              ElementsAre("red will appear", "red will disappear", "presented", "red did disappear", "dismissed"));
  EXPECT_EQ(red->view()->alpha(), 1);
  red->onWillAppear = [&] { red->dismissViewControllerAnimated(true, noted("dismissed")); };
  controller->presentViewController(red, true, noted("presented"));
  EXPECT_THAT(notes(1s), IsSupersetOf({"presented", "dismissed"}));
  EXPECT_EQ(red->view()->window(), nullptr);

  controller->presentViewController(green, true, noted("green there"));
  run(1s);
  green->dismissViewControllerAnimated(true, noted("green gone"));
  run(50ms);
  controller->presentViewController(green, true, noted("green back"));
  notes();
  EXPECT_THAT(notes(1s), ElementsAre("green gone", "green did appear", "green back")) << "the same one again";
  EXPECT_EQ(centre(), "00ff00");
}

TEST_F(PresentationTest, thePressesGoToThePresentedOneAndBack) {
  window.setRootViewController(green);
  auto focused = std::make_shared<UIView>(CGRectMake(0, 0, 10, 10));
  green->view()->addSubview(focused);
  focused->becomeFirstResponder();
  EXPECT_THAT(after(UIPressTypeSelect), ElementsAre("green pressed"));
  green->presentViewController(red, true);
  EXPECT_THAT(after(UIPressTypeSelect), ElementsAre("red pressed")) << "from the start of the fade, and never through";
  run(1s);
  red->dismissViewControllerAnimated(true);
  EXPECT_TRUE(focused->isFirstResponder());
  EXPECT_THAT(after(UIPressTypeSelect), ElementsAre("green pressed"));
}

TEST_F(PresentationTest, endsFromTheTopDownWhenTheRootIsReplacedOrTheWindowGoes) {
  const auto presentOver = [this](UIViewController& presenting, RunLoop::Duration wait) {
    presenting.presentViewController(red, true);
    red->presentViewController(green, true);
    notes(wait);
  };
  presentOver(*controller, 100ms);
  window.setRootViewController(std::make_shared<UIViewController>());
  EXPECT_THAT(notes(), ElementsAre("green will disappear", "red will disappear"));
  EXPECT_THAT(notes(1s), ElementsAre("green did disappear", "red did disappear")) << "and neither has appeared";

  auto own = std::make_unique<UIWindow>(CGSize{320, 180}, UIGraphics::software);
  auto hosts = std::make_unique<QQuickWindow>();
  own->setRootViewController(controller);
  const auto inHosts = UIViewControllerInWindow(*hosts);
  for (const auto& end : {std::function<void()>([&] { presentOver(*controller, 1s), own.reset(); }),
                          std::function<void()>([&] { presentOver(*inHosts, 1s), hosts.reset(); })}) {
    end();
    EXPECT_THAT(notes(1s),
                ElementsAre("green will disappear", "red will disappear", "green did disappear", "red did disappear"));
    EXPECT_EQ(red->presentingViewController(), nullptr);
  }
}

}  // namespace
