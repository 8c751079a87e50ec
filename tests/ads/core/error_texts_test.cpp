#include <gmock/gmock.h>

#include <cmath>

#include "ads/core/VASTSettings.h"
#include "ads/core/YMRPlayerErrorHandler.h"

namespace {

TEST(ErrorTexts, everyValueHasItsRowAndTheOthersShareOne) {
  const struct {
    std::uint32_t value;
    const char* message;
    const char* code;
    std::uint32_t coarser;
  } rows[] = {
      {0, "No ad to show", "303", 3},         {9, "playback error", "402", 10}, {10, "video too short", "900", 2},
      {12, "Ad already playing", "900", 2},   {11, "Unknow Error", "900", 2},   {13, "Unknow Error", "900", 2},
      {0xFFFFFFFF, "Unknow Error", "900", 2},
  };
  for (const auto& [value, message, code, coarser] : rows) {
    SCOPED_TRACE(value);
    const auto error = static_cast<SKVASTError>(value);
    EXPECT_EQ(YMRPlayerErrorHandler::VASTErrorToString(error), message);
    EXPECT_EQ(YMRPlayerErrorHandler::VASTErrorToErrorCode(error), code);
    EXPECT_EQ(YMRPlayerErrorHandler::SKVASTErrorToYMRVastError(error), coarser);
  }
  EXPECT_EQ(YMRPlayerErrorHandler::YMRVastErrorToString(static_cast<YMRVastError>(11)), "Unknown error");
}

TEST(VASTSettingsTest, theLoadTimeoutIsNeverBelowTenSeconds) {
  for (const auto& [given, stored] : {std::pair{25.0, 25.0}, {4.0, 10.0}, {-1.0, 10.0}, {std::nan(""), 10.0}}) {
    VASTSettings::setVastVideoLoadTimeout(given);
    EXPECT_EQ(VASTSettings::vastVideoLoadTimeout(), stored) << given;
  }
}

}  // namespace
