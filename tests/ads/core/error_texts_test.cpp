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
  const auto last = static_cast<SKVASTError>(0xFFFFFFFF);
  EXPECT_EQ(YMRPlayerErrorHandler::VASTErrorToString(last), "Unknow Error");
  EXPECT_EQ(YMRPlayerErrorHandler::SKVASTErrorToYMRVastError(last), YMRVastErrorUnexpected);
}

TEST(ErrorTexts, everyCoarserErrorHasItsMessage) {
  const char* messages[] = {
      "There was a problem requesting ads from the server.",
      "The ad response was not understood and cannot be parsed.",
      "An unexpected error occurred and the cause is not known.",
      "No Ads VAST response or no asset found.",
      "Assets were found in the VAST ad response for linear ad, but none of them matched the video player's "
      "capabilities.",
      "The VAST URI provided, or a VAST URI provided in a subsequent wrapper element, was either unavailable or "
      "reached a "
      "timeout, as defined by the video player.",
      "No Ads VAST response or no asset found after one or more redirects.",
      "VAST schema validation error.",
      "The maximum number of VAST wrapper redirects has been reached.",
      "General VAST wrapper error.",
      "There was an error playing the video ad.",
      "Unknown error",
  };
  for (std::uint32_t value = 0; value < std::size(messages); ++value) {
    EXPECT_EQ(YMRPlayerErrorHandler::YMRVastErrorToString(static_cast<YMRVastError>(value)), messages[value]);
  }
}

TEST(VASTSettingsTest, theLoadTimeoutIsNeverBelowTenSeconds) {
  EXPECT_EQ(VASTSettings::vastVideoLoadTimeout(), 10);
  for (const auto& [given, stored] : {std::pair{4.0, 10.0},
                                      {25.0, 25.0},
                                      {25.0, 25.0},
                                      {4.0, 10.0},
                                      {0.0, 10.0},
                                      {-1.0, 10.0},
                                      {10.5, 10.5},
                                      {std::nan(""), 10.0}}) {
    VASTSettings::setVastVideoLoadTimeout(given);
    EXPECT_EQ(VASTSettings::vastVideoLoadTimeout(), stored) << given;
  }
}

}  // namespace
