#pragma once

#include <string>

#include "VAST/SKVASTError.h"
#include "VAST/YMRVastError.h"
#include "platform/Export.h"

// What the ad errors are called and how they map. Pure functions, which take any value; any thread.
class YMR_API YMRPlayerErrorHandler {
 public:
  // YMRVastErrorUnexpected for everything above SKVASTErrorPlayback.
  static YMRVastError SKVASTErrorToYMRVastError(SKVASTError error);
  static std::string YMRVastErrorToString(YMRVastError error);
  static std::string VASTErrorToString(SKVASTError error);
  // The same for people: the model's own reason where it has one, which the error's text would hide.
  static std::string messageOf(SKVASTError error, const std::string& reason);
  // The code for the error URLs of a VAST document: three digits.
  static std::string VASTErrorToErrorCode(SKVASTError error);
};
