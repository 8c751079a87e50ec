#include "net/SKReachability.h"

#include <gmock/gmock.h>
#include <netinet/in.h>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/NSNotificationCenter.h"

using testing::ElementsAre;

namespace {

constexpr SCNetworkReachabilityFlags transient = 1, reachable = 2, required = 4, onTraffic = 8, intervention = 16,
                                     onDemand = 32, local = 0x10000, direct = 0x20000, mobile = 0x40000;

// A target whose flags the test sets.
struct ScriptedTarget : SCNetworkReachability {
  std::optional<SCNetworkReachabilityFlags> flags() override { return present; }
  bool setCallback(SCNetworkReachabilityCallBack given, std::weak_ptr<void> about) override {
    callback = given;
    info = std::move(about);
    return takesCallback || !given;
  }
  bool setDispatchQueue(const dispatch_queue_t& given) override {
    queue = given;
    return takesQueue || !given;
  }
  // As the platform tells of a change.
  void change(SCNetworkReachabilityFlags flags) {
    present = flags;
    dispatch_async(queue, [this, flags, call = callback, about = info] {
      if (const auto held = about.lock()) call(shared_from_this(), flags, held);
    });
  }

  std::optional<SCNetworkReachabilityFlags> present = 0;
  SCNetworkReachabilityCallBack callback = nullptr;
  std::weak_ptr<void> info;
  dispatch_queue_t queue;
  bool takesCallback = true, takesQueue = true;
};

struct Reachability : testing::Test {
  VirtualRunLoop loop;
  const std::shared_ptr<ScriptedTarget> target = std::make_shared<ScriptedTarget>();
  std::shared_ptr<SKReachability> object = std::make_shared<SKReachability>(target);
};

TEST_F(Reachability, everyQueryIsARuleOverTheFlags) {
  const struct {
    SCNetworkReachabilityFlags flags;
    bool reachable, reachableWithoutMobile, viaWWAN, viaWiFi, required, onDemand, intervention;
    NetworkStatus status;
    const char* text;
    const char* letters;
  } rows[] = {
      {0, false, false, false, false, false, false, false, NotReachable, "No Connection", "-- -------"},
      {reachable | mobile, true, false, true, false, false, false, false, ReachableViaWWAN, "Cellular", "WR -------"},
      {reachable | required | transient, false, false, false, true, true, false, false, NotReachable, "No Connection",
       "-R ct-----"},
      {reachable | onDemand | local | direct, true, true, false, true, false, false, false, ReachableViaWiFi, "WiFi",
       "-R ----Dld"},
      {reachable | required | intervention | onTraffic, true, true, false, true, true, true, true, ReachableViaWiFi,
       "WiFi", "-R c-iC---"},
      {onTraffic | onDemand | intervention | mobile, false, false, false, false, false, false, false, NotReachable,
       "No Connection", "W- --iCD--"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.letters);
    target->present = row.flags;
    EXPECT_EQ(object->isReachable(), row.reachable);
    EXPECT_EQ(object->isReachableViaWWAN(), row.viaWWAN);
    EXPECT_EQ(object->isReachableViaWiFi(), row.viaWiFi);
    EXPECT_EQ(object->isConnectionRequired(), row.required);
    EXPECT_EQ(object->isConnectionOnDemand(), row.onDemand);
    EXPECT_EQ(object->isInterventionRequired(), row.intervention);
    EXPECT_EQ(object->currentReachabilityStatus(), row.status);
    EXPECT_EQ(object->currentReachabilityString(), row.text);
    EXPECT_EQ(object->currentReachabilityFlags(), row.letters);
    EXPECT_EQ(object->reachabilityFlags(), row.flags);
    object->setReachableOnWWAN(false);
    EXPECT_EQ(object->isReachable(), row.reachableWithoutMobile);
    EXPECT_EQ(object->currentReachabilityString(), row.reachableWithoutMobile ? "WiFi" : "Cellular");
    object->setReachableOnWWAN(true);
  }
  target->present = std::nullopt;
  EXPECT_FALSE(object->isReachable() || object->isReachableViaWiFi() || object->connectionRequired())
      << "flags that cannot be read";
}

TEST_F(Reachability, aChangeCallsItsBlockOnTheSerialQueueAndThenNotifiesOnTheMainOne) {
  std::vector<std::string> order;
  const auto told = [&](const char* what) {
    return [&order, &loop = loop, what, expected = object.get()](const std::shared_ptr<SKReachability>& sender) {
      EXPECT_EQ(sender.get(), expected);
      EXPECT_FALSE(loop.isCurrent());
      order.push_back(what);
      throw what;  // which changes nothing
    };
  };
  object->setReachableBlock(told("reachable"));
  object->setUnreachableBlock(told("unreachable"));
  auto& center = NSNotificationCenter::defaultCenter();
  center.addObserver(this, kReachabilityChangedNotification, object, [&](const NSNotification& notification) {
    EXPECT_EQ(notification.object, object);
    EXPECT_TRUE(loop.isCurrent());
    order.push_back("notification");
  });
  ASSERT_TRUE(object->startNotifier());
  EXPECT_EQ(object->reachabilitySerialQueue(), target->queue);
  for (const auto flags : {reachable, reachable | required | transient}) {
    target->change(flags);
    loop.runUntilIdle();
  }
  object->setReachableBlock(nullptr);
  target->change(reachable);
  loop.runUntilIdle();
  center.removeObserver(this);
  object->stopNotifier();
  EXPECT_THAT(order, ElementsAre("reachable", "notification", "unreachable", "notification", "notification"));
}

TEST_F(Reachability, theNotifierKeepsTheObjectAliveUntilItStops) {
  const std::weak_ptr<SKReachability> weak = object;
  target->takesQueue = false;
  EXPECT_FALSE(object->startNotifier());
  EXPECT_EQ(target->callback, nullptr) << "one that cannot start leaves nothing behind";
  target->takesQueue = true;
  ASSERT_TRUE(object->startNotifier());
  const auto queue = target->queue;
  ASSERT_TRUE(object->startNotifier());
  EXPECT_EQ(target->queue, queue) << "started again";
  object.reset();
  ASSERT_FALSE(weak.expired());
  target->change(reachable);
  weak.lock()->stopNotifier();
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(target->queue, nullptr);
  EXPECT_EQ(target->callback, nullptr);
  loop.runUntilIdle();  // the change that was on its way finds nobody
}

TEST(ReachabilityTargets, everyWayToNameATarget) {
  sockaddr_in loopback{};
  loopback.sin_family = AF_INET;
  loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const auto& address = reinterpret_cast<const sockaddr&>(loopback);
  EXPECT_TRUE(SKReachability::reachabilityWithAddress(address)->isReachableViaWiFi());
  EXPECT_TRUE(SKReachability::reachabilityWithHostName("localhost")->isReachable());
  EXPECT_EQ(SKReachability::reachabilityWithHostname(""), nullptr);
  loopback.sin_family = AF_UNSPEC;
  EXPECT_EQ(SKReachability::reachabilityWithAddress(address), nullptr);
}

}  // namespace
