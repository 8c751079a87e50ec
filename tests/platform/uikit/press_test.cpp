#include <QKeyEvent>

#include "platform/uikit/UIPressDelivery.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Diary = std::vector<std::string>;

// Notes presses and handles those of one type.
class NotesPresses : public UIView {
 public:
  NotesPresses(std::string name, Diary& diary, int handles = -1)
      : name_(std::move(name)), diary_(diary), handles_(handles) {
    setFrame(CGRectMake(0, 0, 100, 100));
  }
  bool pressesBegan(const UIPress& press) override {
    diary_.push_back(name_ + (press.isRepeat ? " again " : " down ") + std::to_string(press.type));
    return press.type == handles_;
  }
  bool pressesEnded(const UIPress& press) override {
    diary_.push_back(name_ + " up " + std::to_string(press.type));
    return press.type == handles_;
  }

 private:
  std::string name_;
  Diary& diary_;
  int handles_;
};

class PressTest : public ScreenTest {
 protected:
  std::shared_ptr<UITapGestureRecognizer> tap(std::vector<int> types, const std::string& name) {
    auto recognizer = std::make_shared<UITapGestureRecognizer>([this, name](UIGestureRecognizer& self) {
      diary.push_back(name + " tapped in state " + std::to_string(self.state()));
    });
    recognizer->setAllowedPressTypes(std::move(types));
    return recognizer;
  }
  void key(int code, QEvent::Type type = QEvent::KeyPress, bool repeats = false) {
    QKeyEvent event(type, code, Qt::NoModifier, {}, repeats);
    QCoreApplication::sendEvent(&window, &event);
    accepted = event.isAccepted();
  }
  Diary taken() { return std::exchange(diary, {}); }

  Diary diary;
  bool accepted = false;
  std::shared_ptr<NotesPresses> outer = std::make_shared<NotesPresses>("outer", diary, UIPressTypeLeftArrow);
  std::shared_ptr<NotesPresses> inner = std::make_shared<NotesPresses>("inner", diary, UIPressTypeUpArrow);

  PressTest() {
    view()->addSubview(outer);
    outer->addSubview(inner);
    inner->becomeFirstResponder();
  }
};

TEST_F(PressTest, goesFromTheFirstResponderOutwardsUntilSomebodyHandlesIt) {
  EXPECT_TRUE(inner->isFirstResponder());
  EXPECT_TRUE(window.sendPress(UIPressTypeUpArrow));
  EXPECT_THAT(taken(), ElementsAre("inner down 0", "inner up 0"));
  EXPECT_TRUE(window.sendPress(UIPressTypeLeftArrow));
  EXPECT_THAT(taken(), ElementsAre("inner down 2", "outer down 2", "inner up 2", "outer up 2"));
  EXPECT_FALSE(window.sendPress(UIPressTypeSelect));
  outer->becomeFirstResponder();
  EXPECT_FALSE(inner->isFirstResponder());
  taken();
  window.sendPress(UIPressTypeUpArrow);
  EXPECT_THAT(taken(), ElementsAre("outer down 0", "outer up 0"));
}

TEST_F(PressTest, recognizersComeBeforeTheirViewAndAfterWhatIsInsideIt) {
  inner->addGestureRecognizer(tap({UIPressTypeUpArrow, UIPressTypeMenu}, "inner"));
  outer->addGestureRecognizer(tap({UIPressTypeMenu}, "outer"));
  view()->addGestureRecognizer(tap({UIPressTypeMenu, UIPressTypeSelect}, "view"));
  outer->addGestureRecognizer(tap({}, "without types"));
  EXPECT_TRUE(window.sendPress(UIPressTypeUpArrow));
  EXPECT_TRUE(window.sendPress(UIPressTypeMenu));
  EXPECT_THAT(taken(), ElementsAre("inner tapped in state 3", "inner tapped in state 3"));
  EXPECT_EQ(inner->gestureRecognizers()[0]->state(), UIGestureRecognizerStatePossible);

  inner->gestureRecognizers()[0]->setEnabled(false);
  window.sendPress(UIPressTypeMenu);
  EXPECT_THAT(taken(), ElementsAre("inner down 5", "inner up 5", "outer tapped in state 3"));
  window.sendPress(UIPressTypeSelect);
  EXPECT_THAT(taken(), testing::Contains("view tapped in state 3"));
}

// How a host of the player view puts its own handler of Menu in the place of the one that is there.
TEST_F(PressTest, aListOfRecognizersCanBeReadChangedAndPutBack) {
  view()->setGestureRecognizers({tap({}, "first"), tap({UIPressTypeMenu}, "system"), nullptr});
  auto list = view()->gestureRecognizers();
  ASSERT_EQ(list.size(), 2u);
  const auto found = std::find_if(list.begin(), list.end(), [](const auto& recognizer) {
    return std::dynamic_pointer_cast<UITapGestureRecognizer>(recognizer) && !recognizer->allowedPressTypes().empty() &&
           recognizer->allowedPressTypes()[0] == 5;
  });
  list.erase(found);
  list.push_back(tap({UIPressTypeMenu}, "own"));
  view()->setGestureRecognizers(list);
  window.sendPress(UIPressTypeMenu);
  EXPECT_THAT(taken(), testing::Contains("own tapped in state 3"));
  EXPECT_THAT(taken(), testing::Not(testing::Contains("system tapped in state 3")));
}

