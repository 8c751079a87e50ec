#include "platform/avfoundation/bytes/ServerErrors.h"

namespace {

NSError urlError(int code, std::string message) {
  return {NSURLErrorDomain, code, std::move(message)};
}

std::string server(const NSURL& url) {
  return "The server " + nameOfMedia(url);
}

}  // namespace

std::string nameOfMedia(const NSURL& url) {
  if (!url.isFileURL()) return url.host().empty() ? url.absoluteString() : url.host();
  const auto slash = url.path().find_last_of('/');
  return slash == std::string::npos ? url.path() : url.path().substr(slash + 1);
}

NSError statusError(long status, const NSURL& url) {
  const std::string answer = " (HTTP " + std::to_string(status) + ").";
  if (status >= 300 && status < 400) {
    return urlError(NSURLErrorHTTPTooManyRedirects, server(url) + " redirects without an end" + answer);
  }
  switch (status) {
    case 401:
    case 403:
    case 407:
      return urlError(NSURLErrorNoPermissionsToReadFile,
                      server(url) + " does not allow this media to be played" + answer);
    case 404:
    case 410:
      return urlError(NSURLErrorFileDoesNotExist, server(url) + " does not have this media" + answer);
    default:
      return urlError(NSURLErrorBadServerResponse, server(url) + " did not deliver the media" + answer);
  }
}

NSError unansweredError(const NSError& error, const NSURL& url) {
  switch (error.code) {
    case NSURLErrorTimedOut:
    case NSURLErrorCannotFindHost:
    case NSURLErrorCannotConnectToHost:
      return urlError(NSURLErrorCannotConnectToHost, server(url) + " can't be reached.");
    case NSURLErrorNetworkConnectionLost:
      return lostConnectionError(url);
    case NSURLErrorHTTPTooManyRedirects:
      return urlError(error.code, server(url) + " redirects without an end.");
    case NSURLErrorServerCertificateUntrusted:
    case NSURLErrorUnsupportedURL:
      return error;
    default:
      return urlError(error.code, server(url) + " did not deliver the media: " + error.message);
  }
}

NSError lostConnectionError(const NSURL& url) {
  return urlError(NSURLErrorNetworkConnectionLost, "The connection to the server " + nameOfMedia(url) + " was lost.");
}

NSError senselessAnswerError(const NSURL& url, const std::string& what) {
  return urlError(NSURLErrorBadServerResponse, server(url) + " did not deliver what was asked for: " + what + ".");
}

NSError changedMediaError(const NSURL& url) {
  return urlError(NSURLErrorBadServerResponse, "The media on the server " + nameOfMedia(url) + " has changed.");
}
