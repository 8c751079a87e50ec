#pragma once

#include <cstdint>

// Why an ad request or an ad failed, as the ad code reports it. YMRPlayerErrorHandler knows each value's texts.
enum SKVASTError : std::uint32_t {
  SKVASTErrorNoAd = 0,
  SKVASTErrorNoAdAfterWrappers = 1,
  SKVASTErrorXMLParse = 2,
  SKVASTErrorSchemaValidation = 3,
  SKVASTErrorTooManyWrappers = 4,
  SKVASTErrorMediaFileNotCompatible = 5,
  SKVASTErrorNoInternet = 6,
  SKVASTErrorTimeout = 7,
  SKVASTErrorPlayerNotReady = 8,
  SKVASTErrorPlayback = 9,
  SKVASTErrorVideoTooShort = 10,
  SKVASTErrorUnknown = 11,
  SKVASTErrorAdAlreadyPlaying = 12,
};
