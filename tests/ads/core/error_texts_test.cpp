#include <gmock/gmock.h>

#include <cmath>

#include "ads/core/VASTSettings.h"
#include "ads/core/YMRPlayerErrorHandler.h"

namespace {

TEST(ErrorTexts, everyAdErrorHasMessageCodeAndCoarserError) {
  const struct {
    const char* message;
    const char* code;
    std::uint32_t coarser;
  } rows[] = {
      {"No ad to show", "303", 3},
      {"No ad to show", "303", 6},
      {"XML format error", "100", 1},
      {"Schema validation error", "101", 7},
      {"too many wrappers in xml", "302", 8},
      {"Media file not compatible", "401", 4},
      {"No internet connection", "900", 0},
      {"timeout", "900", 5},
      {"player not ready", "900", 2},
      {"playback error", "402", 10},
      {"video too short", "900", 2},
      {"Unknow Error", "900", 2},
      {"Ad already playing", "900", 2},
      {"Unknow Error", "900", 2},  // 13 and everything above
  };
  for (std::uint32_t value = 0; value < std::size(rows); ++value) {
    SCOPED_TRACE(value);
    const auto error = static_cast<SKVASTError>(value);
    EXPECT_EQ(YMRPlayerErrorHandler::VASTErrorToString(error), rows[value].message);
    EXPECT_EQ(YMRPlayerErrorHandler::VASTErrorToErrorCode(error), rows[value].code);
    EXPECT_EQ(YMRPlayerErrorHandler::SKVASTErrorToYMRVastError(error), rows[value].coarser);
  }
}

TEST(VASTSettingsTest, theLoadTimeoutIsNeverBelowTenSeconds) {
  EXPECT_EQ(VASTSettings::vastVideoLoadTimeout(), 10);
  for (const auto& [given, stored] : {std::pair{25.0, 25.0}, {4.0, 10.0}, {-1.0, 10.0}, {std::nan(""), 10.0}}) {
    VASTSettings::setVastVideoLoadTimeout(given);
    EXPECT_EQ(VASTSettings::vastVideoLoadTimeout(), stored) << given;
  }
}

}  // namespace
