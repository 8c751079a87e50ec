#pragma once

#include <string>

// Why something failed, for the host: `domain` names the code's owner, `message` is for people. A plain value.
struct NSError {
  std::string domain;
  int code = 0;
  std::string message;
};

// What a failed media item says, and what fetching an ad tag, a subtitle file or an artwork does. Messages about media
// name them: a file by its name, what a server has by its URL, without what may be secret in it.

// Fetching from a URL and opening a file; beside each what it means for media.
inline constexpr const char* NSURLErrorDomain = "NSURLErrorDomain";
inline constexpr int NSURLErrorCancelled = -999;
inline constexpr int NSURLErrorBadURL = -1000;
inline constexpr int NSURLErrorTimedOut = -1001;               // no connection to the server in time
inline constexpr int NSURLErrorUnsupportedURL = -1002;         // neither file, http nor https; redirected to such a URL
inline constexpr int NSURLErrorCannotFindHost = -1003;         // nobody knows the server's name
inline constexpr int NSURLErrorCannotConnectToHost = -1004;    // the server refuses connections, or no way leads there
inline constexpr int NSURLErrorNetworkConnectionLost = -1005;  // it broke off, again and again
inline constexpr int NSURLErrorHTTPTooManyRedirects = -1007;   // redirects without an end
inline constexpr int NSURLErrorResourceUnavailable = -1008;    // 408, 429, 503: not now; a file that can't be read on
inline constexpr int NSURLErrorRedirectToNonExistentLocation = -1010;  // 300 to 399 without another place
inline constexpr int NSURLErrorBadServerResponse = -1011;              // other statuses, answers without sense
inline constexpr int NSURLErrorZeroByteResource = -1014;               // nothing is in it, 204
inline constexpr int NSURLErrorCannotDecodeContentData = -1016;
inline constexpr int NSURLErrorFileDoesNotExist = -1100;         // 404, 410
inline constexpr int NSURLErrorFileIsDirectory = -1101;          // a folder
inline constexpr int NSURLErrorNoPermissionsToReadFile = -1102;  // 401, 403, 407; a file that may not be read
inline constexpr int NSURLErrorDataLengthExceedsMaximum = -1103;
inline constexpr int NSURLErrorSecureConnectionFailed = -1200;      // server and player find no way to encrypt
inline constexpr int NSURLErrorServerCertificateUntrusted = -1202;  // expired, of another name, signed by nobody known
inline constexpr int NSURLErrorCannotOpenFile = -3001;              // the system says why

inline constexpr const char* NSCocoaErrorDomain = "NSCocoaErrorDomain";  // reading text
inline constexpr int NSFileReadInapplicableStringEncodingError = 261;    // it is not in the encoding that it should be

// Playing media.
inline constexpr const char* AVFoundationErrorDomain = "AVFoundationErrorDomain";
inline constexpr int AVErrorUnknown = -11800;                  // what the media library said; a part of it is missing
inline constexpr int AVErrorDecodeFailed = -11821;             // can't be decoded, or crashes what decodes it
inline constexpr int AVErrorFileFormatNotRecognized = -11828;  // a web page, a picture, a container not allowed here
inline constexpr int AVErrorFileFailedToParse = -11829;        // damaged or incomplete
inline constexpr int AVErrorDecoderNotFound = -11833;          // no decoder here
inline constexpr int AVErrorContentIsNotAuthorized = -11835;   // the key of its segments can't be had
inline constexpr int AVErrorContentIsUnavailable = -11863;     // none of its streams, or a part of it, can be had
inline constexpr int AVErrorNoDataReceived = -11870;           // what was needed did not come in time
