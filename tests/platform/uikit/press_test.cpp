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
  NotesPresses(std::string name, Diary& diary, int handles) : name_(std::move(name)), diary_(diary), handles_(handles) {
    setFrame(CGRectMake(0, 0, 100, 100));
  }
  bool pressesBegan(const UIPress& press) override { return note(press.isRepeat ? " again " : " down ", press); }
  void pressesEnded(const UIPress& press) override { note(" up ", press); }
  void pressesCancelled(const UIPress& press) override { note(" cancelled ", press); }

 private:
  bool note(const char* what, const UIPress& press) {
    diary_.push_back(name_ + what + std::to_string(press.type));
    return press.type == handles_;
  }
  std::string name_;
  Diary& diary_;
  int handles_;
};

class PressTest : public ScreenTest {
 protected:
  PressTest() {
    view()->addSubview(outer);
    outer->addSubview(inner);
    inner->becomeFirstResponder();
  }
  std::shared_ptr<UITapGestureRecognizer> tap(std::vector<int> types, const std::string& name) {
    auto recognizer = std::make_shared<UITapGestureRecognizer>([this, name](UIGestureRecognizer& self) {
      EXPECT_EQ(self.state(), UIGestureRecognizerStateEnded);
      diary.push_back(name + " tapped");
    });
    recognizer->setAllowedPressTypes(std::move(types));
    return recognizer;
  }
  // Whether somebody took it.
  bool key(int code, QEvent::Type type = QEvent::KeyPress, bool repeats = false, QObject* to = nullptr) {
    QKeyEvent event(type, code, Qt::NoModifier, {}, repeats);
    QCoreApplication::sendEvent(to ? to : &window, &event);
    return event.isAccepted();
  }
  Diary taken() { return std::exchange(diary, {}); }
  Diary after(UIPressType type) {
    window.sendPress(type);
    return taken();
  }

  Diary diary;
  std::shared_ptr<NotesPresses> outer = std::make_shared<NotesPresses>("outer", diary, UIPressTypeLeftArrow);
  std::shared_ptr<NotesPresses> inner = std::make_shared<NotesPresses>("inner", diary, UIPressTypeUpArrow);
};

TEST_F(PressTest, goesFromTheFirstResponderOutwardsUntilSomebodyHandlesIt) {
  EXPECT_THAT(after(UIPressTypeUpArrow), ElementsAre("inner down 0", "inner up 0"));
  EXPECT_THAT(after(UIPressTypeLeftArrow), ElementsAre("inner down 2", "outer down 2", "outer up 2"));
  EXPECT_FALSE(window.sendPress(UIPressTypeSelect));
  EXPECT_TRUE(window.sendPress(UIPressTypeLeftArrow));
  taken();
  outer->becomeFirstResponder();
  EXPECT_FALSE(inner->isFirstResponder());
  EXPECT_THAT(after(UIPressTypeUpArrow), ElementsAre("outer down 0"));
  outer->setHidden(true);
  EXPECT_FALSE(inner->becomeFirstResponder());
  EXPECT_THAT(after(UIPressTypeUpArrow), IsEmpty());
  EXPECT_TRUE(view()->isFirstResponder()) << "the topmost view is there when the focus is not";
}

TEST_F(PressTest, recognizersComeBeforeTheirViewAndAfterWhatIsInsideIt) {
  inner->addGestureRecognizer(tap({UIPressTypeUpArrow, UIPressTypeMenu}, "inner"));
  outer->setGestureRecognizers({nullptr, tap({}, "without types"), tap({UIPressTypeMenu}, "outer")});
  view()->addGestureRecognizer(tap({UIPressTypeMenu, UIPressTypeRightArrow}, "view"));
  EXPECT_THAT(after(UIPressTypeUpArrow), ElementsAre("inner tapped"));
  EXPECT_THAT(after(UIPressTypeMenu), ElementsAre("inner tapped"));
  inner->setGestureRecognizers({});
  EXPECT_THAT(after(UIPressTypeMenu), ElementsAre("inner down 5", "outer tapped"));
  ASSERT_EQ(outer->gestureRecognizers().size(), 2u);
  outer->setGestureRecognizers({outer->gestureRecognizers()[0]});
  EXPECT_THAT(after(UIPressTypeMenu), testing::Contains("view tapped"));
}

TEST_F(PressTest, aRecognizerMayTakeEverythingAwayWhenItTaps) {
  auto recognizer = std::make_shared<UITapGestureRecognizer>([this](UIGestureRecognizer&) {
    outer->setGestureRecognizers({});
    outer->removeFromSuperview();
    inner.reset();
    outer.reset();
  });
  recognizer->setAllowedPressTypes({UIPressTypePlayPause});
  outer->addGestureRecognizer(recognizer);
  const std::weak_ptr<UIGestureRecognizer> watched = std::exchange(recognizer, nullptr);
  EXPECT_TRUE(window.sendPress(UIPressTypePlayPause));
  EXPECT_TRUE(watched.expired());
}

