#include "platform/uikit/values/UIScreen.h"
#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Diary = std::vector<std::string>;

class NotesAppearing : public UIViewController {
 public:
  NotesAppearing(std::string name, Diary& diary, const UIColor& color) : name_(std::move(name)), diary_(diary) {
    view()->setBackgroundColor(color);
  }
  std::function<void()> onWillAppear;

 protected:
  void viewDidLoad() override { diary_.push_back(name_ + " loaded"); }
  void viewWillAppear(bool) override {
    diary_.push_back(name_ + " will appear");
    if (onWillAppear) onWillAppear();
  }
  void viewDidAppear(bool) override { diary_.push_back(name_ + " did appear"); }
  void viewWillDisappear(bool) override { diary_.push_back(name_ + " will disappear"); }
  void viewDidDisappear(bool) override { diary_.push_back(name_ + " did disappear"); }
  bool pressesBegan(const UIPress& press) override {
    diary_.push_back(name_ + " pressed");
    return press.type == UIPressTypeSelect;
  }

 private:
  std::string name_;
  Diary& diary_;
};

class PresentationTest : public ScreenTest {
 protected:
  using Controller = std::shared_ptr<NotesAppearing>;

  static Controller make(const std::string& name, Diary& diary, const UIColor& color) {
    auto made = std::make_shared<NotesAppearing>(name, diary, color);
    diary.clear();
    return made;
  }
  UIViewController::Completion noted(const std::string& text) {
    return [this, text] { diary.push_back(text); };
  }
  Diary taken() { return std::exchange(diary, {}); }
  std::string centre() { return colorAt(snapshot(), 320, 180); }

  Diary diary;
  Controller red = make("red", diary, UIColor::redColor());
  Controller green = make("green", diary, UIColor::greenColor());
};

