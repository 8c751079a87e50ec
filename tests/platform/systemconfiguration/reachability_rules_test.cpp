#include "platform/systemconfiguration/ReachabilityRules.h"

#include <gmock/gmock.h>

namespace {

TEST(ReachabilityRules, flagsFollowFromRouteAndInterface) {
  const std::optional<NetworkRoute> none;
  const NetworkRoute gateway{.interface = 2}, direct{.interface = 2, .isDirect = true};
  const std::optional<NetworkInterface> unknown;
  const NetworkInterface up{.name = "eth0", .isUp = true},
      dialled{.name = "ppp0", .isUp = true, .isPointToPoint = true};
  const struct {
    std::optional<NetworkRoute> route;
    std::optional<NetworkInterface> interface;
    bool staysOnLink;
    SCNetworkReachabilityFlags expected;
  } rows[] = {
      {none, up, false, 0},        {gateway, unknown, false, 0},   {gateway, up, true, 0},
      {direct, up, true, 0x20002}, {gateway, dialled, false, 0x3},
  };
  for (const auto& row : rows) EXPECT_EQ(reachabilityFlags(row.route, row.interface, row.staysOnLink), row.expected);
}

}  // namespace
