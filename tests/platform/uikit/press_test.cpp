#include "platform/uikit/UIPressDelivery.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Diary = std::vector<std::string>;

// Notes presses and handles those of one type.
struct NotesPresses : UIView {
  NotesPresses(std::string ofName, Diary& of, int ofType) : name(std::move(ofName)), diary(of), handles(ofType) {
    setFrame(CGRectMake(0, 0, 100, 100));
  }
  bool pressesBegan(const UIPress& press) override { return note(press.isRepeat ? " again " : " down ", press); }
  void pressesEnded(const UIPress& press) override { note(" up ", press); }
  void pressesCancelled(const UIPress& press) override { note(" cancelled ", press); }
  bool note(const char* what, const UIPress& press) {
    diary.push_back(name + what + std::to_string(press.type));
    return press.type == handles;
  }

  const std::string name;
  Diary& diary;
  const int handles;
};

class PressTest : public ScreenTest {
 protected:
  PressTest() {
    view()->addSubview(outer);
    outer->addSubview(inner);
    inner->becomeFirstResponder();
  }
  std::shared_ptr<UITapGestureRecognizer> tap(std::vector<int> types, const std::string& name,
                                              std::function<void()> also = {}) {
    auto recognizer = std::make_shared<UITapGestureRecognizer>([this, name, also](UIGestureRecognizer& self) {
      EXPECT_EQ(self.state(), UIGestureRecognizerStateEnded);
      diary.push_back(name + " tapped");
      if (also) also();
    });
    recognizer->setAllowedPressTypes(std::move(types));
    return recognizer;
  }
  void keys(std::initializer_list<int> codes, QEvent::Type type, bool repeats = false) {
    for (const int code : codes) key(code, type, repeats);
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
  taken();
  outer->becomeFirstResponder();
  EXPECT_THAT(after(UIPressTypeUpArrow), ElementsAre("outer down 0"));
  outer->setHidden(true);
  EXPECT_FALSE(inner->becomeFirstResponder());
  EXPECT_THAT(after(UIPressTypeUpArrow), IsEmpty());
  EXPECT_TRUE(view()->isFirstResponder()) << "the topmost view is there when the focus is not";
}

TEST_F(PressTest, recognizersComeBeforeTheirViewAfterWhatIsInsideItAndMayTakeEverythingAway) {
  inner->addGestureRecognizer(tap({UIPressTypeUpArrow, UIPressTypeMenu}, "inner"));
  outer->setGestureRecognizers({nullptr, tap({}, "without types"), tap({UIPressTypeMenu}, "outer")});
  EXPECT_THAT(after(UIPressTypeUpArrow), ElementsAre("inner tapped"));
  EXPECT_THAT(after(UIPressTypeMenu), ElementsAre("inner tapped"));
  inner->setGestureRecognizers({});
  EXPECT_THAT(after(UIPressTypeMenu), ElementsAre("inner down 5", "outer tapped"));

  outer->setGestureRecognizers({tap({UIPressTypePlayPause}, "last", [this] {
    outer->setGestureRecognizers({});
    outer->removeFromSuperview();
    inner.reset();
    outer.reset();
  })});
  const std::weak_ptr<UIGestureRecognizer> watched = outer->gestureRecognizers()[0];
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
  keys({Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_Back}, QEvent::KeyPress);
  EXPECT_EQ(taken(),
            Diary({"inner down 5", "outer down 5", "inner down 5", "outer down 5", "inner down 5", "outer down 5"}));
  EXPECT_FALSE(key(Qt::Key_A));
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(PressTest, endsWhereItBeganOrIsCancelledThere) {
  inner->addGestureRecognizer(tap({UIPressTypeSelect}, "inner"));
  outer->addGestureRecognizer(tap({UIPressTypeSelect}, "outer"));
  const auto putBack = [this] { outer->addSubview(inner), inner->becomeFirstResponder(); };
  const Diary ends{"inner up 0", "inner tapped"}, cancelled{"inner cancelled 0"};
  QFocusEvent lost(QEvent::FocusOut);
  const struct {
    const char* between;
    std::function<void()> happens;
    Diary first;  // of the two releases
  } rows[] = {
      {"the focus moves", [this] { outer->becomeFirstResponder(); }, ends},
      {"what holds it is hidden", [this] { outer->setHidden(true); }, cancelled},
      {"it goes", [this] { inner->removeFromSuperview(); }, cancelled},
      {"it goes and comes back", [&] { inner->removeFromSuperview(), putBack(); }, cancelled},
      {"the window loses the focus", [&] { QCoreApplication::sendEvent(&window, &lost); }, cancelled},
      {"its recognizer is taken off it", [this] { inner->setGestureRecognizers({}); }, {"inner up 0"}},
      {"another press without a release",
       [this] {
         keys({Qt::Key_Up, Qt::Key_Enter}, QEvent::KeyPress);
       },
       {"inner cancelled 0", "inner down 0", "inner up 0", "inner tapped"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.between);
    const auto recognizers = inner->gestureRecognizers();
    keys({Qt::Key_Up, Qt::Key_Return}, QEvent::KeyPress);
    EXPECT_THAT(taken(), ElementsAre("inner down 0"));
    row.happens();
    keys({Qt::Key_Up, Qt::Key_Return}, QEvent::KeyRelease);
    EXPECT_EQ(taken(), row.first);
    inner->setGestureRecognizers(recognizers);
    outer->setHidden(false);
    putBack();
    keys({Qt::Key_Up, Qt::Key_Return}, QEvent::KeyPress, true);
    keys({Qt::Key_Up, Qt::Key_Return}, QEvent::KeyRelease);
    EXPECT_THAT(taken(), IsEmpty()) << "neither repetitions nor releases without a press";
  }
  key(Qt::Key_Up);
  taken();
  outer->removeFromSuperview();
  inner.reset();
  outer.reset();
  key(Qt::Key_Up, QEvent::KeyRelease);
  EXPECT_EQ(taken(), cancelled);
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
