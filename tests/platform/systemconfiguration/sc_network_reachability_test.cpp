#include "platform/systemconfiguration/SCNetworkReachability.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "platform/dispatch/PlainRunLoop.h"
#include "platform/systemconfiguration/NameLookups.h"
#include "tests/support/NetworkNamespace.h"

using namespace std::chrono_literals;

namespace {

constexpr auto localAndDirect = kSCNetworkReachabilityFlagsReachable | kSCNetworkReachabilityFlagsIsLocalAddress |
                                kSCNetworkReachabilityFlagsIsDirect;
constexpr SCNetworkReachabilityFlags nothing = 0, reachable = kSCNetworkReachabilityFlagsReachable,
                                     direct = reachable | kSCNetworkReachabilityFlagsIsDirect,
                                     mobile = reachable | kSCNetworkReachabilityFlagsIsWWAN;

SCNetworkReachabilityRef byAddress(const std::string& text) {
  sockaddr_storage address{};
  auto& v4 = reinterpret_cast<sockaddr_in&>(address);
  auto& v6 = reinterpret_cast<sockaddr_in6&>(address);
  if (::inet_pton(AF_INET, text.c_str(), &v4.sin_addr) == 1) {
    v4.sin_family = AF_INET;
  } else if (::inet_pton(AF_INET6, text.c_str(), &v6.sin6_addr) == 1) {
    v6.sin6_family = AF_INET6;
  }
  return SCNetworkReachability::createWithAddress(reinterpret_cast<const sockaddr&>(address));
}

// A network laid out for the case; skipped where that is not allowed.
struct InANetwork : testing::Test {
  // A change, if any, and what an address has come to after it.
  struct Step {
    const char* change;
    const char* address;
    SCNetworkReachabilityFlags flags;
  };

  void SetUp() override {
    if (!network.obstacle().empty()) GTEST_SKIP() << network.obstacle();
  }
  // A link to a neighbour, with an address of its own.
  void link(const std::string& name) {
    ASSERT_TRUE(network.ip("link add " + name + " type veth peer name peer0"));
    ASSERT_TRUE(network.ip("link set peer0 up"));
    ASSERT_TRUE(network.ip("link set " + name + " up"));
    ASSERT_TRUE(network.ip("addr add 10.9.8.1/24 dev " + name));
    hasIPv6 = network.ip("-6 addr add fd00:9::1/64 dev " + name + " nodad");
  }
  void walk(std::initializer_list<Step> steps) {
    for (const auto& [change, address, flags] : steps) {
      const bool isOfIPv6 = std::string(change).starts_with("-6") || std::string(address).starts_with("fd00:9");
      if (isOfIPv6 && !hasIPv6) continue;
      if (*change) {
        ASSERT_TRUE(network.ip(change)) << change;
      }
      EXPECT_EQ(byAddress(address)->flags(), flags) << address << " after " << change;
    }
  }

  NetworkNamespace network;
  bool hasIPv6 = false;
};

TEST_F(InANetwork, aLinkReachesItsNeighboursAndAGatewayTheRest) {
  walk({{"", "127.0.0.1", localAndDirect}, {"", "0.0.0.0", nothing}, {"", "::", nothing}, {"", "10.9.8.7", nothing}});
  link("eth7");
  walk({
      {"", "10.9.8.7", direct},
      {"", "10.9.8.1", localAndDirect},
      {"", "fd00:9::7", direct},
      {"", "0.0.0.0", nothing},
      {"-6 route add default via fd00:9::2", "0.0.0.0", reachable},  // the internet, over the newer protocol alone
      {"-6 route del default", "0.0.0.0", nothing},
      {"route add 0.0.0.0/1 via 10.9.8.2", "0.0.0.0", nothing},
      {"route add 128.0.0.0/1 via 10.9.8.2", "0.0.0.0", reachable},  // over two halves
      {"route del 128.0.0.0/1", "192.0.2.7", nothing},
      {"route add default via 10.9.8.2", "192.0.2.7", reachable},
      {"", "169.254.0.0", nothing},  // no gateway passes link-local packets on
      {"route add 169.254.0.0/16 dev eth7 scope link", "169.254.0.0", direct},
      {"route add unreachable 192.0.2.0/24", "192.0.2.7", nothing},
  });
}

TEST_F(InANetwork, aDeviceNamedLikeAModemIsAMobileNetworkUntilItGoesDownOrLosesItsCarrier) {
  link("wwan0");
  walk({
      {"route add default via 10.9.8.2", "0.0.0.0", mobile},
      {"", "10.9.8.7", mobile | direct},
      {"link set peer0 down", "0.0.0.0", nothing},  // the cable is pulled: the routes stay
      {"", "10.9.8.7", nothing},
      {"link set peer0 up", "0.0.0.0", mobile},
      {"link set wwan0 down", "0.0.0.0", nothing},
  });
}

// --- Names ---------------------------------------------------------------------------------------------------------

// A resolver that answers when the test says so, and fails when it is over.
class Resolver {
 public:
  Resolver() {
    NameLookups::setSharedForTests(std::make_shared<NameLookups>([script = script_](auto&) { return script->next(); }));
  }
  ~Resolver() {
    NameLookups::setSharedForTests(nullptr);
    std::lock_guard lock(script_->mutex);
    script_->isOver = true;
    script_->changed.notify_all();
  }

