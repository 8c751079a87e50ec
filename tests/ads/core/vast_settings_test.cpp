#include "ads/core/VASTSettings.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(VASTSettingsTest, theLoadTimeoutIsNeverBelowTenSeconds) {
  for (const auto& [given, stored] : {std::pair{25.0, 25.0}, {4.0, 10.0}, {-1.0, 10.0}, {std::nan(""), 10.0}}) {
    VASTSettings::setVastVideoLoadTimeout(given);
    EXPECT_EQ(VASTSettings::vastVideoLoadTimeout(), stored) << given;
  }
}
