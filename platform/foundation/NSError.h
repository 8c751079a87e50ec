#pragma once

#include <string>

// Why something failed, for the host: `domain` names the code's owner, `message` is for people. A plain value.
struct NSError {
  std::string domain;
  int code = 0;
  std::string message;
};

inline constexpr const char* NSURLErrorDomain = "NSURLErrorDomain";  // fetching from a URL
inline constexpr int NSURLErrorBadURL = -1000;
inline constexpr int NSURLErrorTimedOut = -1001;
inline constexpr int NSURLErrorUnsupportedURL = -1002;
inline constexpr int NSURLErrorCannotFindHost = -1003;
inline constexpr int NSURLErrorCannotConnectToHost = -1004;
inline constexpr int NSURLErrorNetworkConnectionLost = -1005;
inline constexpr int NSURLErrorHTTPTooManyRedirects = -1007;
inline constexpr int NSURLErrorResourceUnavailable = -1008;
inline constexpr int NSURLErrorBadServerResponse = -1011;
inline constexpr int NSURLErrorCannotDecodeContentData = -1016;
inline constexpr int NSURLErrorCancelled = -999;
inline constexpr int NSURLErrorFileDoesNotExist = -1100;
inline constexpr int NSURLErrorNoPermissionsToReadFile = -1102;
inline constexpr int NSURLErrorDataLengthExceedsMaximum = -1103;
inline constexpr int NSURLErrorSecureConnectionFailed = -1200;
inline constexpr int NSURLErrorServerCertificateUntrusted = -1202;

inline constexpr const char* NSCocoaErrorDomain = "NSCocoaErrorDomain";  // reading text
inline constexpr int NSFileReadInapplicableStringEncodingError = 261;    // it is not in the encoding that it should be

inline constexpr const char* AVFoundationErrorDomain = "AVFoundationErrorDomain";  // playing media
inline constexpr int AVErrorUnknown = -11800;
inline constexpr int AVErrorDecodeFailed = -11821;
inline constexpr int AVErrorFileFormatNotRecognized = -11828;
inline constexpr int AVErrorFileFailedToParse = -11829;
inline constexpr int AVErrorDecoderNotFound = -11833;
inline constexpr int AVErrorNoDataReceived = -11870;  // silence: data that was needed did not come in time
