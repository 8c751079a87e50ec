#include "ads/core/YMRPlayerErrorHandler.h"

#include <iterator>

namespace {

struct Row {
  const char* message;
  const char* code;
};

// By SKVASTError. The misspelling is what hosts know.
constexpr Row rows[] = {
    {"No ad to show", "303"},
    {"No ad to show", "303"},
    {"XML format error", "100"},
    {"Schema validation error", "101"},
    {"too many wrappers in xml", "302"},
    {"Media file not compatible", "401"},
    {"No internet connection", "900"},
    {"timeout", "900"},
    {"player not ready", "900"},
    {"playback error", "402"},
    {"video too short", "900"},
    {"Unknow Error", "900"},
    {"Ad already playing", "900"},
};

const Row& row(SKVASTError error) {
  return rows[error < std::size(rows) ? error : SKVASTErrorUnknown];
}

// By SKVASTError, up to where it is coarser.
constexpr YMRVastError coarser[] = {
    YMRVastErrorNoAd,
    YMRVastErrorNoAdAfterRedirects,
    YMRVastErrorResponseNotUnderstood,
    YMRVastErrorSchemaValidation,
    YMRVastErrorTooManyRedirects,
    YMRVastErrorNoCompatibleAsset,
    YMRVastErrorRequest,
    YMRVastErrorUnavailable,
    YMRVastErrorUnexpected,
    YMRVastErrorPlayback,
};

// By YMRVastError.
constexpr const char* messages[] = {
    "There was a problem requesting ads from the server.",
    "The ad response was not understood and cannot be parsed.",
    "An unexpected error occurred and the cause is not known.",
    "No Ads VAST response or no asset found.",
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): texts that take two lines
    "Assets were found in the VAST ad response for linear ad, but none of them matched the video player's "
    "capabilities.",
    "The VAST URI provided, or a VAST URI provided in a subsequent wrapper element, was either unavailable or reached "
    "a timeout, as defined by the video player.",
    "No Ads VAST response or no asset found after one or more redirects.",
    "VAST schema validation error.",
    "The maximum number of VAST wrapper redirects has been reached.",
    "General VAST wrapper error.",
    "There was an error playing the video ad.",
};

}  // namespace

YMRVastError YMRPlayerErrorHandler::SKVASTErrorToYMRVastError(SKVASTError error) {
  return error < std::size(coarser) ? coarser[error] : YMRVastErrorUnexpected;
}

std::string YMRPlayerErrorHandler::YMRVastErrorToString(YMRVastError error) {
  return error < std::size(messages) ? messages[error] : "Unknown error";
}

std::string YMRPlayerErrorHandler::VASTErrorToString(SKVASTError error) {
  return row(error).message;
}

std::string YMRPlayerErrorHandler::messageOf(SKVASTError error, const std::string& reason) {
  return reason.empty() ? VASTErrorToString(error) : reason;
}

std::string YMRPlayerErrorHandler::VASTErrorToErrorCode(SKVASTError error) {
  return row(error).code;
}
