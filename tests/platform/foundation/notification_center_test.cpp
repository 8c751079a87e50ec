#include "platform/foundation/NSNotificationCenter.h"

#include <gmock/gmock.h>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/NSObject.h"

using testing::ElementsAre;

namespace {

struct NotificationCenter : testing::Test {
  ~NotificationCenter() override {
    center.removeObserver(&one);
    center.removeObserver(&two);
    EXPECT_EQ(center.observerCount(), before) << "an observer was left behind";
  }
  NSNotificationCenter::Block note(const std::string& name) {
    return [this, name](const NSNotification& notification) {
      heard.push_back(name + (notification.object == player ? " of player" : notification.object ? " of other" : ""));
    };
  }

  VirtualRunLoop loop;
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const std::size_t before = center.observerCount();
  const std::shared_ptr<NSObject> player = std::make_shared<NSObject>();
  const std::shared_ptr<NSObject> other = std::make_shared<NSObject>();
  std::vector<std::string> heard;
  int one = 0, two = 0;  // observers
};

TEST_F(NotificationCenter, deliversByNameAndObjectInTheOrderOfRegistration) {
  center.addObserver(&one, "end", player, note("first"));
  center.addObserver(&two, "end", nullptr, note("second"));
  center.addObserver(&one, "fail", player, note("third"));
  center.postNotificationName("end", player);
  center.postNotificationName("end", other);
  center.postNotificationName("end", nullptr);
  center.postNotificationName("nothing", player);
  EXPECT_THAT(heard, ElementsAre("first of player", "second of player", "second of other", "second"));
}

TEST_F(NotificationCenter, removalTakesOutEverythingOfAnObserverAtOnce) {
  center.addObserver(&one, "end", nullptr, [this](const NSNotification&) {
    heard.push_back("one");
    center.removeObserver(&one);
    center.removeObserver(&two);
    center.addObserver(&one, "end", nullptr, note("late"));
  });
  center.addObserver(&one, "end", nullptr, note("again"));
  center.addObserver(&two, "end", nullptr, note("two"));
  center.postNotificationName("end", nullptr);
  EXPECT_THAT(heard, ElementsAre("one"));
  center.postNotificationName("end", nullptr);
  EXPECT_THAT(heard, ElementsAre("one", "late"));
}

TEST_F(NotificationCenter, anObserverOfAnObjectThatWentHearsNobodyElse) {
  auto gone = std::make_shared<NSObject>();
  center.addObserver(&one, "end", gone, note("gone"));
  gone.reset();
  center.postNotificationName("end", nullptr);
  center.postNotificationName("end", player);
  EXPECT_TRUE(heard.empty());
}

}  // namespace
