#include <gmock/gmock.h>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSObject.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Subject : NSObject {
  void setRate(float value) {
    rate_ = value;
    didChangeValueForKey("rate");
  }
  void setStatus(int value) {
    status_ = value;
    didChangeValueForKey("status");
  }
  std::any valueForKey(std::string_view key) const override {
    if (key == "rate") return rate_;
    if (key == "status") return status_;
    return {};
  }
  float rate_ = 0;
  int status_ = 0;
};

// Writes down what it is told, in one line each, and then does `then`.
struct Recorder : NSKeyValueObserver {
  Recorder(std::string name, std::vector<std::string>& told) : name_(std::move(name)), told_(told) {}

  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>&,
                              const NSKeyValueChange& change, void* context) override {
    std::string line = name_ + " " + keyPath;
    if (const auto* rate = std::any_cast<float>(&change.newValue))
      line += "=" + std::to_string(static_cast<int>(*rate));
    if (const auto* status = std::any_cast<int>(&change.newValue)) line += "=" + std::to_string(*status);
    if (change.isInitial) line += " initial";
    if (context) line += " in context";
    told_.push_back(line);
    if (then) std::exchange(then, nullptr)();
  }

  std::string name_;
  std::vector<std::string>& told_;
  std::function<void()> then;
};

struct KeyValueObserving : testing::Test {
  std::shared_ptr<Recorder> recorder(const std::string& name) { return std::make_shared<Recorder>(name, told); }

  VirtualRunLoop loop;
  std::vector<std::string> told;
  const std::shared_ptr<Subject> subject = std::make_shared<Subject>();
  const std::shared_ptr<Recorder> a = recorder("a");
  const std::shared_ptr<Recorder> b = recorder("b");
};

constexpr auto New = NSKeyValueObservingOptionNew;
constexpr auto Initial = NSKeyValueObservingOptionInitial;

TEST_F(KeyValueObserving, optionsSayWhatIsToldAndWhen) {
  int context = 0;
  subject->setRate(3);
  subject->addObserver(a, "rate", Initial | New, &context);
  EXPECT_THAT(told, ElementsAre("a rate=3 initial in context"));
  told.clear();
  subject->addObserver(a, "status", Initial);
  EXPECT_THAT(told, ElementsAre("a status initial"));
  told.clear();
  subject->addObserver(b, "rate", New);
  subject->addObserver(b, "status");
  EXPECT_THAT(told, IsEmpty());
  subject->setRate(1);
  subject->setStatus(2);
  EXPECT_THAT(told, ElementsAre("a rate=1 in context", "b rate=1", "a status", "b status"));
}

TEST_F(KeyValueObserving, tellsBeforeTheSetterReturnsAndInTheOrderOfRegistrationAlsoWhenNested) {
  subject->addObserver(a, "rate", New);
  subject->addObserver(b, "rate", New);
  subject->addObserver(b, "status", New);
  a->then = [&] { subject->setStatus(7); };
  subject->setRate(1);
  EXPECT_THAT(told, ElementsAre("a rate=1", "b status=7", "b rate=1"));
}

TEST_F(KeyValueObserving, aRemovalTakesEffectAtOnceAndANewObserverWaitsForTheNextChange) {
  const auto late = recorder("late");
  subject->addObserver(a, "rate");
  subject->addObserver(b, "rate");
  a->then = [&] {
    subject->removeObserver(b.get(), "rate");
    subject->removeObserver(a.get(), "rate");
    subject->addObserver(late, "rate");
  };
  subject->setRate(1);
  EXPECT_THAT(told, ElementsAre("a rate"));
  subject->setRate(2);
  EXPECT_THAT(told, ElementsAre("a rate", "late rate"));
}

TEST_F(KeyValueObserving, aDoubleRegistrationIsToldTwiceAndRemovedLastFirst) {
  int context = 0;
  subject->addObserver(a, "rate");
  subject->addObserver(a, "rate", 0, &context);
  subject->setRate(1);
  EXPECT_THAT(told, ElementsAre("a rate", "a rate in context"));
  subject->removeObserver(a.get(), "rate");
  told.clear();
  subject->setRate(2);
  EXPECT_THAT(told, ElementsAre("a rate"));
}

TEST_F(KeyValueObserving, removingWhoIsNotThereIsAnErrorThatCanBeCaught) {
  subject->addObserver(a, "rate");
  EXPECT_THROW(subject->removeObserver(a.get(), "status"), NSRangeException);
  EXPECT_THROW(subject->removeObserver(b.get(), "rate"), NSException);
  EXPECT_THROW(subject->removeObserver(nullptr, "rate"), std::exception);
  subject->removeObserver(a.get(), "rate");
  try {
    subject->removeObserver(a.get(), "rate");
    FAIL() << "removed twice";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), "NSRangeException");
    EXPECT_THAT(exception.description(), testing::HasSubstr("\"rate\""));
    EXPECT_EQ(exception.description(), exception.what());
  }
  subject->setRate(1);
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(KeyValueObserving, anObserverThatWentIsNotToldAndNotCounted) {
  auto gone = recorder("gone");
  subject->addObserver(gone, "rate");
  EXPECT_TRUE(subject->isObserved("rate"));
  gone.reset();
  EXPECT_FALSE(subject->isObserved("rate"));
  subject->setRate(1);
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(KeyValueObserving, anObserverMayDeregisterInItsDestructor) {
  struct Careful : Recorder {
    using Recorder::Recorder;
    ~Careful() override { subject->removeObserver(this, "rate"); }
    std::shared_ptr<Subject> subject;
  };
  auto careful = std::make_shared<Careful>("careful", told);
  careful->subject = subject;
  subject->addObserver(careful, "rate");
  careful.reset();
  EXPECT_FALSE(subject->isObserved("rate"));
}

TEST_F(KeyValueObserving, theSubjectLivesUntilAllHaveBeenTold) {
  auto own = std::make_shared<Subject>();
  const std::weak_ptr<Subject> weak = own;
  own->addObserver(a, "rate");
  own->addObserver(b, "rate", New);
  a->then = [&] { own.reset(); };
  own->setRate(4);
  EXPECT_THAT(told, ElementsAre("a rate", "b rate=4"));
  EXPECT_TRUE(weak.expired());
}

using KeyValueObservingDeathTest = KeyValueObserving;
TEST_F(KeyValueObservingDeathTest, aChangeOffTheMainThreadStopsTheProcess) {
  EXPECT_DEATH(
      {
        loop.performWork([&] { subject->setRate(1); });
        loop.runUntilIdle();
      },
      "off the main thread");
}

}  // namespace
