#include "platform/foundation/NSNotificationCenter.h"

#include <gmock/gmock.h>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/NSObject.h"

using testing::ElementsAre;

namespace {

struct NotificationCenter : testing::Test {
  NSNotificationCenter::Block note(const std::string& name) {
    return [this, name](const NSNotification& notification) {
      heard.push_back(name + (notification.object == player ? " of player" : notification.object ? " of other" : ""));
    };
  }
  std::vector<std::string> heardFrom(const std::shared_ptr<NSObject>& sender, const char* name = "end") {
    center.postNotificationName(name, sender);
    return std::exchange(heard, {});
  }

  VirtualRunLoop loop;
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const std::shared_ptr<NSObject> player = std::make_shared<NSObject>();
  std::vector<std::string> heard;
  int one = 0, two = 0;  // observers
};

TEST_F(NotificationCenter, deliversByNameAndObjectInTheOrderOfRegistration) {
  auto gone = std::make_shared<NSObject>();
  center.addObserver(&one, "end", gone, note("of one that went"));
  gone.reset();
  center.addObserver(&one, "end", player, note("first"));
  center.addObserver(&two, "end", nullptr, note("second"));
  center.addObserver(&one, "fail", player, note("third"));
  EXPECT_THAT(heardFrom(player), ElementsAre("first of player", "second of player"));
  EXPECT_THAT(heardFrom(std::make_shared<NSObject>()), ElementsAre("second of other"));
  EXPECT_THAT(heardFrom(nullptr), ElementsAre("second"));
  EXPECT_THAT(heardFrom(player, "nothing"), ElementsAre());
  center.removeObserver(&one);
  center.removeObserver(&two);
}

TEST_F(NotificationCenter, removalTakesOutEverythingOfAnObserverAndWhatThatOwnedMayRemoveOthers) {
  const auto before = center.observerCount();
  auto removesTwo = std::shared_ptr<void>(nullptr, [this](void*) { center.removeObserver(&two); });
  center.addObserver(&two, "end", nullptr, note("two"));
  center.addObserver(&one, "end", nullptr, [owned = std::exchange(removesTwo, nullptr)](const NSNotification&) {});
  center.addObserver(&two, "end", nullptr, note("two"));
  center.removeObserver(&one);
  EXPECT_EQ(center.observerCount(), before) << "what a block owned removed others as it went";
}

}  // namespace
