#include "platform/systemconfiguration/SCNetworkReachability.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>

#include <atomic>

#include "platform/dispatch/PlainRunLoop.h"
#include "platform/systemconfiguration/NameLookup.h"
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

TEST(Reachability, aNameIsAnsweredWithinTheBound) {
  EXPECT_EQ(SCNetworkReachability::createWithName("127.0.0.1")->flags(), localAndDirect);
  EXPECT_EQ(SCNetworkReachability::createWithName("localhost")->flags(), localAndDirect);
  PlainRunLoop loop;
  const auto began = loop.now();
  EXPECT_EQ(SCNetworkReachability::createWithName("no.such.host.invalid")->flags(), nothing);
  EXPECT_LT(loop.now() - began, 4s);
}

TEST(Reachability, aLookUpThatTakesTooLongIsLeftBehind) {
  PlainRunLoop loop;
  const auto began = loop.now();
  EXPECT_TRUE(lookUpName("slow.invalid", 0ms).empty());
  EXPECT_LT(loop.now() - began, 1s);
  EXPECT_EQ(lookUpName("::1", 0ms).size(), 1u) << "a number needs no look-up";
  EXPECT_TRUE(lookUpName("slow.invalid", 10s).empty());  // by now the one left behind has ended as well
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
  const auto settle = [&] {
    bool passed = false;
    loop.schedule(100ms, [&] { passed = true; });
    loop.runUntil([&] { return passed; }, 5s);
  };
  ASSERT_TRUE(network.ip("route add default via 10.9.8.2"));
  EXPECT_TRUE(target->setCallback(&note, watched));
  ASSERT_TRUE(target->setDispatchQueue(queue));
  settle();
  EXPECT_EQ(watched->count, 0u) << "nothing has changed yet";
  ASSERT_TRUE(network.ip("route add 10.77.0.0/16 via 10.9.8.2"));  // changes nothing for this target
  settle();
  ASSERT_TRUE(network.ip("link set peer0 down"));
  EXPECT_TRUE(comes(1));
  ASSERT_TRUE(network.ip("link set peer0 up"));
  EXPECT_TRUE(comes(2));
  target->setDispatchQueue(nullptr);
  ASSERT_TRUE(network.ip("link set eth7 down"));
  settle();
  EXPECT_THAT(watched->told, testing::ElementsAre(nothing, reachable));
}

TEST_F(InANetwork, targetsMayGoWhileTheNetworkChanges) {
  link("eth7");
  PlainRunLoop loop;
  const auto queue = dispatch_queue_create("watch");
  auto watched = std::make_shared<Watched>();
  for (int round = 0; round < 20; ++round) {
    const auto target = byAddress("0.0.0.0");
    target->setCallback(&note, watched);
    target->setDispatchQueue(queue);
    network.ip(round % 2 ? "route del default via 10.9.8.2" : "route add default via 10.9.8.2");
    if (round == 10) watched = std::make_shared<Watched>();
  }
}

}  // namespace