TEST_F(PressTest, aRecognizerMayTakeEverythingAwayWhenItTaps) {
  auto recognizer = std::make_shared<UITapGestureRecognizer>([this](UIGestureRecognizer&) {
    outer->setGestureRecognizers({});
    outer->removeFromSuperview();
    inner.reset();
    outer.reset();
  });
  recognizer->setAllowedPressTypes({UIPressTypePlayPause});
  inner->removeFromSuperview();
  outer->addSubview(inner);
  outer->addGestureRecognizer(recognizer);
  outer->becomeFirstResponder();
  const std::weak_ptr<UIGestureRecognizer> watched = recognizer;
  recognizer.reset();
  key(Qt::Key_Space);
  key(Qt::Key_Space, QEvent::KeyRelease);
  EXPECT_TRUE(accepted);
  EXPECT_EQ(outer, nullptr);
  EXPECT_TRUE(watched.expired());
}

TEST_F(PressTest, keysOfRemotesAndKeyboardsBecomePresses) {
  const std::vector<std::pair<int, int>> known{
      {Qt::Key_Up, 0},        {Qt::Key_Down, 1},       {Qt::Key_Left, 2},
      {Qt::Key_Right, 3},     {Qt::Key_Return, 4},     {Qt::Key_Enter, 4},
      {Qt::Key_Select, 4},    {Qt::Key_Escape, 5},     {Qt::Key_Backspace, 5},
      {Qt::Key_Back, 5},      {Qt::Key_Menu, 5},       {Qt::Key_Space, 6},
      {Qt::Key_MediaPlay, 6}, {Qt::Key_MediaPause, 6}, {Qt::Key_MediaTogglePlayPause, 6}};
  for (const auto& [code, type] : known) EXPECT_EQ(UIPressTypeForKey(code), UIPressType(type)) << code;
  EXPECT_EQ(UIPressTypeForKey(Qt::Key_A), std::nullopt);

  key(Qt::Key_Up);
  EXPECT_TRUE(accepted);
  key(Qt::Key_Up, QEvent::KeyRelease, true);
  key(Qt::Key_Up, QEvent::KeyPress, true);
  key(Qt::Key_Up, QEvent::KeyRelease);
  EXPECT_THAT(taken(), ElementsAre("inner down 0", "inner again 0", "inner up 0")) << "held: no letting go in between";
  key(Qt::Key_A);
  EXPECT_FALSE(accepted);
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(PressTest, holdingAButtonTapsOnce) {
  inner->addGestureRecognizer(tap({UIPressTypeSelect}, "inner"));
  key(Qt::Key_Return);
  for (int i = 0; i < 5; ++i) key(Qt::Key_Return, QEvent::KeyPress, true);
  EXPECT_THAT(diary, IsEmpty());
  key(Qt::Key_Return, QEvent::KeyRelease);
  EXPECT_THAT(taken(), ElementsAre("inner tapped in state 3"));
  key(Qt::Key_Return, QEvent::KeyRelease);
  EXPECT_THAT(taken(), testing::Not(testing::Contains("inner tapped in state 3"))) << "up without down";
}

TEST_F(PressTest, whatIsHiddenHasNoPresses) {
  outer->setHidden(true);
  EXPECT_FALSE(inner->becomeFirstResponder());
  window.sendPress(UIPressTypeUpArrow);
  EXPECT_THAT(taken(), IsEmpty());
  EXPECT_TRUE(view()->isFirstResponder()) << "the topmost view is there when the focus is not";
}

TEST_F(PressTest, inAWindowOfTheHostsOwnKeysComeFromQt) {
  QQuickWindow other;
  outer->removeFromSuperview();
  outer->setParentItem(other.contentItem());
  outer->addGestureRecognizer(tap({UIPressTypeMenu}, "outer"));
  ASSERT_TRUE(inner->becomeFirstResponder());
  EXPECT_TRUE(UIPressSend(other, UIPressTypeMenu));
  EXPECT_THAT(taken(), ElementsAre("inner down 5", "inner up 5", "outer tapped in state 3"));
  for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, Qt::Key_Up, Qt::NoModifier);
    QCoreApplication::sendEvent(inner.get(), &event);
    EXPECT_TRUE(event.isAccepted());
    QKeyEvent unknown(type, Qt::Key_F5, Qt::NoModifier);
    QCoreApplication::sendEvent(inner.get(), &unknown);
    EXPECT_FALSE(unknown.isAccepted());
  }
  EXPECT_THAT(taken(), ElementsAre("inner down 0", "inner up 0"));
  outer->removeFromSuperview();
}

}  // namespace