TEST_F(PresentationTest, fadesInOverTheWholeWindowAndFollowsItsSize) {
  view()->setBackgroundColor(UIColor::blueColor());
  controller->presentViewController(red, true, noted("presented"));
  EXPECT_EQ(controller->presentedViewController(), red);
  EXPECT_EQ(red->presentingViewController(), controller);
  EXPECT_THAT(taken(), ElementsAre("red will appear"));
  EXPECT_EQ(centre(), "0000ff");
  run(125ms);
  const auto between = snapshot().pixelColor(320, 180);
  EXPECT_GT(between.red(), 50);
  EXPECT_GT(between.blue(), 50);
  run(200ms);
  EXPECT_EQ(centre(), "ff0000");
  EXPECT_THAT(taken(), ElementsAre("red did appear", "presented"));

  resize(1280, 720);
  EXPECT_EQ(red->view()->frame(), CGRectMake(0, 0, 1280, 720));
  EXPECT_EQ(UIScreen::mainScreen().bounds(), CGRectMake(0, 0, 1280, 720));

  red->dismissViewControllerAnimated(true, noted("dismissed"));
  EXPECT_EQ(controller->presentedViewController(), nullptr);
  EXPECT_THAT(taken(), ElementsAre("red will disappear"));
  run(300ms);
  EXPECT_THAT(taken(), ElementsAre("red did disappear", "dismissed"));
  EXPECT_EQ(centre(), "0000ff");
  EXPECT_EQ(red->view()->window(), nullptr);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(PresentationTest, withoutAnimationItIsThereAtOnceAndSaysSoLater) {
  controller->presentViewController(red, false, noted("presented"));
  EXPECT_EQ(centre(), "ff0000");
  EXPECT_THAT(taken(), ElementsAre("red will appear"));
  run(1ms);
  EXPECT_THAT(taken(), ElementsAre("red did appear", "presented"));
  controller->dismissViewControllerAnimated(false, noted("dismissed"));
  run(1ms);
  EXPECT_THAT(taken(), ElementsAre("red will disappear", "red did disappear", "dismissed"));
  EXPECT_EQ(centre(), "000000");
}

TEST_F(PresentationTest, whatMakesNoSenseIsIgnored) {
  controller->dismissViewControllerAnimated(true, noted("never"));
  controller->presentViewController(nullptr, true, noted("never"));
  controller->presentViewController(controller, true, noted("never"));
  std::make_shared<UIViewController>()->presentViewController(red, true, noted("never"));
  EXPECT_THAT(taken(), IsEmpty());
  controller->presentViewController(red, true, noted("presented"));
  controller->presentViewController(red, true, noted("never"));
  controller->presentViewController(green, true, noted("never"));
  green->presentViewController(red, true, noted("never"));
  run(1s);
  EXPECT_THAT(taken(), ElementsAre("red will appear", "red did appear", "presented"));
  red->dismissViewControllerAnimated(true, noted("dismissed"));
  red->dismissViewControllerAnimated(true, noted("never"));
  controller->dismissViewControllerAnimated(true, noted("never"));
  run(1s);
  EXPECT_THAT(taken(), ElementsAre("red will disappear", "red did disappear", "dismissed"));
}

TEST_F(PresentationTest, dismissedWhileItFadesInItGoes) {
  controller->presentViewController(red, true, noted("presented"));
  run(100ms);
  controller->dismissViewControllerAnimated(true, noted("dismissed"));
  run(1s);
  EXPECT_THAT(taken(),
              ElementsAre("red will appear", "red will disappear", "presented", "red did disappear", "dismissed"));
  EXPECT_EQ(centre(), "000000");
  EXPECT_EQ(red->view()->alpha(), 1);
}

// A host that starts the next programme from within the end of the last.
TEST_F(PresentationTest, theNextIsPresentedWhileTheLastFadesOut) {
  controller->presentViewController(red, false);
  run(1ms);
  red->dismissViewControllerAnimated(true, noted("red gone"));
  controller->presentViewController(green, true, noted("green there"));
  taken();
  run(1s);
  EXPECT_THAT(taken(),
              testing::UnorderedElementsAre("red did disappear", "red gone", "green did appear", "green there"));
  EXPECT_EQ(centre(), "00ff00");

  green->dismissViewControllerAnimated(true, noted("green gone"));
  run(50ms);
  controller->presentViewController(green, true, noted("green back"));
  taken();
  run(1s);
  EXPECT_THAT(taken(), ElementsAre("green gone", "green did appear", "green back")) << "the same one again";
  EXPECT_EQ(centre(), "00ff00");
}

TEST_F(PresentationTest, aControllerMayDismissItselfBeforeItHasAppeared) {
  red->onWillAppear = [&] { red->dismissViewControllerAnimated(true, noted("dismissed")); };
  controller->presentViewController(red, true, noted("presented"));
  run(1s);
  EXPECT_EQ(controller->presentedViewController(), nullptr);
  EXPECT_EQ(red->view()->window(), nullptr);
  EXPECT_EQ(std::count(diary.begin(), diary.end(), "dismissed"), 1);
  EXPECT_EQ(std::count(diary.begin(), diary.end(), "presented"), 1);
}

TEST_F(PresentationTest, dismissingTakesEverythingAbove) {
  controller->presentViewController(red, false);
  red->presentViewController(green, false);
  run(1ms);
  EXPECT_EQ(centre(), "00ff00");
  taken();
  controller->dismissViewControllerAnimated(true, noted("dismissed"));
  run(1s);
  EXPECT_THAT(diary, testing::UnorderedElementsAre("green will disappear", "red will disappear", "green did disappear",
                                                   "red did disappear", "dismissed"));
  EXPECT_EQ(centre(), "000000");
  EXPECT_EQ(red->presentedViewController(), nullptr);
  EXPECT_EQ(green->presentingViewController(), nullptr);
}

TEST_F(PresentationTest, thePressesGoToThePresentedOneAndBack) {
  auto below = make("below", diary, UIColor::blueColor());
  window.setRootViewController(below);
  auto focused = std::make_shared<UIView>(CGRectMake(0, 0, 10, 10));
  below->view()->addSubview(focused);
  focused->becomeFirstResponder();
  taken();
  EXPECT_TRUE(window.sendPress(UIPressTypeSelect));
  EXPECT_THAT(taken(), ElementsAre("below pressed"));

  below->presentViewController(red, true);
  taken();
  window.sendPress(UIPressTypeSelect);
  EXPECT_THAT(taken(), ElementsAre("red pressed")) << "from the start of the fade";
  window.sendPress(UIPressTypeMenu);
  EXPECT_THAT(taken(), ElementsAre("red pressed")) << "never through to what is covered";
  run(1s);
  red->dismissViewControllerAnimated(true);
  taken();
  EXPECT_TRUE(focused->isFirstResponder());
  window.sendPress(UIPressTypeSelect);
  EXPECT_THAT(taken(), ElementsAre("below pressed"));
}

TEST_F(PresentationTest, nothingIsLeftOfAControllerThatIsLetGo) {
  const std::weak_ptr<UIViewController> watched = red;
  const std::weak_ptr<UIView> watchedView = red->view();
  controller->presentViewController(red, true, noted("presented"));
  red.reset();
  run(1s);
  EXPECT_FALSE(watched.expired()) << "held by the one that presents it";
  controller->dismissViewControllerAnimated(true);
  run(1s);
  EXPECT_TRUE(watched.expired());
  EXPECT_TRUE(watchedView.expired());

  controller->presentViewController(green, true);
  window.setRootViewController(nullptr);
  controller.reset();
  green.reset();
  run(1s);
  EXPECT_EQ(centre(), "000000");
}

TEST_F(PresentationTest, aWindowThatGoesFirstHurtsNobody) {
  auto other = std::make_unique<UIWindow>(CGSize{320, 180}, UIGraphics::software);
  auto root = std::make_shared<UIViewController>();
  other->setRootViewController(root);
  root->presentViewController(red, true, noted("presented"));
  other.reset();
  run(1s);
  root->dismissViewControllerAnimated(true, noted("dismissed"));
  run(1s);
  EXPECT_THAT(diary, testing::IsSupersetOf({"presented", "dismissed"}));
}

}  // namespace
