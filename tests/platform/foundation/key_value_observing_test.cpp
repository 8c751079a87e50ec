#include <gmock/gmock.h>

#include <map>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSObject.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Subject : NSObject {
  void set(const std::string& key, int value) {
    values[key] = value;
    didChangeValueForKey(key);
  }
  std::any valueForKey(std::string_view key) const override { return values.at(std::string(key)); }
  std::map<std::string, int> values{{"rate", 0}, {"status", 0}};
};

// Writes down what it is told, in one line each, and then does `then`.
struct Recorder : NSKeyValueObserver {
  Recorder(std::string name, std::vector<std::string>& told) : name_(std::move(name)), told_(told) {}

  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>&,
                              const NSKeyValueChange& change, void* context) override {
    const auto* value = std::any_cast<int>(&change.newValue);
    told_.push_back(name_ + " " + keyPath + (value ? "=" + std::to_string(*value) : "") +
                    (change.isInitial ? " initial" : "") + (context ? " in context" : ""));
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
  const std::shared_ptr<Recorder> a = recorder("a"), b = recorder("b");
};

constexpr auto New = NSKeyValueObservingOptionNew;
constexpr auto Initial = NSKeyValueObservingOptionInitial;

TEST_F(KeyValueObserving, optionsSayWhatIsToldAndWhen) {
  int context = 0;
  subject->set("rate", 3);
  subject->addObserver(a, "rate", Initial | New, &context);
  EXPECT_THAT(told, ElementsAre("a rate=3 initial in context"));
  subject->addObserver(a, "status", Initial);
  EXPECT_EQ(told.back(), "a status initial");
  told.clear();
  subject->addObserver(b, "rate", New);
  subject->addObserver(b, "status");
  subject->set("rate", 1);
  subject->set("status", 2);
  EXPECT_THAT(told, ElementsAre("a rate=1 in context", "b rate=1", "a status", "b status"));
}

TEST_F(KeyValueObserving, tellsBeforeTheSetterReturnsAndInTheOrderOfRegistrationAlsoWhenNested) {
  subject->addObserver(a, "rate", New);
  subject->addObserver(b, "rate", New);
  subject->addObserver(b, "status", New);
  a->then = [&] { subject->set("status", 7); };
  subject->set("rate", 1);
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
  subject->set("rate", 1);
  subject->set("rate", 2);
  EXPECT_THAT(told, ElementsAre("a rate", "late rate"));
}

TEST_F(KeyValueObserving, aDoubleRegistrationIsToldTwiceAndRemovedLastFirstAndNoOftener) {
  int context = 0;
  subject->addObserver(a, "rate");
  subject->addObserver(a, "rate", 0, &context);
  subject->set("rate", 1);
  EXPECT_THAT(std::exchange(told, {}), ElementsAre("a rate", "a rate in context"));
  subject->removeObserver(a.get(), "rate");
  subject->set("rate", 2);
  EXPECT_THAT(told, ElementsAre("a rate"));
  EXPECT_THROW(subject->removeObserver(b.get(), "rate"), NSException);
  EXPECT_THROW(subject->removeObserver(a.get(), "status"), NSRangeException);
  subject->removeObserver(a.get(), "rate");
  EXPECT_THROW(subject->removeObserver(a.get(), "rate"), NSRangeException);
}

TEST_F(KeyValueObserving, anObserverThatWentIsNeitherToldNorCountedAndMayDeregisterAsItGoes) {
  struct Careful : Recorder {
    using Recorder::Recorder;
    ~Careful() override { subject->removeObserver(this, "rate"); }
    std::shared_ptr<Subject> subject;
  };
  auto gone = recorder("gone");
  auto careful = std::make_shared<Careful>("careful", told);
  careful->subject = subject;
  subject->addObserver(gone, "rate");
  subject->addObserver(careful, "rate");
  gone.reset();
  EXPECT_TRUE(subject->isObserved("rate"));
  careful.reset();
  EXPECT_FALSE(subject->isObserved("rate"));
  subject->set("rate", 1);
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(KeyValueObserving, theSubjectLivesUntilAllHaveBeenTold) {
  auto own = std::make_shared<Subject>();
  const std::weak_ptr<Subject> weak = own;
  own->addObserver(a, "rate");
  own->addObserver(b, "rate", New);
  a->then = [&] { own.reset(); };
  own->set("rate", 4);
  EXPECT_THAT(told, ElementsAre("a rate", "b rate=4"));
  EXPECT_TRUE(weak.expired());
}

TEST_F(KeyValueObserving, aChangeOffTheMainThreadStopsTheProcess) {
  loop.performWork([&] { subject->set("rate", 1); });
  EXPECT_DEATH(loop.runUntilIdle(), "off the main thread");
}

}  // namespace
