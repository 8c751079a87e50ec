#include "platform/systemconfiguration/ReachabilityRules.h"

#include <gmock/gmock.h>

namespace {

TEST(ReachabilityRules, flagsFollowFromRouteAndInterface) {
  const std::optional<NetworkRoute> none;
  const NetworkRoute gateway{.interface = 2}, direct{.interface = 2, .isDirect = true},
      local{.interface = 1, .isLocal = true, .isDirect = true};
  const std::optional<NetworkInterface> unknown;
  const NetworkInterface up{.name = "eth0", .isUp = true}, down{.name = "eth0"},
      modem{.name = "wwan0", .isUp = true, .isWWAN = true},
      dialled{.name = "ppp0", .isUp = true, .isPointToPoint = true};
  const struct {
    std::optional<NetworkRoute> route;
    std::optional<NetworkInterface> interface;
    bool staysOnLink;
    SCNetworkReachabilityFlags expected;
  } rows[] = {
      {none, unknown, false, 0},      {none, up, false, 0},        {gateway, unknown, false, 0},
      {gateway, down, false, 0},      {gateway, up, false, 0x2},   {gateway, up, true, 0},
      {direct, up, true, 0x20002},    {local, up, false, 0x30002}, {gateway, modem, false, 0x40002},
      {gateway, dialled, false, 0x3}, {local, down, false, 0},
  };
  for (const auto& row : rows) EXPECT_EQ(reachabilityFlags(row.route, row.interface, row.staysOnLink), row.expected);
}

}  // namespace
