#pragma once

#include <cstdint>

// Why an ad failed, as the host hears it: coarser than SKVASTError.
enum YMRVastError : std::uint32_t {
  YMRVastErrorRequest = 0,
  YMRVastErrorResponseNotUnderstood = 1,
  YMRVastErrorUnexpected = 2,
  YMRVastErrorNoAd = 3,
  YMRVastErrorNoCompatibleAsset = 4,
  YMRVastErrorUnavailable = 5,
  YMRVastErrorNoAdAfterRedirects = 6,
  YMRVastErrorSchemaValidation = 7,
  YMRVastErrorTooManyRedirects = 8,
  YMRVastErrorWrapper = 9,
  YMRVastErrorPlayback = 10,
};