  // An address; "" for a look-up that fails.
  void answer(const std::string& address) {
    std::lock_guard lock(script_->mutex);
    script_->answers.push_back(address.empty() ? NameLookups::Addresses() : NameLookups::ofNumber(address));
    script_->changed.notify_all();
  }

 private:
  struct Script {
    NameLookups::Addresses next() {
      std::unique_lock lock(mutex);
      changed.wait(lock, [this] { return isOver || !answers.empty(); });
      if (isOver) return {};
      const auto answer = answers.front();
      answers.pop_front();
      return answer;
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<NameLookups::Addresses> answers;
    bool isOver = false;
  };
  const std::shared_ptr<Script> script_ = std::make_shared<Script>();
};

TEST_F(InANetwork, aNameWhoseLookUpIsSilentIsReachedOverAnyRouteThatItCouldTake) {
  Resolver resolver;
  const auto name = SCNetworkReachability::createWithName("silent.example");
  EXPECT_EQ(name->flags(), nothing) << "its own addresses only";
  EXPECT_EQ(SCNetworkReachability::createWithName("127.0.0.1")->flags(), localAndDirect);
  EXPECT_EQ(SCNetworkReachability::createWithName("localhost")->flags(), localAndDirect);
  link("eth7");
  EXPECT_EQ(name->flags(), direct) << "a neighbour";
  ASSERT_TRUE(network.ip("route add default via 10.9.8.2"));
  EXPECT_EQ(name->flags(), reachable);
  PlainRunLoop loop;
  bool found = false;
  NameLookups::shared()->start("silent.example", [&](bool) { loop.post([&] { found = true; }); });
  resolver.answer("10.9.8.1");
  EXPECT_TRUE(loop.runUntil([&] { return found; }, 5s));
  EXPECT_EQ(name->flags(), localAndDirect) << "now its address is known";
}

// --- Watching ------------------------------------------------------------------------------------------------------

struct Watched {
  std::vector<SCNetworkReachabilityFlags> told;  // on the queue
  std::atomic<std::size_t> count{0};
};

void note(const SCNetworkReachabilityRef&, SCNetworkReachabilityFlags flags, const std::shared_ptr<void>& info) {
  auto& watched = *std::static_pointer_cast<Watched>(info);
  watched.told.push_back(flags);
  ++watched.count;
}

TEST_F(InANetwork, aWatchTellsOfEachChangeOnItsQueueUntilItEnds) {
  link("eth7");
  PlainRunLoop loop;
  const auto watched = std::make_shared<Watched>();
  const auto target = byAddress("0.0.0.0");
  const auto queue = dispatch_queue_create("watch");
  const auto comes = [&](std::size_t count) { return loop.runUntil([&] { return watched->count == count; }, 5s); };
  EXPECT_TRUE(target->setCallback(&note, watched));
  ASSERT_TRUE(target->setDispatchQueue(queue));
  ASSERT_TRUE(network.ip("route add default via 10.9.8.2")) << "at once: what was there at the call is the baseline";
  EXPECT_TRUE(comes(1));
  ASSERT_TRUE(network.ip("route add 10.77.0.0/16 via 10.9.8.2"));  // changes nothing for this target
  ASSERT_TRUE(network.ip("link set peer0 down"));
  EXPECT_TRUE(comes(2));
  ASSERT_TRUE(network.ip("link set peer0 up"));
  EXPECT_TRUE(comes(3));
  target->setDispatchQueue(nullptr);
  ASSERT_TRUE(network.ip("link set eth7 down"));
  bool passed = false;
  loop.schedule(100ms, [&] { passed = true; });
  loop.runUntil([&] { return passed; }, 5s);
  EXPECT_THAT(watched->told, testing::ElementsAre(reachable, nothing, reachable));
}

TEST_F(InANetwork, aWatchKeepsItsAnswerWhileLookUpsFailAndLooksAgain) {
  link("eth7");
  Resolver resolver;
  PlainRunLoop loop;
  const auto watched = std::make_shared<Watched>();
  const auto target = SCNetworkReachability::createWithName("flaky.example");
  target->setCallback(&note, watched);
  ASSERT_TRUE(target->setDispatchQueue(dispatch_queue_create("watch")));
  for (const char* address : {"", "10.9.8.1", "", "10.9.8.7"}) resolver.answer(address);
  EXPECT_TRUE(loop.runUntil([&] { return watched->count == 1; }, 10s));
  ASSERT_TRUE(network.ip("route add 10.77.0.0/16 via 10.9.8.2"));  // a change: its addresses may be others now
  EXPECT_TRUE(loop.runUntil([&] { return watched->count == 2; }, 10s));
  EXPECT_THAT(watched->told, testing::ElementsAre(localAndDirect, direct));
}

TEST_F(InANetwork, targetsMayGoWhileTheNetworkChanges) {
  link("eth7");
  PlainRunLoop loop;
  const auto queue = dispatch_queue_create("watch");
  for (int round = 0; round < 20; ++round) {
    const auto target = byAddress("0.0.0.0");
    target->setCallback(&note, std::make_shared<Watched>());
    target->setDispatchQueue(queue);
    network.ip(round % 2 ? "route del default via 10.9.8.2" : "route add default via 10.9.8.2");
  }
}

}  // namespace