TEST_F(PressTest, keysOfRemotesAndKeyboardsBecomePresses) {
  inner->addGestureRecognizer(tap({UIPressTypeSelect}, "inner"));
  for (const int code : {Qt::Key_Up, Qt::Key_Return}) {
    EXPECT_TRUE(key(code));
    key(code, QEvent::KeyRelease, true);
    key(code, QEvent::KeyPress, true);
    key(code, QEvent::KeyRelease);
  }
  EXPECT_THAT(taken(), ElementsAre("inner down 0", "inner again 0", "inner up 0", "inner tapped"))
      << "held: no letting go in between, and one tap";
  key(Qt::Key_Return, QEvent::KeyRelease);
  EXPECT_THAT(taken(), testing::Not(testing::Contains("inner tapped"))) << "up without down";
  for (const int code : {Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_Back}) key(code);
  EXPECT_THAT(taken(), ElementsAre("inner down 5", "outer down 5", "inner down 5", "outer down 5", "inner down 5",
                                   "outer down 5"));
  EXPECT_FALSE(key(Qt::Key_A));
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(PressTest, endsWhereItBeganOrIsCancelledThere) {
  inner->addGestureRecognizer(tap({UIPressTypeSelect}, "inner"));
  outer->addGestureRecognizer(tap({UIPressTypeSelect}, "outer"));
  const auto remove = [this] { inner->removeFromSuperview(); };
  const auto putBack = [this] {
    outer->addSubview(inner);
    inner->becomeFirstResponder();
  };
  const struct {
    const char* between;
    std::function<void()> happens;
    Diary first;  // of the two releases
  } rows[] = {
      {"nothing", [] {}, {"inner up 0", "inner tapped"}},
      {"the focus moves", [this] { outer->becomeFirstResponder(); }, {"inner up 0", "inner tapped"}},
      {"it is hidden", [this] { inner->setHidden(true); }, {"inner cancelled 0"}},
      {"what holds it is hidden", [this] { outer->setHidden(true); }, {"inner cancelled 0"}},
      {"it goes", remove, {"inner cancelled 0"}},
      {"it goes and comes back", [&] { remove(), putBack(); }, {"inner cancelled 0"}},
      {"the window loses the focus",
       [this] {
         QFocusEvent lost(QEvent::FocusOut);
         QCoreApplication::sendEvent(&window, &lost);
       },
       {"inner cancelled 0"}},
      {"its recognizer is taken off it", [this] { inner->setGestureRecognizers({}); }, {"inner up 0"}},
      {"another press without a release",
       [this] {
         key(Qt::Key_Up);
         key(Qt::Key_Enter);
       },
       {"inner cancelled 0", "inner down 0", "inner up 0", "inner tapped"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.between);
    const auto recognizers = inner->gestureRecognizers();
    for (const int code : {Qt::Key_Up, Qt::Key_Return}) EXPECT_TRUE(key(code));
    EXPECT_THAT(taken(), ElementsAre("inner down 0"));
    row.happens();
    for (const int code : {Qt::Key_Up, Qt::Key_Return}) key(code, QEvent::KeyRelease);
    EXPECT_EQ(taken(), row.first);
    inner->setGestureRecognizers(recognizers);
    inner->setHidden(false);
    outer->setHidden(false);
    putBack();
    for (const int code : {Qt::Key_Up, Qt::Key_Return}) {
      key(code, QEvent::KeyPress, true);
      key(code, QEvent::KeyRelease);
    }
    EXPECT_THAT(taken(), IsEmpty()) << "neither repetitions nor releases without a press";
  }
  key(Qt::Key_Up);
  taken();
  outer->removeFromSuperview();
  inner.reset();
  outer.reset();
  key(Qt::Key_Up, QEvent::KeyPress, true);
  key(Qt::Key_Up, QEvent::KeyRelease);
  EXPECT_THAT(taken(), ElementsAre("inner cancelled 0"));
}

TEST_F(PressTest, inAWindowOfTheHostsOwnKeysComeFromQt) {
  QQuickWindow other;
  outer->removeFromSuperview();
  outer->setParentItem(other.contentItem());
  ASSERT_TRUE(inner->becomeFirstResponder());
  EXPECT_TRUE(UIPressSend(other, UIPressTypeUpArrow));
  EXPECT_FALSE(key(Qt::Key_F5, QEvent::KeyPress, false, inner.get()));
  EXPECT_TRUE(key(Qt::Key_Up, QEvent::KeyPress, false, inner.get()));
  EXPECT_TRUE(key(Qt::Key_Up, QEvent::KeyPress, true, &other)) << "wherever the focus is by then";
  EXPECT_TRUE(key(Qt::Key_Up, QEvent::KeyRelease, false, &other));
  EXPECT_THAT(taken(), ElementsAre("inner down 0", "inner up 0", "inner down 0", "inner again 0", "inner up 0"));
  outer->removeFromSuperview();
}

}  // namespace
